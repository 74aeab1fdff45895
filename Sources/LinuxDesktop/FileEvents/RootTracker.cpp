#include "LinuxDesktop/FileEvents/RootTracker.h"

#include "LinuxDesktop/FileEvents/FileSystemTraits.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace stemvault {

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

RootTracker::RootTracker(
    WatchState& shared, TreeWalker& treeWalker, const std::vector<std::string>& paths)
    : state(shared), walker(treeWalker), guard(shared.inotify)
{
    for (const std::string& path : paths) {
        const std::string given = withoutTrailingSlashes(path);
        const bool isNew = std::none_of(
            roots.begin(), roots.end(), [&](const Root& root) { return root.given == given; });
        if (isNew)
            roots.push_back({ given, absolutePath(path), {}, noNode, false });
    }
}

void RootTracker::start(FileTime since)
{
    followAll(TreeWalker::Visit::Start, since);
    checkMounts(since);
}

bool RootTracker::notice(const InotifyEvent& event)
{
    bool isDoubtful = guard.concerns(event);
    if (event.has(IN_UNMOUNT))
        noticeMounts(state.arrivalBound);
    if (event.has(IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED))
        for (Root& root : roots) {
            if (root.node == noNode || state.tree.watch(root.node) != event.watch)
                continue;
            root.isLost = root.isLost || event.has(IN_UNMOUNT | IN_IGNORED);
            isDoubtful = true;
        }
    suspicious = suspicious || isDoubtful;
    return isDoubtful;
}

void RootTracker::noticeMounts(FileTime notBefore)
{
    haveMountsChanged = suspicious = true;
    unsureSince = std::min(unsureSince, notBefore);
}

void RootTracker::recheck()
{
    if (!std::exchange(suspicious, false))
        return;
    const FileTime since =
        std::min(state.arrivalBound, std::exchange(unsureSince, FileTime::max()));
    followAll(TreeWalker::Visit::Arrived, since);
    if (haveMountsChanged)
        checkMounts(since);
}

void RootTracker::lookThrough(FileTime since)
{
    for (const Root& root : roots) {
        if (root.node == noNode)
            continue;
        state.reporter.report(root.node, FileEventFlag::MustScanSubDirs | FileEventFlag::ItemIsDir);
        walker.enqueue(root.node, TreeWalker::Visit::Check, since);
    }
    walker.noteLoss(since);
    noticeMounts(since);
}

std::optional<EventCoalescer::Time> RootTracker::due() const
{
    return nextLook;
}

void RootTracker::followAll(TreeWalker::Visit visit, FileTime since)
{
    // Where only the clock tells, a root may have come at any time since the last look.
    if (nextLook)
        since = std::min(since, lastLook);
    lastLook = wallClock() - clockGrain;
    guard.begin();
    bool isAllTold = true;
    for (Root& root : roots) {
        update(root, guard.follow(root.absolute), visit, since);
        isAllTold = isAllTold && !isShared(root.meaning);
    }
    guard.end();
    nextLook = isAllTold && guard.isComplete()
        ? std::nullopt
        : std::optional(std::chrono::steady_clock::now() + state.pollInterval);
}

/// Whether others may take a root away, or bring it, and no event tells.
bool RootTracker::isShared(const PathWatcher::Meaning& meaning) const
{
    const std::string place =
        meaning.folder ? meaning.resolved : meaning.missing.substr(0, meaning.missing.rfind('/'));
    return isSharedWithOthers(state.calls.fileSystemType(place.empty() ? "/" : place.c_str()));
}

void RootTracker::update(
    Root& root, PathWatcher::Meaning meaning, TreeWalker::Visit visit, FileTime since)
{
    const PathWatcher::Meaning former = std::exchange(root.meaning, std::move(meaning));
    const bool isSame = isSameFolder(former.folder, root.meaning.folder)
        && former.resolved == root.meaning.resolved;
    if (isSame && root.node != noNode && !std::exchange(root.isLost, false))
        return walker.retryUnreadable(root.node);
    if (root.node != noNode)
        detach(root);
    if (!root.meaning.folder)
        return;
    // What came is the first part that was missing; if none was, the folder itself.
    if (visit == TreeWalker::Visit::Arrived)
        since = arrivalTime(
            fileStatus(former.missing.empty() ? root.meaning.resolved : former.missing), since);
    attach(root, visit, since);
}

void RootTracker::attach(Root& root, TreeWalker::Visit visit, FileTime since)
{
    root.node = state.tree.addRoot(root.given, root.meaning.resolved);
    if (visit == TreeWalker::Visit::Arrived)
        state.reporter.report(root.node,
            FileEventFlag::RootChanged | FileEventFlag::ItemCreated | FileEventFlag::ItemIsDir);
    walker.enqueue(root.node, visit, since);
}

void RootTracker::detach(Root& root)
{
    state.reporter.report(root.node,
        FileEventFlag::RootChanged | FileEventFlag::ItemRemoved | FileEventFlag::ItemIsDir);
    state.remove(std::exchange(root.node, noNode));
}

void RootTracker::checkMounts(FileTime since)
{
    haveMountsChanged = false;
    std::set<std::string> points;
    for (std::string& point : mounts.mountPoints())
        points.insert(std::move(point));
    std::set<std::string> former = std::exchange(mountPoints, points);
    former.merge(points);
    for (const Root& root : roots)
        for (const std::string& point : former)
            if (root.node != noNode && point.starts_with(root.meaning.resolved + "/"))
                checkMount(root, point, since);
}

/// A watch stays on the folder that a mount covers, so the folder is looked up by its path again.
void RootTracker::checkMount(const Root& root, const std::string& point, FileTime since)
{
    NodeId node = root.node;
    const std::filesystem::path below(point.substr(root.meaning.resolved.size() + 1));
    for (const std::filesystem::path& part : below)
        if (node != noNode)
            node = state.tree.child(node, part.native());
    if (node != noNode)
        walker.enqueue(node, TreeWalker::Visit::Arrived, since);
}

} // namespace stemvault
