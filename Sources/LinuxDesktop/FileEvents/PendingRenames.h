#pragma once

#include "LinuxDesktop/FileEvents/EventCoalescer.h"
#include "LinuxDesktop/FileEvents/StreamClock.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault {

/// An item whose old name is gone and whose new name is not known yet.
struct PendingRename {
    std::uint32_t cookie = 0; ///< The kernel's number for both halves of a rename; 0 if unknown.
    std::string formerPath; ///< Reported when the rename ends; empty if it need not be.
    std::uint32_t kind = 0; ///< The bit of FileEventFlag that says what was renamed.
    NodeRef node; ///< A folder's node: detached, still watched. None for files and unknown folders.
    NodeRef formerParent;
    std::string formerName;
    FileTime since {}; ///< What stands at the former place came after this moment.
    NodeRef replacementParent {}; ///< Where the folder came from that has taken its place.
    std::string replacementName {};
    bool wasNeverWatched = false; ///< A folder that was renamed before it was watched.
    bool isBeingWritten = false; ///< A file that was written and not closed yet.
    EventCoalescer::Time deadline {}; ///< Set by PendingRenames.
};

/// The renames of which only the first half was read. The second half follows at once, but perhaps
/// in the next read, so an item is neither moved nor gone until its time is up.
class PendingRenames {
public:
    static constexpr std::chrono::milliseconds pairingTimeout { 20 };

    PendingRenames(WatchTree& watchTree, const StreamClock& streamClock)
        : tree(watchTree), clock(streamClock)
    {
    }

    void add(PendingRename rename);

    /// Detaches a folder's node from the tree until it is known where the folder went. The name of
    /// the node may have been taken by `replacement`.
    void detach(NodeId node, std::uint32_t cookie, std::string formerPath,
        const PendingRename& replacement = {});

    [[nodiscard]] std::optional<PendingRename> take(std::uint32_t cookie);

    /// The folder that was replaced by one from `parent` and `name`, at the place that `other`
    /// leaves now. The kernel announces an exchange as two renames in a row, so this is its second
    /// half. Places are compared instead of paths, because the folders around them may be detached.
    [[nodiscard]] std::optional<PendingRename> takeReplaced(
        const PendingRename& other, NodeId parent, std::string_view name);

    /// The folder of a node was found. Only its former path is still to be reported.
    void forgetNode(NodeId node);

    /// An unwatched folder that moved cannot be recognised at its new path, so the contents of any
    /// folder that is found now may be as old as that move. Returns the earlier of both moments.
    [[nodiscard]] FileTime sinceNeverWatched(FileTime since) const;

    [[nodiscard]] std::optional<EventCoalescer::Time> due() const;
    [[nodiscard]] std::vector<PendingRename> takeExpired(EventCoalescer::Time now);

private:
    WatchTree& tree;
    const StreamClock& clock;
    std::vector<PendingRename> waiting; ///< Hardly ever more than a few, by deadline.
};

} // namespace stemvault
