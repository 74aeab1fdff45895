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

namespace stemvault {

/// Keeps each root on the folder that its path leads to, whatever is removed, renamed, mounted or
/// put in its place, and waits while there is no folder at the path.
class RootTracker {
public:
    RootTracker(const StreamOptions& options, WatchTree& watchTree, Inotify& inotify,
        ScanQueue& scanQueue, EventReporter& eventReporter, MountTracker& mountTracker,
        const StreamClock& streamClock, InotifyCalls& systemCalls);

    /// Attaches the roots that are there; `since` is when the stream began.
    void start(FileTime since);

    /// Call it with every event before anything else handles it. Whether the event means that a
    /// path may lead elsewhere now.
    bool notice(const InotifyEvent& event);

    /// The next `recheck` follows the paths again.
    void requestRecheck() { isRecheckDue = true; }

    /// Follows the paths again if an event, a mount or a request gave reason to.
    void recheck();

    /// Events were lost: scans everything for changes since then.
    void rescanAll(FileTime since);

    /// When the paths must be followed again by the clock; absent while events report every change.
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

} // namespace stemvault
