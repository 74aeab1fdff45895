#pragma once

#include "LinuxDesktop/FileEvents/InotifyEvent.h"
#include "LinuxDesktop/FileEvents/TreeWalker.h"
#include "LinuxDesktop/FileEvents/WatchState.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault {

/// Turns what the kernel tells of one folder into reports and into changes of the tree.
class EventHandler {
public:
    EventHandler(WatchState& shared, TreeWalker& treeWalker) : state(shared), walker(treeWalker) { }

    void sort(const InotifyEvent& event);

    /// Gives up on what has left and did not turn up in time.
    void expirePendingRenames();

private:
    void sortAt(NodeId folder, const InotifyEvent& event);
    void sortFile(NodeId folder, const InotifyEvent& event);
    void sortFolder(NodeId folder, const InotifyEvent& event);
    void fileModified(NodeId folder, const InotifyEvent& event);
    void fileClosed(NodeId folder, const InotifyEvent& event);
    void fileLeft(NodeId folder, const InotifyEvent& event);
    void folderCreated(NodeId parent, std::string_view name);
    void folderRemoved(NodeId parent, std::string_view name);
    void fileRemoved(NodeId folder, const InotifyEvent& event);
    void fileArrived(NodeId folder, const InotifyEvent& event);
    void folderArrived(NodeId parent, const InotifyEvent& event);
    void meet(NodeId parent, std::string_view name);
    void put(PendingRename& rename, NodeId parent, std::string_view name);
    bool changePlaces(const PendingRename& rename, NodeId parent, std::string_view name);
    void reportMove(const std::optional<PendingRename>& rename, NodeId parent,
        std::string_view name, std::uint32_t kind);
    void watchEnded(int watch);
    void lookAtFormerPlace(const PendingRename& rename);
    bool takeBack(const PendingRename& rename);
    [[nodiscard]] bool isKnown(NodeRef node) const
    {
        return node.id != noNode && state.tree.isCurrent(node);
    }
    [[nodiscard]] bool isOnlyDated(NodeId folder, std::string_view name) const;
    [[nodiscard]] bool isWrittenUnnoticed(NodeId folder, std::string_view name) const;
    [[nodiscard]] RecentWrites::File file(NodeId folder, std::string_view name) const
    {
        return RecentWrites::file(state.tree.ref(folder), name);
    }
    [[nodiscard]] std::optional<std::string> resolvedPath(
        NodeId folder, std::string_view name) const;
    /// The watch of the folder that bears a name now, or a negative errno.
    [[nodiscard]] int watchOf(NodeId folder, std::string_view name) const;
    [[nodiscard]] std::optional<FileStatus> statusOf(NodeId folder, std::string_view name) const;

    WatchState& state;
    TreeWalker& walker;
    std::vector<NodeRef> places;
};

} // namespace stemvault
