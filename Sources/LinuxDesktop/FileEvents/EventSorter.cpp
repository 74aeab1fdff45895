#include "LinuxDesktop/FileEvents/EventSorter.h"

#include <utility>

namespace stemvault {

using namespace FileEventFlag;
using More = EventWindow::More;
using Visit = TreeWalker::Visit;

void EventSorter::sort(const InotifyEvent& event)
{
    if (event.has(IN_IGNORED))
        return watchEnded(event.watch);
    const NodeId place = state.tree.atWatch(event.watch);
    if (place == noNode)
        return;
    if (state.tree.nextPlace(place) == noNode)
        return sortAt(place, event);
    // Sorting may change the chain, so the places are noted first.
    places.clear();
    for (NodeId next = place; next != noNode; next = state.tree.nextPlace(next))
        places.push_back(state.tree.ref(next));
    for (const NodeRef& node : places)
        if (state.tree.isCurrent(node))
            sortAt(node.id, event);
}

void EventSorter::sortAt(NodeId folder, const InotifyEvent& event)
{
    if (event.has(IN_ATTRIB))
        walker.retryUnreadable(folder);
    if (event.name.empty())
        return;
    if (event.has(IN_ISDIR))
        sortFolder(folder, event);
    else
        sortFile(folder, event);
}

void EventSorter::sortFile(NodeId folder, const InotifyEvent& event)
{
    if (event.has(IN_CREATE))
        state.reporter.report(folder, event.name, ItemCreated, More::Expected);
    else if (event.has(IN_MODIFY))
        state.reporter.report(folder, event.name, ItemModified | ItemIsFile, More::Unsaid);
    else if (event.has(IN_CLOSE_WRITE))
        closed(folder, event);
    else if (event.has(IN_DELETE))
        state.reporter.report(folder, event.name, ItemRemoved, More::Done);
    else if (event.has(IN_MOVED_TO))
        fileArrived(folder, event);
    else if (event.has(IN_MOVED_FROM))
        state.departures.add(
            { event.cookie, state.reporter.path(folder, event.name).value_or(std::string()), 0, {},
                {}, {}, std::chrono::steady_clock::now() + Departures::patience });
}

/// Writing through a mapping raises no event but this one; so does opening a file for writing and
/// closing it again untouched. A write leaves both times of the file equal, while one that was put
/// in place with an older time of its own keeps that: it was moved here, not recorded.
void EventSorter::closed(NodeId folder, const InotifyEvent& event)
{
    const std::uint32_t flags = state.reporter.flagsOf(folder, event.name);
    if ((flags & (ItemCreated | ItemModified)) == 0) {
        const auto status = fileStatus(resolvedPath(folder, event.name));
        if (!status || status->modified != status->changed)
            return;
    }
    state.reporter.report(folder, event.name, ItemModified | ItemIsFile, More::Done);
}

void EventSorter::sortFolder(NodeId folder, const InotifyEvent& event)
{
    if (event.has(IN_CREATE))
        return folderCreated(folder, event.name);
    if (event.has(IN_DELETE))
        return folderRemoved(folder, event.name);
    if (event.has(IN_MOVED_TO))
        return folderArrived(folder, event);
    if (!event.has(IN_MOVED_FROM))
        return;
    const std::string path = state.reporter.path(folder, event.name).value_or(std::string());
    if (const NodeId child = state.tree.child(folder, event.name); child != noNode)
        state.depart(child, event.cookie, path);
    else
        state.departures.add({ event.cookie, path, ItemIsDir, {}, {}, {},
            std::chrono::steady_clock::now() + Departures::patience });
}

void EventSorter::folderCreated(NodeId parent, std::string_view name)
{
    NodeId folder = state.tree.child(parent, name);
    if (folder != noNode) {
        // As a rule a listing was faster than the event and has reported it already.
        const Placement placement = walker.placer().place(folder);
        if (placement != Placement::Fresh && placement != Placement::Replaced)
            return;
    } else {
        folder = state.tree.add(parent, name);
    }
    state.reporter.report(folder, ItemCreated | ItemIsDir);
    state.tree.clearWatch(folder);
    walker.enqueue(folder, Visit::Created, state.arrivalBound);
}

void EventSorter::folderRemoved(NodeId parent, std::string_view name)
{
    state.reporter.report(parent, name, ItemRemoved | ItemIsDir, More::Done);
    if (const NodeId folder = state.tree.child(parent, name); folder != noNode)
        state.remove(folder);
}

void EventSorter::fileArrived(NodeId folder, const InotifyEvent& event)
{
    const auto status = fileStatus(resolvedPath(folder, event.name));
    const std::optional<Departure> departure = state.departures.take(event.cookie);
    reportMove(departure, folder, event.name, status ? status->kind() : ItemIsFile);
}

void EventSorter::folderArrived(NodeId parent, const InotifyEvent& event)
{
    std::optional<Departure> departure = state.departures.take(event.cookie);
    reportMove(departure, parent, event.name, ItemIsDir);
    const NodeId there = state.tree.child(parent, event.name);
    if (departure && departure->node.id != noNode && state.tree.isCurrent(departure->node)) {
        // What was there is gone, or has changed places with what came.
        if (there != noNode)
            state.depart(there, 0, {}, *departure);
        return put(*departure, parent, event.name);
    }
    // One that left before it was met is as new as if it had been met here first.
    if (there == noNode && departure)
        return walker.enqueue(
            state.tree.add(parent, event.name), Visit::Created, state.arrivalBound);
    if (there == noNode)
        return meet(parent, event.name);
    NodeId node = there;
    const Placement placement = walker.placer().place(node);
    if (placement != Placement::Fresh && placement != Placement::Replaced)
        return;
    state.tree.clearWatch(node);
    walker.enqueue(node, Visit::Arrived,
        arrivalTime(fileStatus(resolvedPath(parent, event.name)), state.arrivalBound));
}

void EventSorter::meet(NodeId parent, std::string_view name)
{
    const FileTime since = arrivalTime(fileStatus(resolvedPath(parent, name)), state.arrivalBound);
    walker.enqueue(state.tree.add(parent, name), Visit::Arrived, since);
}

/// A name may have changed hands again since the event, so the watch decides what it is.
void EventSorter::put(Departure& departure, NodeId parent, std::string_view name)
{
    const NodeId node = departure.node.id;
    state.tree.attach(node, parent, name);
    const int watch = state.tree.watch(node);
    const int found =
        watch < 0 ? watch : state.inotify.watch(resolvedPath(parent, name), WatchState::folderMask);
    if ((watch < 0 || found != watch) && changePlaces(departure, parent, name))
        return;
    if (found >= 0 && found != watch) {
        state.tree.detach(node);
        meet(parent, name);
        if (takeBack(departure))
            return;
        departure.formerPath.clear();
        departure.cookie = 0;
        departure.deadline = std::chrono::steady_clock::now() + Departures::patience;
        return state.departures.add(std::move(departure));
    }
    state.reporter.retryDeferred();
}

/// Of two folders that change places the second seems to be the first, which leaves again at once.
bool EventSorter::changePlaces(const Departure& departure, NodeId parent, std::string_view name)
{
    const NodeId node = departure.node.id;
    const auto other = state.departures.takeDisplaced(departure, parent, name);
    if (!other || !state.tree.isCurrent(other->node)
        || !state.tree.isCurrent(departure.formerParent))
        return false;
    state.tree.detach(node);
    state.tree.attach(node, departure.formerParent.id, departure.formerName);
    state.tree.attach(other->node.id, parent, name);
    state.reporter.retryDeferred();
    for (const NodeId moved : { node, other->node.id })
        walker.enqueue(moved, Visit::Arrived, state.arrivalBound);
    return true;
}

void EventSorter::reportMove(const std::optional<Departure>& departure, NodeId parent,
    std::string_view name, std::uint32_t kind)
{
    if (departure && !departure->formerPath.empty())
        state.reporter.report(departure->formerPath, ItemRenamed | kind);
    state.reporter.report(parent, name, ItemRenamed | kind, More::Done);
}

void EventSorter::watchEnded(int watch)
{
    while (true) {
        const NodeId node = state.tree.atWatch(watch);
        if (node == noNode)
            return;
        state.tree.clearWatch(node);
        if (!state.tree.isRoot(node))
            walker.enqueue(node, Visit::Check, state.watchedUntil);
    }
}

void EventSorter::settleDepartures()
{
    for (const Departure& departure :
        state.departures.takeOverdue(std::chrono::steady_clock::now())) {
        if (departure.node.id != noNode && state.tree.isCurrent(departure.node)) {
            if (takeBack(departure))
                continue;
            state.remove(departure.node.id);
            lookAtFormerPlace(departure);
        }
        if (!departure.formerPath.empty())
            state.reporter.report(departure.formerPath, ItemRenamed | ItemRemoved | departure.kind);
    }
    state.reporter.retryDeferred();
}

/// What left may have changed places with something that came from where nobody watched.
void EventSorter::lookAtFormerPlace(const Departure& departure)
{
    const NodeId parent = departure.formerParent.id;
    if (parent != noNode && state.tree.isCurrent(departure.formerParent)
        && state.tree.child(parent, departure.formerName) == noNode)
        walker.enqueue(
            state.tree.add(parent, departure.formerName), Visit::Arrived, departure.since);
}

/// Of two names that changed hands in a row the later event may have taken the wrong folder; it is
/// then still where it was taken from.
bool EventSorter::takeBack(const Departure& departure)
{
    const NodeId node = departure.node.id;
    const NodeId parent = departure.formerParent.id;
    if (parent == noNode || !state.tree.isCurrent(departure.formerParent)
        || state.tree.child(parent, departure.formerName) != noNode || state.tree.watch(node) < 0
        || !walker.placer().isAt(
            resolvedPath(parent, departure.formerName), state.tree.watch(node)))
        return false;
    state.tree.attach(node, parent, departure.formerName);
    state.reporter.retryDeferred();
    return true;
}

/// A path that leads nowhere while the folder is on the move.
std::string EventSorter::resolvedPath(NodeId folder, std::string_view name) const
{
    std::string path;
    if (!state.tree.path(folder, WatchTree::Spelling::Resolved, path))
        return "/proc/self/nowhere";
    return path.append("/").append(name);
}

} // namespace stemvault
