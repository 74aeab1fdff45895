#include "LinuxDesktop/FileEvents/EventHandler.h"

#include "Platform/FileEvents.h"

#include <sys/inotify.h>

namespace stemvault::file_events {

using namespace FileEventFlag;
using More = EventCoalescer::More;

void EventHandler::handle(const InotifyEvent& event)
{
    if (event.has(IN_IGNORED)) {
        watchEnded(event.watch);
        return;
    }
    // Handling an event may change the chain of places, so copy it first.
    places.clear();
    for (NodeId node = tree.atWatch(event.watch); node != noNode; node = tree.nextPlace(node))
        places.push_back(tree.ref(node));
    for (const NodeRef& place : places)
        if (tree.isCurrent(place))
            handleAt(place.id, event);
}

void EventHandler::handleAt(NodeId folder, const InotifyEvent& event)
{
    if (event.has(IN_ATTRIB))
        queue.retryUnreadable(folder);
    // Without a name the event is about the watched folder itself; its parent's watch reports it.
    if (event.name.empty())
        return;
    if (event.has(IN_ISDIR))
        handleFolder(folder, event);
    else
        handleFile(folder, event);
}

void EventHandler::handleFile(NodeId folder, const InotifyEvent& event)
{
    if (event.has(IN_CREATE))
        reporter.report(folder, event.name, ItemCreated, More::Expected);
    else if (event.has(IN_MODIFY))
        detector.modified(folder, event.name);
    else if (event.has(IN_CLOSE_WRITE))
        detector.closed(folder, event.name);
    else if (event.has(IN_ATTRIB))
        detector.attributesChanged(folder, event.name);
    else if (event.has(IN_DELETE))
        fileRemoved(folder, event.name);
    else if (event.has(IN_MOVED_TO))
        renames.fileArrived(folder, event);
    else if (event.has(IN_MOVED_FROM))
        renames.fileLeft(folder, event);
}

void EventHandler::handleFolder(NodeId parent, const InotifyEvent& event)
{
    if (event.has(IN_CREATE))
        folderCreated(parent, event.name);
    else if (event.has(IN_DELETE))
        folderRemoved(parent, event.name);
    else if (event.has(IN_MOVED_TO))
        renames.folderArrived(parent, event);
    else if (event.has(IN_MOVED_FROM))
        renames.folderLeft(parent, event);
}

void EventHandler::folderCreated(NodeId parent, std::string_view name)
{
    NodeId folder = tree.child(parent, name);
    if (folder != noNode) {
        // Usually a listing of the parent has reported the folder before its event was read.
        const WatchResult result = installer.install(folder);
        if (result != WatchResult::Fresh && result != WatchResult::Replaced)
            return;
    } else {
        folder = tree.add(parent, name);
    }
    reporter.report(folder, ItemCreated | ItemIsDir);
    // Without a watch on the node, the scan treats the folder as fresh and lists it.
    tree.clearWatch(folder);
    queue.add(folder, ScanReason::Created, clock.arrivalBound);
}

void EventHandler::folderRemoved(NodeId parent, std::string_view name)
{
    reporter.report(parent, name, ItemRemoved | ItemIsDir, More::Done);
    if (const NodeId folder = tree.child(parent, name); folder != noNode)
        tree.remove(folder);
}

void EventHandler::fileRemoved(NodeId folder, std::string_view name)
{
    static_cast<void>(detector.nameLost(folder, name));
    reporter.report(folder, name, ItemRemoved, More::Done);
}

void EventHandler::watchEnded(int watch)
{
    for (NodeId node = tree.atWatch(watch); node != noNode; node = tree.atWatch(watch)) {
        tree.clearWatch(node);
        // RootTracker handles the roots.
        if (!tree.isRoot(node))
            queue.add(node, ScanReason::Check, clock.watchedUntil);
    }
}

} // namespace stemvault::file_events
