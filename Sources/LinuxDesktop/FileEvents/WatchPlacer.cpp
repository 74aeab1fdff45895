#include "LinuxDesktop/FileEvents/WatchPlacer.h"

#include <cerrno>
#include <utility>

namespace stemvault {

namespace {

Placement placementFor(int error)
{
    switch (error) {
    case ENOSPC:
    case ENOMEM:
    case EMFILE:
    case ENFILE:
        return Placement::Unwatched;
    case EACCES:
    case EPERM:
        return Placement::Unreadable;
    default:
        return Placement::Gone;
    }
}

} // namespace

Placement WatchPlacer::place(NodeId& node)
{
    WatchTree& tree = state.tree;
    if (!tree.path(node, WatchTree::Spelling::Resolved, path))
        return Placement::Gone;
    const std::uint32_t selfMask = tree.isRoot(node) ? IN_DELETE_SELF | IN_MOVE_SELF : 0;
    const int watch = state.inotify.watch(path, WatchState::folderMask | selfMask);
    if (watch < 0)
        return placementFor(-watch);
    const int former = tree.watch(node);
    if (watch == former)
        return Placement::Same;
    if (former < 0)
        return settle(node, watch);
    state.removeBelow(node);
    tree.clearWatch(node);
    if (tree.atWatch(former) == noNode)
        state.inotify.retire(former);
    const Placement placement = settle(node, watch);
    return placement == Placement::Fresh ? Placement::Replaced : placement;
}

bool WatchPlacer::isAt(const std::string& place, int watch)
{
    return state.inotify.watch(place, WatchState::folderMask) == watch;
}

Placement WatchPlacer::settle(NodeId& node, int watch)
{
    WatchTree& tree = state.tree;
    for (NodeId known = tree.atWatch(watch); known != noNode; known = tree.nextPlace(known)) {
        if (tree.isWithin(node, known))
            return Placement::Loop;
        if (!tree.isRoot(node) && !tree.isRoot(known) && hasLeft(known, watch)) {
            moveTo(node, known);
            return Placement::Same;
        }
    }
    tree.setWatch(node, watch);
    return Placement::Fresh;
}

bool WatchPlacer::hasLeft(NodeId node, int watch)
{
    return !state.tree.path(node, WatchTree::Spelling::Resolved, otherPath)
        || !isAt(otherPath, watch);
}

void WatchPlacer::moveTo(NodeId& fresh, NodeId known)
{
    if (const NodeId parent = state.tree.parent(known); parent != noNode) {
        const std::string name(state.tree.name(known));
        state.tree.detach(known);
        state.vacated.push_back(state.tree.ref(state.tree.add(parent, name)));
    } else {
        state.departures.forgetNode(known);
    }
    state.tree.replace(fresh, known);
    fresh = known;
    state.reporter.retryDeferred();
}

} // namespace stemvault
