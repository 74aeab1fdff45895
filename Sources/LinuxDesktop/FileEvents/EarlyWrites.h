#pragma once

#include "LinuxDesktop/FileEvents/EventReporter.h"
#include "LinuxDesktop/FileEvents/PolledFolders.h"
#include "LinuxDesktop/FileEvents/RecentWrites.h"
#include "LinuxDesktop/FileEvents/StreamClock.h"

#include <atomic>
#include <cstddef>
#include <string>
#include <vector>

namespace stemvault::file_events {

/// Finds the files that were last written after the stream began and before their folder was
/// watched. Only their modification times show that. Reading those of all files takes longer than
/// installing the watches, so it is done once afterwards, in short slices.
class EarlyWrites {
public:
    EarlyWrites(const WatchTree& watchTree, const PolledFolders& polledFolders,
        RecentWrites& recentWrites, EventReporter& eventReporter, const StreamClock& streamClock,
        const std::atomic<bool>& streamIsStopping);

    /// Call it once every folder that existed at the start is watched.
    void begin();

    /// Checks folders for a millisecond. Returns whether there was anything to do.
    bool runSlice();

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
};

} // namespace stemvault::file_events
