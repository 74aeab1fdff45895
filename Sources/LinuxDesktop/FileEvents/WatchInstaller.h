#pragma once

#include "LinuxDesktop/FileEvents/WatchState.h"

#include <cstdint>

namespace stemvault {

/// What was found at a node's place.
enum class WatchResult : std::uint8_t {
    Fresh, ///< A folder not watched before: now it is, and wants to be listed.
    Same, ///< The folder the node stands for.
    Replaced, ///< Another folder; what was known below the node is forgotten.
    Gone, ///< No folder.
    Unwatched, ///< A folder, but the kernel has no watch to spare.
    Unreadable, ///< A folder we may not look into.
    Loop, ///< One of its own parents, by a mount; to be left alone.
};

/// Sets the watch of a node on whatever stands at its path now. Folders are known by their watch:
/// the kernel gives the same one for the same inode, so a folder that was moved is recognised
/// wherever it is met, and two places of one folder share what it tells.
class WatchInstaller {
public:
    explicit WatchInstaller(WatchState& shared) : state(shared) { }

    /// A folder known from elsewhere takes the place of `node`, which then names that folder.
    [[nodiscard]] WatchResult place(NodeId& node);

    /// Whether the folder of a watch stands at a path.
    [[nodiscard]] bool isAt(const std::string& path, int watch);

private:
    [[nodiscard]] WatchResult settle(NodeId& node, int watch);
    [[nodiscard]] bool hasLeft(NodeId node, int watch);
    void moveTo(NodeId& fresh, NodeId known);

    WatchState& state;
    std::string path;
    std::string otherPath;
};

} // namespace stemvault
