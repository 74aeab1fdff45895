#pragma once

#include "LinuxDesktop/FileEvents/EventCoalescer.h"

#include <chrono>
#include <string>
#include <vector>

namespace stemvault {

struct StreamOptions {
    std::vector<std::string> paths;
    std::chrono::milliseconds latency { 500 };
    EventCoalescer::FirstEvent firstEvent = EventCoalescer::FirstEvent::AtOnce;
    /// The interval at which folders are polled whose events are not enough.
    std::chrono::milliseconds pollInterval { 3000 };
};

} // namespace stemvault
