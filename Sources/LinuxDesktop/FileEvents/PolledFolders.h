#pragma once

#include "LinuxDesktop/FileEvents/EventReporter.h"
#include "LinuxDesktop/FileEvents/PendingRenames.h"
#include "LinuxDesktop/FileEvents/ScanQueue.h"
#include "LinuxDesktop/FileEvents/WatchInstaller.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace stemvault::file_events {

/// The folders whose events are not enough: those beyond the watch limit, and those on file systems
/// that others change as well. Each is listed at intervals and compared with its previous listing,
/// which works without a common clock:
///
/// - A known file counts as written when its size or modification time has changed, unless it was
///   touched or its date was set back. A change of only its mode or inode number does not count;
///   some file systems make inode numbers up.
/// - A file that is new or has replaced another one counts as written when it was modified since
///   the last poll. Otherwise it was moved here, or copied with its date.
class PolledFolders {
public:
    PolledFolders(WatchTree& watchTree, ScanQueue& scanQueue, WatchInstaller& watchInstaller,
        PendingRenames& renames, EventReporter& eventReporter, std::chrono::milliseconds interval,
        const std::atomic<bool>& streamIsStopping);

    /// Polls a folder from now on. Its present contents are not reported.
    void add(NodeId node, PollReason reason);

    [[nodiscard]] bool contains(NodeId node) const { return folders.contains(node); }
    [[nodiscard]] bool isSharedWithOthers(NodeId node) const;

    /// When to poll again; absent while every folder is watched.
    [[nodiscard]] std::optional<EventCoalescer::Time> due() const;

    /// Polls folders in turn for about 50 ms. The rest wait for the next interval, so polling takes
    /// a small share of the time, however many folders there are.
    void poll(EventCoalescer::Time now);

private:
    /// An item of the previous listing; values that are only compared for equality are hashed.
    struct Item {
        std::uint64_t name;
        FileTime modified;
        std::uint32_t size;
        std::uint32_t inode;
    };

    struct Folder {
        NodeRef node;
        PollReason reason;
        FileTime modified; ///< By the clock of the drive.
        FileTime polledAt; ///< By our clock.
        std::vector<Item> items; ///< Sorted by the hash of the name.
    };

    /// Lower bounds of the time of the last poll, by the clock of the drive.
    struct LastPoll {
        FileTime forContent;
        FileTime forNames; ///< More exact, provided that a new name changes its folder's time.
    };

    void poll(Folder& folder);
    [[nodiscard]] bool isWatchedNow(Folder& folder);
    void list(Folder& folder, bool isFirst);
    void compare(
        const Folder& folder, const std::string& name, const FileStatus& status, LastPoll lastPoll);
    [[nodiscard]] static Item itemOf(const std::string& name, const FileStatus& status);
    [[nodiscard]] static LastPoll lastPollOf(const Folder& folder, FileTime modifiedNow);
    [[nodiscard]] static std::uint32_t whatHappened(
        const Item* former, const Item& item, const FileStatus& status, LastPoll lastPoll);
    void handleSubfolder(
        const Folder& folder, const std::string& name, const FileStatus& status, FileTime lastPoll);
    void detachMissing(NodeId node);

    WatchTree& tree;
    ScanQueue& queue;
    WatchInstaller& installer;
    PendingRenames& pendingRenames;
    EventReporter& reporter;
    const std::chrono::milliseconds pollInterval;
    const std::atomic<bool>& isStopping;
    std::map<NodeId, Folder> folders;
    NodeId nextInTurn = 0;
    std::optional<EventCoalescer::Time> nextPoll;
    std::vector<std::byte> buffer;
    std::string path;
};

} // namespace stemvault::file_events
