#include "LinuxDesktop/FileEvents/EventSorter.h"

#include <cerrno>
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
        fileModified(folder, event);
    else if (event.has(IN_CLOSE_WRITE))
        fileClosed(folder, event);
    else if (event.has(IN_ATTRIB))
        state.writes.account(file(folder, event.name), state.readAt);
    else if (event.has(IN_DELETE))
        fileRemoved(folder, event);
    else if (event.has(IN_MOVED_TO))
        fileArrived(folder, event);
    else if (event.has(IN_MOVED_FROM))
        fileLeft(folder, event);
}

void EventSorter::fileModified(NodeId folder, const InotifyEvent& event)
{
    if (state.reporter.flagsOf(folder, event.name) == 0 && isOnlyDated(folder, event.name))
        return state.writes.account(file(folder, event.name), state.readAt);
    state.writes.noteWrite(file(folder, event.name));
    state.reporter.report(folder, event.name, ItemModified | ItemIsFile, More::Unsaid);
}

/// A file counts as written when it is closed, if it
/// - was written since it was closed last, under this name or, in watched folders, another one;
/// - or was written through a mapping, which raises no event but this.
/// One that was opened for writing and left alone raises the same event. So does one that was
/// touched, and one that was renamed into place and then opened.
void EventSorter::fileClosed(NodeId folder, const InotifyEvent& event)
{
    const std::uint32_t flags = state.reporter.flagsOf(folder, event.name);
    const bool isWritten = state.writes.takeWrite(file(folder, event.name))
        || (flags & (ItemCreated | ItemModified)) != 0 || isWrittenUnnoticed(folder, event.name);
    state.writes.account(file(folder, event.name), state.readAt);
    if (isWritten)
        state.reporter.report(folder, event.name, ItemModified | ItemIsFile, More::Done);
}

/// Setting only the time of modification raises the event of a write. A time that is older than the
/// event, and than the last change of the file's own data, was set by hand.
bool EventSorter::isOnlyDated(NodeId folder, std::string_view name) const
{
    const auto status = statusOf(folder, name);
    return status && status->changed - status->modified > std::chrono::seconds(2)
        && status->modified < state.watchedUntil;
}

/// A write leaves both times of the file equal. A rename or a date set by hand does not, unless it
/// happens in the same tick of the clock, and then its own event accounts for that time.
bool EventSorter::isWrittenUnnoticed(NodeId folder, std::string_view name) const
{
    const auto status = statusOf(folder, name);
    return status && status->modified == status->changed && status->isModifiedSince(state.began)
        && status->modified > state.writes.accountedUntil(file(folder, name));
}

void EventSorter::fileLeft(NodeId folder, const InotifyEvent& event)
{
    Departure departure;
    departure.cookie = event.cookie;
    departure.formerPath = state.reporter.path(folder, event.name).value_or(std::string());
    departure.deadline = std::chrono::steady_clock::now() + Departures::patience;
    departure.isBeingWritten = state.writes.takeWrite(file(folder, event.name));
    state.departures.add(std::move(departure));
}

void EventSorter::fileRemoved(NodeId folder, const InotifyEvent& event)
{
    state.writes.takeWrite(file(folder, event.name));
    state.reporter.report(folder, event.name, ItemRemoved, More::Done);
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
        return state.depart(child, event.cookie, path);
    Departure departure;
    departure.cookie = event.cookie;
    departure.formerPath = path;
    departure.kind = ItemIsDir;
    departure.formerParent = state.tree.ref(folder);
    departure.formerName = event.name;
    departure.deadline = std::chrono::steady_clock::now() + Departures::patience;
    state.departures.add(std::move(departure));
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
    const auto status = statusOf(folder, event.name);
    const std::optional<Departure> departure = state.departures.take(event.cookie);
    // What had the name before is gone, with whatever was known of it.
    state.writes.takeWrite(file(folder, event.name));
    if (departure && departure->isBeingWritten)
        state.writes.noteWrite(file(folder, event.name));
    else
        state.writes.account(file(folder, event.name), state.readAt);
    reportMove(departure, folder, event.name, status ? status->kind() : ItemIsFile);
}

void EventSorter::folderArrived(NodeId parent, const InotifyEvent& event)
{
    std::optional<Departure> departure = state.departures.take(event.cookie);
    reportMove(departure, parent, event.name, ItemIsDir);
    const NodeId there = state.tree.child(parent, event.name);
    if (departure) {
        // What was there is gone, or has changed places with what came.
        if (there != noNode)
            state.depart(there, 0, {}, *departure);
        if (isKnown(departure->node))
            return put(*departure, parent, event.name);
        // One that left before it was met is as new as if it had been met here first.
        return walker.enqueue(
            state.tree.add(parent, event.name), Visit::Created, state.arrivalBound);
    }
    if (there == noNode)
        return meet(parent, event.name);
    NodeId node = there;
    const Placement placement = walker.placer().place(node);
    if (placement != Placement::Fresh && placement != Placement::Replaced)
        return;
    state.tree.clearWatch(node);
    walker.enqueue(
        node, Visit::Arrived, arrivalTime(statusOf(parent, event.name), state.arrivalBound));
}

void EventSorter::meet(NodeId parent, std::string_view name)
{
    const FileTime since = arrivalTime(statusOf(parent, name), state.arrivalBound);
    walker.enqueue(state.tree.add(parent, name), Visit::Arrived, since);
}

/// A name may have changed hands again since the event, so the watch decides what it is.
void EventSorter::put(Departure& departure, NodeId parent, std::string_view name)
{
    const NodeId node = departure.node.id;
    state.tree.attach(node, parent, name);
    const int watch = state.tree.watch(node);
    const int found = watch < 0 ? watch : watchOf(parent, name);
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
    if (!other || !state.tree.isCurrent(departure.formerParent)
        || state.tree.child(departure.formerParent.id, departure.formerName) != noNode)
        return false;
    state.tree.detach(node);
    state.tree.attach(node, departure.formerParent.id, departure.formerName);
    NodeId second = other->node.id;
    if (isKnown(other->node))
        state.tree.attach(second, parent, name);
    else
        second = state.tree.add(parent, name);
    state.reporter.retryDeferred();
    for (const NodeId moved : { node, second })
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
        if (isKnown(departure.node)) {
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
        || watchOf(parent, departure.formerName) != state.tree.watch(node))
        return false;
    state.tree.attach(node, parent, departure.formerName);
    state.reporter.retryDeferred();
    return true;
}

/// Absent while the folder is on the move.
std::optional<std::string> EventSorter::resolvedPath(NodeId folder, std::string_view name) const
{
    std::string path;
    if (!state.tree.path(folder, WatchTree::Spelling::Resolved, path))
        return std::nullopt;
    return path.append("/").append(name);
}

int EventSorter::watchOf(NodeId folder, std::string_view name) const
{
    const std::optional<std::string> path = resolvedPath(folder, name);
    return path ? state.inotify.watch(*path, WatchState::folderMask) : -ENOENT;
}

std::optional<FileStatus> EventSorter::statusOf(NodeId folder, std::string_view name) const
{
    const std::optional<std::string> path = resolvedPath(folder, name);
    return path ? fileStatus(*path) : std::nullopt;
}

} // namespace stemvault
