#include "LinuxDesktop/FileEvents/RootTracker.h"

#include "LinuxDesktop/FileEvents/FileSystemTraits.h"
#include "Platform/FileEvents.h"

#include <algorithm>
#include <filesystem>
#include <sys/inotify.h>
#include <utility>

namespace stemvault::file_events {

namespace {

std::string withoutTrailingSlashes(std::string path)
{
    while (path.ends_with('/'))
        path.pop_back();
    return path;
}

std::string absolutePath(const std::string& path)
{
    if (path.starts_with('/'))
        return path;
    std::error_code error;
    return std::filesystem::current_path(error).string() + "/" + path;
}

bool isSameFolder(const std::optional<FileStatus>& one, const std::optional<FileStatus>& other)
{
    if (!one || !other)
        return !one && !other;
    return one->device == other->device && one->inode == other->inode;
}

} // namespace

RootTracker::RootTracker(const StreamOptions& options, WatchTree& watchTree, Inotify& inotify,
    ScanQueue& scanQueue, EventReporter& eventReporter, MountTracker& mountTracker,
    const StreamClock& streamClock, InotifyCalls& systemCalls)
    : tree(watchTree), queue(scanQueue), reporter(eventReporter), mounts(mountTracker),
      clock(streamClock), calls(systemCalls), pollInterval(options.pollInterval), paths(inotify)
{
    for (const std::string& path : options.paths) {
        const std::string given = withoutTrailingSlashes(path);
        if (std::ranges::find(roots, given, &Root::given) == roots.end())
            roots.push_back({ given, absolutePath(path), {}, noNode, false });
    }
}

void RootTracker::start(FileTime since)
{
    followAll(ScanReason::Start, since);
    scanMountPoints(since);
}

bool RootTracker::notice(const InotifyEvent& event)
{
    bool mayLeadElsewhere = paths.isAffectedBy(event);
    if (event.has(IN_UNMOUNT))
        mounts.noteChange(clock.arrivalBound);
    if (event.has(IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED))
        for (Root& root : roots) {
            if (root.node == noNode || tree.watch(root.node) != event.watch)
                continue;
            root.isLost = root.isLost || event.has(IN_UNMOUNT | IN_IGNORED);
            mayLeadElsewhere = true;
        }
    isRecheckDue = isRecheckDue || mayLeadElsewhere;
    return mayLeadElsewhere;
}

void RootTracker::recheck()
{
    if (!std::exchange(isRecheckDue, false) && !mounts.mayHaveChanged())
        return;
    const FileTime since = std::min(clock.arrivalBound, mounts.changedSince());
    followAll(ScanReason::Arrived, since);
    if (mounts.mayHaveChanged())
        scanMountPoints(since);
}

void RootTracker::rescanAll(FileTime since)
{
    for (const Root& root : roots) {
        if (root.node == noNode)
            continue;
        reporter.report(root.node, FileEventFlag::MustScanSubDirs | FileEventFlag::ItemIsDir);
        queue.add(root.node, ScanReason::Check, since);
    }
    queue.noteLoss(since);
    // The lost events may have concerned mounts or the paths of roots.
    mounts.noteChange(since);
}

void RootTracker::followAll(ScanReason reason, FileTime since)
{
    // While paths are polled, a root may have appeared at any time since the last poll.
    if (nextPoll)
        since = std::min(since, lastPoll);
    lastPoll = wallClock() - clockGrain;
    paths.begin();
    bool hasEvents = true;
    for (Root& root : roots) {
        update(root, paths.follow(root.absolute), reason, since);
        hasEvents = hasEvents && !isShared(root.target);
    }
    paths.end();
    nextPoll = hasEvents && paths.isComplete()
        ? std::nullopt
        : std::optional(std::chrono::steady_clock::now() + pollInterval);
}

void RootTracker::scanMountPoints(FileTime since)
{
    mounts.update();
    for (const Root& root : roots)
        if (root.node != noNode)
            mounts.scanMountPoints(root.node, root.target.resolved, since);
}

/// Whether others may remove or create the root without raising an event here.
bool RootTracker::isShared(const PathWatcher::Target& target) const
{
    const std::string place =
        target.folder ? target.resolved : target.missing.substr(0, target.missing.rfind('/'));
    return isSharedWithOthers(calls.fileSystemType(place.empty() ? "/" : place.c_str()));
}

void RootTracker::update(Root& root, PathWatcher::Target target, ScanReason reason, FileTime since)
{
    const PathWatcher::Target former = std::exchange(root.target, std::move(target));
    const bool isSame =
        isSameFolder(former.folder, root.target.folder) && former.resolved == root.target.resolved;
    if (isSame && root.node != noNode && !std::exchange(root.isLost, false)) {
        queue.retryUnreadable(root.node);
        return;
    }
    if (root.node != noNode)
        detach(root);
    if (!root.target.folder)
        return;
    // The item that arrived is the first part of the path that was missing, or else the root.
    if (reason == ScanReason::Arrived)
        since = arrivalTime(
            fileStatus(former.missing.empty() ? root.target.resolved : former.missing), since);
    attach(root, reason, since);
}

void RootTracker::attach(Root& root, ScanReason reason, FileTime since)
{
    root.node = tree.addRoot(root.given, root.target.resolved);
    if (reason == ScanReason::Arrived)
        reporter.report(root.node,
            FileEventFlag::RootChanged | FileEventFlag::ItemCreated | FileEventFlag::ItemIsDir);
    queue.add(root.node, reason, since);
}

void RootTracker::detach(Root& root)
{
    reporter.report(root.node,
        FileEventFlag::RootChanged | FileEventFlag::ItemRemoved | FileEventFlag::ItemIsDir);
    tree.remove(std::exchange(root.node, noNode));
}

} // namespace stemvault::file_events
