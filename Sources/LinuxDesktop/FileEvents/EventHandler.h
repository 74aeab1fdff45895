#pragma once

#include "LinuxDesktop/FileEvents/EventReporter.h"
#include "LinuxDesktop/FileEvents/InotifyEvent.h"
#include "LinuxDesktop/FileEvents/RenameHandler.h"
#include "LinuxDesktop/FileEvents/ScanQueue.h"
#include "LinuxDesktop/FileEvents/StreamClock.h"
#include "LinuxDesktop/FileEvents/WatchInstaller.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"
#include "LinuxDesktop/FileEvents/WriteDetector.h"

#include <string_view>
#include <vector>

namespace stemvault::file_events {

/// Finds the folder that an event is about and turns the event into reports, changes to the tree
/// and scans.
class EventHandler {
public:
    EventHandler(WatchTree& watchTree, ScanQueue& scanQueue, WatchInstaller& watchInstaller,
        WriteDetector& writeDetector, RenameHandler& renameHandler, EventReporter& eventReporter,
        const StreamClock& streamClock)
        : tree(watchTree), queue(scanQueue), installer(watchInstaller), detector(writeDetector),
          renames(renameHandler), reporter(eventReporter), clock(streamClock)
    {
    }

    void handle(const InotifyEvent& event);

private:
    void handleAt(NodeId folder, const InotifyEvent& event);
    void handleFile(NodeId folder, const InotifyEvent& event);
    void handleFolder(NodeId parent, const InotifyEvent& event);
    void folderCreated(NodeId parent, std::string_view name);
    void folderRemoved(NodeId parent, std::string_view name);
    void fileRemoved(NodeId folder, std::string_view name);
    void watchEnded(int watch);

    WatchTree& tree;
    ScanQueue& queue;
    WatchInstaller& installer;
    WriteDetector& detector;
    RenameHandler& renames;
    EventReporter& reporter;
    const StreamClock& clock;
    std::vector<NodeRef> places;
};

} // namespace stemvault::file_events
