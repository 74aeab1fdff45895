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

namespace stemvault {

/// The folders whose events are not enough: those beyond the watch limit, and those on file systems
/// that others change as well. They are listed at intervals and compared with the listing before,
/// which needs no clock that both sides agree on:
///
/// - A file that is known counts as written when its size or its time of modification has changed,
///   unless it was touched or dated back. Its mode and its inode number do not matter; some file
///   systems make the latter up.
/// - A file that was not there, or was another one, counts as written when its content is newer
///   than the last poll. Otherwise it was moved here, or copied with its date.
class PolledFolders {
public:
    PolledFolders(WatchTree& watchTree, ScanQueue& scanQueue, WatchInstaller& watchInstaller,
        PendingRenames& renames, EventReporter& eventReporter, std::chrono::milliseconds interval,
        const std::atomic<bool>& streamIsStopping);

    /// Polls a folder from now on. What it holds already is not reported.
    void add(NodeId node, PollReason reason);

    [[nodiscard]] bool contains(NodeId node) const { return folders.contains(node); }
    [[nodiscard]] bool isSharedWithOthers(NodeId node) const;

    /// When to poll again; absent while every folder is watched.
    [[nodiscard]] std::optional<EventCoalescer::Time> due() const;

    /// Polls folders in turn for a few milliseconds. The rest has to wait for the next interval, so
    /// polling takes a small share of the time, however many folders there are.
    void poll(EventCoalescer::Time now);

private:
    /// What is remembered of an item, as hashes where only equality matters.
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
        FileTime polledAt; ///< By ours.
        std::vector<Item> items; ///< By name.
    };

    /// The moment of the last poll by the clock of the drive, or an earlier one.
    struct LastPoll {
        FileTime forContent;
        FileTime forNames; ///< More exact, as long as a new name changes the time of its folder.
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

} // namespace stemvault
