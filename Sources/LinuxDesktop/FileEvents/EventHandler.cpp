#include "LinuxDesktop/FileEvents/EventHandler.h"

#include <cerrno>
#include <utility>

namespace stemvault {

using namespace FileEventFlag;
using More = EventCoalescer::More;
using Visit = TreeWalker::Visit;

void EventHandler::sort(const InotifyEvent& event)
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

void EventHandler::sortAt(NodeId folder, const InotifyEvent& event)
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

void EventHandler::sortFile(NodeId folder, const InotifyEvent& event)
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

void EventHandler::fileModified(NodeId folder, const InotifyEvent& event)
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
void EventHandler::fileClosed(NodeId folder, const InotifyEvent& event)
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
bool EventHandler::isOnlyDated(NodeId folder, std::string_view name) const
{
    const auto status = statusOf(folder, name);
    return status && status->changed - status->modified > std::chrono::seconds(2)
        && status->modified < state.watchedUntil;
}

/// A write leaves both times of the file equal. A rename or a date set by hand does not, unless it
/// happens in the same tick of the clock, and then its own event accounts for that time.
bool EventHandler::isWrittenUnnoticed(NodeId folder, std::string_view name) const
{
    const auto status = statusOf(folder, name);
    return status && status->modified == status->changed && status->isModifiedSince(state.began)
        && status->modified > state.writes.accountedUntil(file(folder, name));
}

void EventHandler::fileLeft(NodeId folder, const InotifyEvent& event)
{
    PendingRename rename;
    rename.cookie = event.cookie;
    rename.formerPath = state.reporter.path(folder, event.name).value_or(std::string());
    rename.deadline = std::chrono::steady_clock::now() + PendingRenames::pairingTimeout;
    rename.isBeingWritten = state.writes.takeWrite(file(folder, event.name));
    state.pendingRenames.add(std::move(rename));
}

void EventHandler::fileRemoved(NodeId folder, const InotifyEvent& event)
{
    state.writes.takeWrite(file(folder, event.name));
    state.reporter.report(folder, event.name, ItemRemoved, More::Done);
}

void EventHandler::sortFolder(NodeId folder, const InotifyEvent& event)
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
    PendingRename rename;
    rename.cookie = event.cookie;
    rename.formerPath = path;
    rename.kind = ItemIsDir;
    rename.formerParent = state.tree.ref(folder);
    rename.formerName = event.name;
    rename.deadline = std::chrono::steady_clock::now() + PendingRenames::pairingTimeout;
    state.pendingRenames.add(std::move(rename));
}

void EventHandler::folderCreated(NodeId parent, std::string_view name)
{
    NodeId folder = state.tree.child(parent, name);
    if (folder != noNode) {
        // As a rule a listing was faster than the event and has reported it already.
        const WatchResult result = walker.installer().place(folder);
        if (result != WatchResult::Fresh && result != WatchResult::Replaced)
            return;
    } else {
        folder = state.tree.add(parent, name);
    }
    state.reporter.report(folder, ItemCreated | ItemIsDir);
    state.tree.clearWatch(folder);
    walker.enqueue(folder, Visit::Created, state.arrivalBound);
}

void EventHandler::folderRemoved(NodeId parent, std::string_view name)
{
    state.reporter.report(parent, name, ItemRemoved | ItemIsDir, More::Done);
    if (const NodeId folder = state.tree.child(parent, name); folder != noNode)
        state.remove(folder);
}

void EventHandler::fileArrived(NodeId folder, const InotifyEvent& event)
{
    const auto status = statusOf(folder, event.name);
    const std::optional<PendingRename> rename = state.pendingRenames.take(event.cookie);
    // What had the name before is gone, with whatever was known of it.
    state.writes.takeWrite(file(folder, event.name));
    if (rename && rename->isBeingWritten)
        state.writes.noteWrite(file(folder, event.name));
    else
        state.writes.account(file(folder, event.name), state.readAt);
    reportMove(rename, folder, event.name, status ? status->kind() : ItemIsFile);
}

void EventHandler::folderArrived(NodeId parent, const InotifyEvent& event)
{
    std::optional<PendingRename> rename = state.pendingRenames.take(event.cookie);
    reportMove(rename, parent, event.name, ItemIsDir);
    const NodeId there = state.tree.child(parent, event.name);
    if (rename) {
        // What was there is gone, or has changed places with what came.
        if (there != noNode)
            state.depart(there, 0, {}, *rename);
        if (isKnown(rename->node))
            return put(*rename, parent, event.name);
        // One that left before it was met is as new as if it had been met here first.
        return walker.enqueue(
            state.tree.add(parent, event.name), Visit::Created, state.arrivalBound);
    }
    if (there == noNode)
        return meet(parent, event.name);
    NodeId node = there;
    const WatchResult result = walker.installer().place(node);
    if (result != WatchResult::Fresh && result != WatchResult::Replaced)
        return;
    state.tree.clearWatch(node);
    walker.enqueue(
        node, Visit::Arrived, arrivalTime(statusOf(parent, event.name), state.arrivalBound));
}

