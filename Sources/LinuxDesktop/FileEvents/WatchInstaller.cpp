#include "LinuxDesktop/FileEvents/WatchInstaller.h"

#include <cerrno>
#include <sys/inotify.h>

namespace stemvault::file_events {

namespace {

/// IN_MASK_ADD, because one inode may be watched for several purposes.
constexpr std::uint32_t folderMask = IN_CREATE | IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB
    | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE | IN_ONLYDIR | IN_EXCL_UNLINK | IN_MASK_ADD;

WatchResult resultFor(int error)
{
    switch (error) {
    case ENOSPC:
    case ENOMEM:
    case EMFILE:
    case ENFILE:
        return WatchResult::Unwatched;
    case EACCES:
    case EPERM:
        return WatchResult::Unreadable;
    default:
        return WatchResult::Gone;
    }
}

} // namespace

WatchResult WatchInstaller::install(NodeId& node)
{
    if (!tree.path(node, WatchTree::Spelling::Resolved, path))
        return WatchResult::Gone;
    const std::uint32_t selfMask = tree.isRoot(node) ? IN_DELETE_SELF | IN_MOVE_SELF : 0;
    const int watch = inotify.watch(path, folderMask | selfMask);
    if (watch < 0)
        return resultFor(-watch);
    const int former = tree.watch(node);
    if (watch == former)
        return WatchResult::Same;
    if (former < 0)
        return assign(node, watch);
    tree.removeBelow(node);
    tree.clearWatch(node);
    if (tree.atWatch(former) == noNode)
        inotify.retire(former);
    const WatchResult result = assign(node, watch);
    return result == WatchResult::Fresh ? WatchResult::Replaced : result;
}

int WatchInstaller::watchOf(NodeId folder, std::string_view name)
{
    const auto itemPath = tree.itemPath(folder, name, WatchTree::Spelling::Resolved);
    return itemPath ? inotify.watch(*itemPath, folderMask) : -ENOENT;
}

WatchResult WatchInstaller::assign(NodeId& node, int watch)
{
    for (NodeId known = tree.atWatch(watch); known != noNode; known = tree.nextPlace(known)) {
        if (tree.isWithin(node, known))
            return WatchResult::Loop;
        if (!tree.isRoot(node) && !tree.isRoot(known) && hasLeft(known, watch)) {
            moveTo(node, known);
            return WatchResult::Same;
        }
    }
    tree.setWatch(node, watch);
    return WatchResult::Fresh;
}

bool WatchInstaller::hasLeft(NodeId node, int watch)
{
    return !tree.path(node, WatchTree::Spelling::Resolved, otherPath)
        || inotify.watch(otherPath, folderMask) != watch;
}

void WatchInstaller::moveTo(NodeId& fresh, NodeId known)
{
    if (const NodeId parent = tree.parent(known); parent != noNode) {
        const std::string name(tree.name(known));
        tree.detach(known);
        vacated.push_back(tree.ref(tree.add(parent, name)));
    } else {
        pendingRenames.forgetNode(known);
    }
    tree.replace(fresh, known);
    fresh = known;
    reporter.retryDeferred();
}

} // namespace stemvault::file_events
