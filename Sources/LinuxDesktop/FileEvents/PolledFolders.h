#pragma once

#include "LinuxDesktop/FileEvents/WatchState.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace stemvault {

class TreeWalker;

/// The folders of which the kernel does not tell enough: those beyond the watch limit, and those on
/// file systems that others change too. They are listed by the clock and compared with what was
/// there before, which needs no clock that both sides agree on:
///
/// - A file that is known counts as written when its size or its time of modification has changed,
///   unless it was touched or dated back. Its mode and its inode number do not matter; some file
///   systems make the latter up.
/// - A file that was not there, or was another one, counts as written when its content is newer
///   than the last look. Otherwise it was moved here, or copied with its date.
class PolledFolders {
public:
    enum class Reason : std::uint8_t { NoWatch, SharedWithOthers };

    PolledFolders(WatchState& shared, TreeWalker& treeWalker);

    /// From now on; what is there already is not reported.
    void add(NodeId node, Reason reason);

    [[nodiscard]] bool contains(NodeId node) const { return folders.contains(node); }
    [[nodiscard]] bool isSharedWithOthers(NodeId node) const;

    /// When to look again; absent while every folder is watched.
    [[nodiscard]] std::optional<EventCoalescer::Time> due() const;

    /// Looks at as many folders as a small share of the time allows, each in its turn.
    void look(EventCoalescer::Time now);

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
        Reason reason;
        FileTime modified; ///< By the clock of the drive.
        FileTime lookedAt; ///< By ours.
        std::vector<Item> items; ///< By name.
    };

    /// When the last look was by the clock of the drive, or earlier.
    struct LastLook {
        FileTime forContent;
        FileTime forNames; ///< Closer, as long as a new name sets the time of its folder.
    };

    void lookAt(Folder& folder);
    [[nodiscard]] bool isWatchedNow(Folder& folder);
    void read(Folder& folder, bool isFirst);
    void compare(
        const Folder& folder, const std::string& name, const FileStatus& status, LastLook lastLook);
    [[nodiscard]] static Item itemOf(const std::string& name, const FileStatus& status);
    [[nodiscard]] static LastLook lastLookAt(const Folder& folder, FileTime modifiedNow);
    [[nodiscard]] static std::uint32_t whatHappened(
        const Item* former, const Item& item, const FileStatus& status, LastLook lastLook);
    void meetFolder(
        const Folder& folder, const std::string& name, const FileStatus& status, FileTime lastLook);
    void departUnseen(NodeId node);

    WatchState& state;
    TreeWalker& walker;
    std::map<NodeId, Folder> folders;
    NodeId nextInTurn = 0;
    std::optional<EventCoalescer::Time> nextLook;
    std::vector<std::byte> buffer;
    std::string path;
};

} // namespace stemvault