void EventHandler::meet(NodeId parent, std::string_view name)
{
    const FileTime since = arrivalTime(statusOf(parent, name), state.arrivalBound);
    walker.enqueue(state.tree.add(parent, name), Visit::Arrived, since);
}

/// A name may have changed hands again since the event, so the watch decides what it is.
void EventHandler::put(PendingRename& rename, NodeId parent, std::string_view name)
{
    const NodeId node = rename.node.id;
    state.tree.attach(node, parent, name);
    const int watch = state.tree.watch(node);
    const int found = watch < 0 ? watch : watchOf(parent, name);
    if ((watch < 0 || found != watch) && changePlaces(rename, parent, name))
        return;
    if (found >= 0 && found != watch) {
        state.tree.detach(node);
        meet(parent, name);
        if (takeBack(rename))
            return;
        rename.formerPath.clear();
        rename.cookie = 0;
        rename.deadline = std::chrono::steady_clock::now() + PendingRenames::pairingTimeout;
        return state.pendingRenames.add(std::move(rename));
    }
    state.reporter.retryDeferred();
}

/// Of two folders that change places the second seems to be the first, which leaves again at once.
bool EventHandler::changePlaces(const PendingRename& rename, NodeId parent, std::string_view name)
{
    const NodeId node = rename.node.id;
    const auto other = state.pendingRenames.takeReplaced(rename, parent, name);
    if (!other || !state.tree.isCurrent(rename.formerParent)
        || state.tree.child(rename.formerParent.id, rename.formerName) != noNode)
        return false;
    state.tree.detach(node);
    state.tree.attach(node, rename.formerParent.id, rename.formerName);
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

void EventHandler::reportMove(const std::optional<PendingRename>& rename, NodeId parent,
    std::string_view name, std::uint32_t kind)
{
    if (rename && !rename->formerPath.empty())
        state.reporter.report(rename->formerPath, ItemRenamed | kind);
    state.reporter.report(parent, name, ItemRenamed | kind, More::Done);
}

void EventHandler::watchEnded(int watch)
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

void EventHandler::expirePendingRenames()
{
    for (const PendingRename& rename :
        state.pendingRenames.takeExpired(std::chrono::steady_clock::now())) {
        if (isKnown(rename.node)) {
            if (takeBack(rename))
                continue;
            state.remove(rename.node.id);
            lookAtFormerPlace(rename);
        }
        if (!rename.formerPath.empty())
            state.reporter.report(rename.formerPath, ItemRenamed | ItemRemoved | rename.kind);
    }
    state.reporter.retryDeferred();
}

/// What left may have changed places with something that came from where nobody watched.
void EventHandler::lookAtFormerPlace(const PendingRename& rename)
{
    const NodeId parent = rename.formerParent.id;
    if (parent != noNode && state.tree.isCurrent(rename.formerParent)
        && state.tree.child(parent, rename.formerName) == noNode)
        walker.enqueue(state.tree.add(parent, rename.formerName), Visit::Arrived, rename.since);
}

/// Of two names that changed hands in a row the later event may have taken the wrong folder; it is
/// then still where it was taken from.
bool EventHandler::takeBack(const PendingRename& rename)
{
    const NodeId node = rename.node.id;
    const NodeId parent = rename.formerParent.id;
    if (parent == noNode || !state.tree.isCurrent(rename.formerParent)
        || state.tree.child(parent, rename.formerName) != noNode || state.tree.watch(node) < 0
        || watchOf(parent, rename.formerName) != state.tree.watch(node))
        return false;
    state.tree.attach(node, parent, rename.formerName);
    state.reporter.retryDeferred();
    return true;
}

/// Absent while the folder is on the move.
std::optional<std::string> EventHandler::resolvedPath(NodeId folder, std::string_view name) const
{
    std::string path;
    if (!state.tree.path(folder, WatchTree::Spelling::Resolved, path))
        return std::nullopt;
    return path.append("/").append(name);
}

int EventHandler::watchOf(NodeId folder, std::string_view name) const
{
    const std::optional<std::string> path = resolvedPath(folder, name);
    return path ? state.inotify.watch(*path, WatchState::folderMask) : -ENOENT;
}

std::optional<FileStatus> EventHandler::statusOf(NodeId folder, std::string_view name) const
{
    const std::optional<std::string> path = resolvedPath(folder, name);
    return path ? fileStatus(*path) : std::nullopt;
}

} // namespace stemvault
