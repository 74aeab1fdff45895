#pragma once

#include "LinuxDesktop/FileEvents/EventReporter.h"
#include "LinuxDesktop/FileEvents/Inotify.h"
#include "LinuxDesktop/FileEvents/PendingRenames.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace stemvault::file_events {

/// What `install` found at a node's path.
enum class WatchResult : std::uint8_t {
    Fresh, ///< A folder that the node did not watch before. It does now; the folder must be listed.
    Same, ///< The folder that the node stands for.
    Replaced, ///< Another folder. The nodes below were removed.
    Gone, ///< No folder.
    Unwatched, ///< A folder that cannot be watched, because a system limit is reached.
    Unreadable, ///< A folder without read permission.
    Loop, ///< One of the node's own ancestors, through a bind mount. It must not be scanned.
};

/// Why a folder is polled.
enum class PollReason : std::uint8_t {
    NoWatch, ///< A system limit is reached, usually that of watches.
    SharedWithOthers, ///< Others may change it without raising an event here.
};

/// Installs a node's watch on the folder that is at its path now. The kernel returns the same watch
/// for the same inode, so a folder that moved is recognised at its new path, and a folder with
/// several places has one watch for all of them.
class WatchInstaller {
public:
    WatchInstaller(WatchTree& watchTree, Inotify& streamInotify, PendingRenames& renames,
        EventReporter& eventReporter)
        : tree(watchTree), inotify(streamInotify), pendingRenames(renames), reporter(eventReporter)
    {
    }

    /// If the folder at the path has moved there from the place of another node, that node moves
    /// here and `node` is set to it.
    [[nodiscard]] WatchResult install(NodeId& node);

    /// The watch of the folder that now has this name, or a negative errno.
    [[nodiscard]] int watchOf(NodeId folder, std::string_view name);

    /// New nodes for the places from which `install` moved nodes away. Something else may be there
    /// now, so they must be scanned.
    [[nodiscard]] std::vector<NodeRef> takeVacatedPlaces() { return std::exchange(vacated, {}); }

private:
    [[nodiscard]] WatchResult assign(NodeId& node, int watch);
    [[nodiscard]] bool hasLeft(NodeId node, int watch);
    void moveTo(NodeId& fresh, NodeId known);

    WatchTree& tree;
    Inotify& inotify;
    PendingRenames& pendingRenames;
    EventReporter& reporter;
    std::vector<NodeRef> vacated;
    std::string path;
    std::string otherPath;
};

} // namespace stemvault::file_events
