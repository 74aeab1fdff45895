#pragma once

#include "LinuxDesktop/FileEvents/MountTable.h"
#include "LinuxDesktop/FileEvents/ScanQueue.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <set>
#include <string>

namespace stemvault::file_events {

/// Notices mounts below the roots. When a file system is mounted over a watched folder, the watch
/// stays on the covered folder, so every mount point is rescanned by its path after a change.
class MountTracker {
public:
    MountTracker(WatchTree& watchTree, ScanQueue& scanQueue) : tree(watchTree), queue(scanQueue) { }

    /// Records that mounts may have changed at `notBefore` or later.
    void noteChange(FileTime notBefore);

    [[nodiscard]] bool mayHaveChanged() const { return isChanged; }
    /// The earliest moment of a change since the last `update`; FileTime::max() if there was none.
    [[nodiscard]] FileTime changedSince() const { return notBefore; }

    /// Reads the mount table again.
    void update();

    /// Queues a scan of every mount point below a root that either of the last two updates found,
    /// so that what was mounted or unmounted in between is scanned.
    void scanMountPoints(NodeId root, const std::string& rootPath, FileTime since);

    /// poll(2) reports POLLPRI on it when mounts have changed.
    [[nodiscard]] int descriptor() const { return table.get(); }

private:
    void scanMountPoint(NodeId root, const std::string& pathBelow, FileTime since);

    WatchTree& tree;
    ScanQueue& queue;
    MountTable table;
    std::set<std::string> mountPoints;
    std::set<std::string> formerMountPoints;
    bool isChanged = true;
    FileTime notBefore = FileTime::max();
};

} // namespace stemvault::file_events
