#pragma once

#include "LinuxDesktop/FileEvents/FileStatus.h"

namespace stemvault::file_events {

/// The moments that file times are compared with. StreamWorker sets them; other classes only read
/// them. While events are handled: began <= watchedUntil <= arrivalBound <= readAt.
/// README.md explains each of them.
struct StreamClock {
    FileTime began; ///< When the stream was created, less the clock's grain.
    FileTime watchedUntil; ///< Every event from before this moment has been handled.
    FileTime arrivalBound; ///< An item that arrives now was not there yet at this moment.
    FileTime readAt; ///< When the events that are being handled were read.
};

} // namespace stemvault::file_events
