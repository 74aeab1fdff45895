#include "LinuxDesktop/FileEvents/MountTracker.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace stemvault::file_events {

void MountTracker::noteChange(FileTime changeNotBefore)
{
    isChanged = true;
    notBefore = std::min(notBefore, changeNotBefore);
}

void MountTracker::update()
{
    isChanged = false;
    notBefore = FileTime::max();
    formerMountPoints = std::exchange(mountPoints, {});
    for (std::string& point : table.mountPoints())
        mountPoints.insert(std::move(point));
}

void MountTracker::scanMountPoints(NodeId root, const std::string& rootPath, FileTime since)
{
    std::set<std::string> points = mountPoints;
    points.insert(formerMountPoints.begin(), formerMountPoints.end());
    for (const std::string& point : points)
        if (point.starts_with(rootPath + "/"))
            scanMountPoint(root, point.substr(rootPath.size() + 1), since);
}

void MountTracker::scanMountPoint(NodeId root, const std::string& pathBelow, FileTime since)
{
    NodeId node = root;
    for (const std::filesystem::path& name : std::filesystem::path(pathBelow))
        if (node != noNode)
            node = tree.child(node, name.native());
    if (node != noNode)
        queue.add(node, ScanReason::Arrived, since);
}

} // namespace stemvault::file_events
