#include "LinuxDesktop/FileEvents/RenameHandler.h"

#include "Platform/FileEvents.h"

#include <chrono>
#include <utility>

namespace stemvault::file_events {

using namespace FileEventFlag;
using More = EventCoalescer::More;

void RenameHandler::fileLeft(NodeId folder, const InotifyEvent& event)
{
    PendingRename rename;
    rename.cookie = event.cookie;
    rename.formerPath = reporter.path(folder, event.name).value_or(std::string());
    rename.isBeingWritten = detector.nameLost(folder, event.name);
    pendingRenames.add(std::move(rename));
}

void RenameHandler::folderLeft(NodeId parent, const InotifyEvent& event)
{
    std::string path = reporter.path(parent, event.name).value_or(std::string());
    if (const NodeId child = tree.child(parent, event.name); child != noNode) {
        pendingRenames.detach(child, event.cookie, std::move(path));
        return;
    }
    PendingRename rename;
    rename.cookie = event.cookie;
    rename.formerPath = std::move(path);
    rename.kind = ItemIsDir;
    rename.formerParent = tree.ref(parent);
    rename.formerName = event.name;
    pendingRenames.add(std::move(rename));
}

void RenameHandler::fileArrived(NodeId folder, const InotifyEvent& event)
{
    const auto status = itemStatus(tree, folder, event.name);
    const std::optional<PendingRename> rename = pendingRenames.take(event.cookie);
    detector.nameGained(folder, event.name, rename && rename->isBeingWritten);
    report(rename, folder, event.name, status ? status->kind() : ItemIsFile);
}

void RenameHandler::folderArrived(NodeId parent, const InotifyEvent& event)
{
    std::optional<PendingRename> rename = pendingRenames.take(event.cookie);
    report(rename, parent, event.name, ItemIsDir);
    if (rename)
        folderArrivedFrom(*rename, parent, event.name);
    else
        folderArrivedFromElsewhere(parent, event.name);
}

void RenameHandler::folderArrivedFrom(PendingRename& rename, NodeId parent, std::string_view name)
{
    // A folder that is known at this place was replaced, or is the other half of an exchange.
    if (const NodeId there = tree.child(parent, name); there != noNode)
        pendingRenames.detach(there, 0, {}, rename);
    if (tree.isCurrent(rename.node)) {
        attach(rename, parent, name);
        return;
    }
    // A folder that has no node yet is handled as if it had been created here.
    queue.add(tree.add(parent, name), ScanReason::Created, clock.arrivalBound);
}

void RenameHandler::folderArrivedFromElsewhere(NodeId parent, std::string_view name)
{
    NodeId node = tree.child(parent, name);
    if (node == noNode) {
        addArrived(parent, name);
        return;
    }
    const WatchResult result = installer.install(node);
    if (result != WatchResult::Fresh && result != WatchResult::Replaced)
        return;
    // Without a watch on the node, the scan treats the folder as fresh and lists it.
    tree.clearWatch(node);
    queue.add(
        node, ScanReason::Arrived, arrivalTime(itemStatus(tree, parent, name), clock.arrivalBound));
}

void RenameHandler::attach(PendingRename& rename, NodeId parent, std::string_view name)
{
    const NodeId node = rename.node.id;
    tree.attach(node, parent, name);
    const int watch = tree.watch(node);
    const int found = watch < 0 ? watch : installer.watchOf(parent, name);
    if ((watch < 0 || found != watch) && completeExchange(rename, parent, name))
        return;
    if (found < 0 || found == watch) {
        reporter.retryDeferred();
        return;
    }
    // Another folder has this name by now. Later events will show where the renamed one is.
    tree.detach(node);
    addArrived(parent, name);
    if (undo(rename))
        return;
    rename.formerPath.clear();
    rename.cookie = 0;
    pendingRenames.add(std::move(rename));
}

/// The kernel announces an exchange of A and B as two renames: A to B, then B to A. The second one
/// finds A's node at B, so A seems to move there and back. This function puts A's node at B, and
/// B's node, which the first rename detached, at A.
bool RenameHandler::completeExchange(
    const PendingRename& rename, NodeId parent, std::string_view name)
{
    const auto replaced = pendingRenames.takeReplaced(rename, parent, name);
    if (!replaced || !isPlaceFree(rename.formerParent, rename.formerName))
        return false;
    const NodeId node = rename.node.id;
    tree.detach(node);
    tree.attach(node, rename.formerParent.id, rename.formerName);
    NodeId other = replaced->node.id;
    if (tree.isCurrent(replaced->node))
        tree.attach(other, parent, name);
    else
        other = tree.add(parent, name);
    reporter.retryDeferred();
    for (const NodeId moved : { node, other })
        queue.add(moved, ScanReason::Arrived, clock.arrivalBound);
    return true;
}

/// When a name is reused by several renames in a row, a later event may detach the wrong folder,
/// which is then still at its former place. Puts its node back; false if the folder is not there.
bool RenameHandler::undo(const PendingRename& rename)
{
    const int watch = tree.watch(rename.node.id);
    if (watch < 0 || !isPlaceFree(rename.formerParent, rename.formerName)
        || installer.watchOf(rename.formerParent.id, rename.formerName) != watch)
        return false;
    tree.attach(rename.node.id, rename.formerParent.id, rename.formerName);
    reporter.retryDeferred();
    return true;
}

void RenameHandler::expirePendingRenames()
{
    for (const PendingRename& rename :
        pendingRenames.takeExpired(std::chrono::steady_clock::now())) {
        if (tree.isCurrent(rename.node)) {
            if (undo(rename))
                continue;
            tree.remove(rename.node.id);
            scanFormerPlace(rename);
        }
        if (!rename.formerPath.empty())
            reporter.report(rename.formerPath, ItemRenamed | ItemRemoved | rename.kind);
    }
    reporter.retryDeferred();
}

/// A folder that left may have been exchanged with one from outside the watched folders, whose
/// arrival is announced only as a rename without a first half.
void RenameHandler::scanFormerPlace(const PendingRename& rename)
{
    if (isPlaceFree(rename.formerParent, rename.formerName))
        queue.add(
            tree.add(rename.formerParent.id, rename.formerName), ScanReason::Arrived, rename.since);
}

void RenameHandler::addArrived(NodeId parent, std::string_view name)
{
    const FileTime since = arrivalTime(itemStatus(tree, parent, name), clock.arrivalBound);
    queue.add(tree.add(parent, name), ScanReason::Arrived, since);
}

void RenameHandler::report(const std::optional<PendingRename>& rename, NodeId parent,
    std::string_view name, std::uint32_t kind)
{
    if (rename && !rename->formerPath.empty())
        reporter.report(rename->formerPath, ItemRenamed | kind);
    reporter.report(parent, name, ItemRenamed | kind, More::Done);
}

bool RenameHandler::isPlaceFree(const NodeRef& parent, const std::string& name) const
{
    return tree.isCurrent(parent) && tree.child(parent.id, name) == noNode;
}

} // namespace stemvault::file_events
