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
/// there before, which needs no clock that both sides agree on.
class PolledFolders {
public:
    enum class Reason : std::uint8_t { NoWatch, SharedWithOthers };

    PolledFolders(WatchState& shared, TreeWalker& treeWalker);

    /// From now on; what is there already is not reported.
    void add(NodeId node, Reason reason);

    /// When to look again; absent while every folder is watched.
    [[nodiscard]] std::optional<EventWindow::Time> due() const;

    /// Looks at as many folders as a small share of the time allows, each in its turn.
    void look(EventWindow::Time now);

private:
    /// Hashes of name and state of each item, sorted.
    using Items = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

    struct Folder {
        NodeRef node;
        Reason reason;
        FileTime modified;
        Items items;
    };

    void lookAt(Folder& folder);
    [[nodiscard]] bool isWatchedNow(Folder& folder);
    bool read(Folder& folder, bool isFirst);
    void compare(const Folder& folder, const std::string& name, const FileStatus& status,
        std::uint64_t signature, const Items& items);
    void meetFolder(const Folder& folder, const std::string& name, const FileStatus& status);
    void departUnseen(NodeId node);

    WatchState& state;
    TreeWalker& walker;
    std::map<NodeId, Folder> folders;
    NodeId nextInTurn = 0;
    std::optional<EventWindow::Time> nextLook;
    std::vector<std::byte> buffer;
    std::string path;
};

} // namespace stemvault
