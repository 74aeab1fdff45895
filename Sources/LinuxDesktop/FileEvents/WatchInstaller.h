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

namespace stemvault {

/// What was found at a node's path.
enum class WatchResult : std::uint8_t {
    Fresh, ///< A folder that was not watched before. It is now, and has to be listed.
    Same, ///< The folder that the node stands for.
    Replaced, ///< Another folder. The nodes below were removed.
    Gone, ///< No folder.
    Unwatched, ///< A folder, but the watch limit is reached.
    Unreadable, ///< A folder that may not be read.
    Loop, ///< One of the node's own parents, by a bind mount. Leave it alone.
};

/// Why a folder is polled.
enum class PollReason : std::uint8_t {
    NoWatch, ///< The kernel has no watch to spare.
    SharedWithOthers, ///< Others change it without an event here.
};

/// Installs the watch of a node on the folder that stands at its path now. The kernel returns the
/// same watch for the same inode, so a folder that moved is recognised at its new path, and the
/// places of one folder share its events.
class WatchInstaller {
public:
    WatchInstaller(WatchTree& watchTree, Inotify& streamInotify, PendingRenames& renames,
        EventReporter& eventReporter)
        : tree(watchTree), inotify(streamInotify), pendingRenames(renames), reporter(eventReporter)
    {
    }

    /// When the folder at the path is already known by another node, that node moves to this place,
    /// and `node` is set to it.
    [[nodiscard]] WatchResult install(NodeId& node);

    /// The watch of the folder that has a name now, or a negative errno.
    [[nodiscard]] int watchOf(NodeId folder, std::string_view name);

    /// New nodes for the places that folders were moved away from by `install`: something else may
    /// stand there now, so they have to be scanned.
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

} // namespace stemvault
