#pragma once

#include "LinuxDesktop/FileEvents/EventReporter.h"
#include "LinuxDesktop/FileEvents/PolledFolders.h"
#include "LinuxDesktop/FileEvents/RecentWrites.h"
#include "LinuxDesktop/FileEvents/StreamClock.h"

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace stemvault::file_events {

/// Finds the files that were last written after the stream began and before their folder was
/// watched. Only their modification times show that. Reading those of all files takes longer than
/// installing the watches, so it is done once afterwards, in short slices.
class EarlyWrites {
public:
    using Time = EventCoalescer::Time;

    EarlyWrites(const WatchTree& watchTree, const PolledFolders& polledFolders,
        RecentWrites& recentWrites, EventReporter& eventReporter, const StreamClock& streamClock,
        const std::atomic<bool>& streamIsStopping);

    /// Call it once every folder that existed at the start is watched.
    void begin();

    /// Checks folders for a millisecond. `handledUntil` is the moment until which all events have
    /// been handled. Returns whether there was anything to do.
    bool runSlice(Time handledUntil);

    /// When `runSlice` has something to do, if that is later; the caller must then handle all
    /// events first. Because file times are coarse, an event after `watchedSince` may have an
    /// earlier time.
    [[nodiscard]] std::optional<Time> due() const;

private:
    void check(NodeId folder);
    void check(NodeId folder, int descriptor, const char* name);

    const WatchTree& tree;
    const PolledFolders& polled;
    RecentWrites& writes;
    EventReporter& reporter;
    const StreamClock& clock;
    const std::atomic<bool>& isStopping;
    std::vector<std::byte> buffer;
    std::string path;
    NodeId next = 0;
    NodeId end = 0;
    FileTime watchedSince; ///< Writes from this moment on raise events.
    Time start; ///< When the first slice may run.
};

} // namespace stemvault::file_events
