#include "LinuxDesktop/FileEvents/WatchInstaller.h"

#include <cerrno>
#include <utility>

namespace stemvault {

namespace {

WatchResult placementFor(int error)
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

WatchResult WatchInstaller::place(NodeId& node)
{
    WatchTree& tree = state.tree;
    if (!tree.path(node, WatchTree::Spelling::Resolved, path))
        return WatchResult::Gone;
    const std::uint32_t selfMask = tree.isRoot(node) ? IN_DELETE_SELF | IN_MOVE_SELF : 0;
    const int watch = state.inotify.watch(path, WatchState::folderMask | selfMask);
    if (watch < 0)
        return placementFor(-watch);
    const int former = tree.watch(node);
    if (watch == former)
        return WatchResult::Same;
    if (former < 0)
        return settle(node, watch);
    state.removeBelow(node);
    tree.clearWatch(node);
    if (tree.atWatch(former) == noNode)
        state.inotify.retire(former);
    const WatchResult result = settle(node, watch);
    return result == WatchResult::Fresh ? WatchResult::Replaced : result;
}

bool WatchInstaller::isAt(const std::string& place, int watch)
{
    return state.inotify.watch(place, WatchState::folderMask) == watch;
}

WatchResult WatchInstaller::settle(NodeId& node, int watch)
{
    WatchTree& tree = state.tree;
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
    return !state.tree.path(node, WatchTree::Spelling::Resolved, otherPath)
        || !isAt(otherPath, watch);
}

void WatchInstaller::moveTo(NodeId& fresh, NodeId known)
{
    if (const NodeId parent = state.tree.parent(known); parent != noNode) {
        const std::string name(state.tree.name(known));
        state.tree.detach(known);
        state.vacated.push_back(state.tree.ref(state.tree.add(parent, name)));
    } else {
        state.pendingRenames.forgetNode(known);
    }
    state.tree.replace(fresh, known);
    fresh = known;
    state.reporter.retryDeferred();
}

} // namespace stemvault
