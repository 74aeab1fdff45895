#pragma once

#include "LinuxDesktop/FileEvents/EventReporter.h"
#include "LinuxDesktop/FileEvents/InotifyCalls.h"
#include "LinuxDesktop/FileEvents/MountTracker.h"
#include "LinuxDesktop/FileEvents/PathWatcher.h"
#include "LinuxDesktop/FileEvents/ScanQueue.h"
#include "LinuxDesktop/FileEvents/StreamClock.h"
#include "LinuxDesktop/FileEvents/StreamOptions.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace stemvault::file_events {

/// Keeps each root attached to the folder at its path, even when folders are removed, renamed,
/// replaced or mounted over. While there is no folder at the path, the root is detached.
class RootTracker {
public:
    RootTracker(const StreamOptions& options, WatchTree& watchTree, Inotify& inotify,
        ScanQueue& scanQueue, EventReporter& eventReporter, MountTracker& mountTracker,
        const StreamClock& streamClock, InotifyCalls& systemCalls);

    /// Attaches the roots that exist. `since` is when the stream began.
    void start(FileTime since);

    /// Call it with every event before anything else handles the event. Returns whether a path may
    /// lead elsewhere now.
    bool notice(const InotifyEvent& event);

    /// Makes the next `recheck` follow the paths again.
    void requestRecheck() { isRecheckDue = true; }

    /// Follows the paths again if an event, a mount change or a request requires it.
    void recheck();

    /// Queues scans of all roots for changes since `since`. Call it when events were lost.
    void rescanAll(FileTime since);

    /// When the paths must be polled next; absent while events report every change.
    [[nodiscard]] std::optional<EventCoalescer::Time> due() const { return nextPoll; }

    [[nodiscard]] bool uses(int watch) const { return paths.uses(watch); }

private:
    struct Root {
        std::string given;
        std::string absolute;
        PathWatcher::Target target;
        NodeId node = noNode;
        bool isLost = false; ///< Its watch has ended, so its folder is gone, even if the inode
                             ///< number is in use again.
    };

    void followAll(ScanReason reason, FileTime since);
    void scanMountPoints(FileTime since);
    [[nodiscard]] bool isShared(const PathWatcher::Target& target) const;
    void update(Root& root, PathWatcher::Target target, ScanReason reason, FileTime since);
    void attach(Root& root, ScanReason reason, FileTime since);
    void detach(Root& root);

    WatchTree& tree;
    ScanQueue& queue;
    EventReporter& reporter;
    MountTracker& mounts;
    const StreamClock& clock;
    InotifyCalls& calls;
    const std::chrono::milliseconds pollInterval;
    PathWatcher paths;
    std::vector<Root> roots;
    bool isRecheckDue = false;
    std::optional<EventCoalescer::Time> nextPoll;
    FileTime lastPoll; ///< When the paths were last followed.
};

} // namespace stemvault::file_events
