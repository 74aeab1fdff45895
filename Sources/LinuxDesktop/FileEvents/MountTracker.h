#pragma once

#include "LinuxDesktop/FileEvents/MountTable.h"
#include "LinuxDesktop/FileEvents/ScanQueue.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <set>
#include <string>

namespace stemvault {

/// Notices mounts below the roots. A watch stays on the folder that a mount covers, so every mount
/// point that came or went is scanned anew by its path.
class MountTracker {
public:
    MountTracker(WatchTree& watchTree, ScanQueue& scanQueue) : tree(watchTree), queue(scanQueue) { }

    /// Mounts may have changed, but not before that moment.
    void noteChange(FileTime notBefore);

    [[nodiscard]] bool mayHaveChanged() const { return isChanged; }
    /// The earliest moment of a change since the last `update`; FileTime::max() if there was none.
    [[nodiscard]] FileTime changedSince() const { return notBefore; }

    /// Reads the table of mounts again.
    void update();

    /// Scans what was mounted or unmounted below a root between the last two updates, or is still
    /// mounted there.
    void scanMountPoints(NodeId root, const std::string& rootPath, FileTime since);

    /// Readable for POLLPRI when mounts have changed.
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

} // namespace stemvault
