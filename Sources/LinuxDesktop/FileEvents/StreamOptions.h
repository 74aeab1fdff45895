#pragma once

#include "LinuxDesktop/FileEvents/EventCoalescer.h"

#include <chrono>
#include <string>
#include <vector>

namespace stemvault::file_events {

struct StreamOptions {
    std::vector<std::string> paths;
    std::chrono::milliseconds latency { 500 };
    EventCoalescer::FirstEvent firstEvent = EventCoalescer::FirstEvent::AtOnce;
    /// The polling interval of folders whose events are not enough.
    std::chrono::milliseconds pollInterval { 3000 };
};

} // namespace stemvault::file_events
