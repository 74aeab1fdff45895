#pragma once

#include "LinuxDesktop/FileEvents/EventCoalescer.h"

#include <chrono>
#include <string>
#include <vector>

namespace stemvault {

/// What a stream is told when it is made.
struct StreamOptions {
    std::vector<std::string> paths;
    std::chrono::milliseconds latency { 500 };
    EventCoalescer::FirstEvent firstEvent = EventCoalescer::FirstEvent::AtOnce;
    /// How often it looks at folders of which the kernel does not tell enough.
    std::chrono::milliseconds pollInterval { 3000 };
};

} // namespace stemvault
