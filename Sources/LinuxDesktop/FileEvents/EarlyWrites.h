#pragma once

#include "LinuxDesktop/FileEvents/EventReporter.h"
#include "LinuxDesktop/FileEvents/PolledFolders.h"
#include "LinuxDesktop/FileEvents/RecentWrites.h"
#include "LinuxDesktop/FileEvents/StreamClock.h"

#include <atomic>
#include <cstddef>
#include <string>
#include <vector>

namespace stemvault {

/// Finds the files that were last written after the stream began and before their folder was
/// watched. Only the times of the files show that. Reading all of them takes longer than installing
/// the watches, so it is done once afterwards, in short slices.
class EarlyWrites {
public:
    EarlyWrites(const WatchTree& watchTree, const PolledFolders& polledFolders,
        RecentWrites& recentWrites, EventReporter& eventReporter, const StreamClock& streamClock,
        const std::atomic<bool>& streamIsStopping);

    /// Call it when every folder that was there at the start is watched.
    void begin();

    /// Checks folders for a millisecond. Whether there was anything to do.
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
    FileTime watchedSince; ///< What is written from this moment on raises an event.
};

} // namespace stemvault
