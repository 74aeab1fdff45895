#pragma once

#include "LinuxDesktop/FileEvents/EventReporter.h"
#include "LinuxDesktop/FileEvents/InotifyEvent.h"
#include "LinuxDesktop/FileEvents/PendingRenames.h"
#include "LinuxDesktop/FileEvents/ScanQueue.h"
#include "LinuxDesktop/FileEvents/StreamClock.h"
#include "LinuxDesktop/FileEvents/WatchInstaller.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"
#include "LinuxDesktop/FileEvents/WriteDetector.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace stemvault::file_events {

/// Pairs the two halves of renames and moves the nodes of folders accordingly. By the time an event
/// is read, its name may belong to another folder, so the watch at the path identifies the folder.
class RenameHandler {
public:
    RenameHandler(WatchTree& watchTree, PendingRenames& renames, ScanQueue& scanQueue,
        WatchInstaller& watchInstaller, WriteDetector& writeDetector, EventReporter& eventReporter,
        const StreamClock& streamClock)
        : tree(watchTree), pendingRenames(renames), queue(scanQueue), installer(watchInstaller),
          detector(writeDetector), reporter(eventReporter), clock(streamClock)
    {
    }

    /// IN_MOVED_FROM
    void fileLeft(NodeId folder, const InotifyEvent& event);
    void folderLeft(NodeId parent, const InotifyEvent& event);
    /// IN_MOVED_TO
    void fileArrived(NodeId folder, const InotifyEvent& event);
    void folderArrived(NodeId parent, const InotifyEvent& event);

    /// Treats renamed items as removed if they did not turn up within the pairing timeout.
    void expirePendingRenames();

private:
    void folderArrivedFrom(PendingRename& rename, NodeId parent, std::string_view name);
    void folderArrivedFromElsewhere(NodeId parent, std::string_view name);
    void attach(PendingRename& rename, NodeId parent, std::string_view name);
    bool completeExchange(const PendingRename& rename, NodeId parent, std::string_view name);
    bool undo(const PendingRename& rename);
    void addArrived(NodeId parent, std::string_view name);
    void scanFormerPlace(const PendingRename& rename);
    void report(const std::optional<PendingRename>& rename, NodeId parent, std::string_view name,
        std::uint32_t kind);
    [[nodiscard]] bool isPlaceFree(const NodeRef& parent, const std::string& name) const;

    WatchTree& tree;
    PendingRenames& pendingRenames;
    ScanQueue& queue;
    WatchInstaller& installer;
    WriteDetector& detector;
    EventReporter& reporter;
    const StreamClock& clock;
};

} // namespace stemvault::file_events
