#pragma once

#include "LinuxDesktop/FileEvents/DirectoryReader.h"
#include "LinuxDesktop/FileEvents/EventReporter.h"
#include "LinuxDesktop/FileEvents/InotifyCalls.h"
#include "LinuxDesktop/FileEvents/PendingRenames.h"
#include "LinuxDesktop/FileEvents/RecentWrites.h"
#include "LinuxDesktop/FileEvents/ScanQueue.h"
#include "LinuxDesktop/FileEvents/StreamClock.h"
#include "LinuxDesktop/FileEvents/WatchInstaller.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault::file_events {

/// Scans the folders in the queue: installs each watch before listing the folder, so that no change
/// is missed. Works in short slices, because the kernel's queue must be read in between.
class TreeWalker {
public:
    /// Called before a folder whose events are not enough is listed; must poll it from then on.
    using StartPolling = std::function<void(NodeId, PollReason)>;

    TreeWalker(WatchTree& watchTree, ScanQueue& scanQueue, WatchInstaller& watchInstaller,
        PendingRenames& renames, EventReporter& eventReporter, RecentWrites& recentWrites,
        const StreamClock& streamClock, InotifyCalls& systemCalls,
        const std::atomic<bool>& streamIsStopping, StartPolling pollFolder);

    /// Scans folders for a few milliseconds. Returns whether there was anything to do.
    bool runSlice();

private:
    /// Properties of a file system, derived from its type.
    struct Device {
        bool isShared; ///< Others may change it without raising an event here.
        bool countsFolders; ///< A folder's link count is two plus the number of folders in it.
    };

    void scanVacatedPlaces(ScanReason reason, FileTime since);
    void scan(Scan scan);
    void scanFolder(NodeId node, Scan scan);
    void list(NodeId node, const Scan& scan, bool areItemsReported);
    void handleEntry(
        NodeId node, int folder, const DirectoryEntry& entry, const Scan& scan, bool isReported);
    void handleSubfolder(
        NodeId parent, std::string_view name, std::uint32_t flags, const Scan& scan);
    void detachMissing(NodeId node);
    void handleMissingFolder(NodeId node, const Scan& scan);
    [[nodiscard]] Device device(std::uint64_t number);

    WatchTree& tree;
    ScanQueue& queue;
    WatchInstaller& installer;
    PendingRenames& pendingRenames;
    EventReporter& reporter;
    RecentWrites& writes;
    const StreamClock& clock;
    InotifyCalls& calls;
    const std::atomic<bool>& isStopping;
    StartPolling startPolling;
    std::vector<std::byte> buffer;
    std::string path;
    std::map<std::uint64_t, Device> devices;
};

} // namespace stemvault::file_events
