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

namespace stemvault::file_events {

/// An item whose old name is gone and whose new name is not known yet.
struct PendingRename {
    std::uint32_t cookie = 0; ///< The kernel's number for both halves of a rename; 0 if unknown.
    std::string formerPath; ///< Reported when the rename ends; empty if it need not be reported.
    std::uint32_t kind = 0; ///< The FileEventFlag bit for the kind of the renamed item.
    NodeRef node; ///< A folder's node: detached, still watched. None for files and unknown folders.
    NodeRef formerParent;
    std::string formerName;
    FileTime since {}; ///< Any item that is now at the former place arrived after this moment.
    NodeRef replacementParent {}; ///< The former parent of the folder that replaced this one.
    std::string replacementName {};
    bool wasNeverWatched = false; ///< A folder that was renamed before it was watched.
    bool isBeingWritten = false; ///< A file that was written and not closed yet.
    EventCoalescer::Time deadline {}; ///< Set by PendingRenames.
};

/// The renames of which only the first half has been read. The second half follows at once, but
/// perhaps in the next read, so an item counts as removed only after the pairing timeout.
class PendingRenames {
public:
    static constexpr std::chrono::milliseconds pairingTimeout { 20 };

    PendingRenames(WatchTree& watchTree, const StreamClock& streamClock)
        : tree(watchTree), clock(streamClock)
    {
    }

    void add(PendingRename rename);

    /// Detaches a folder's node from the tree until the folder's new place is known. If another
    /// folder has replaced it, `replacement` is the rename of that folder.
    void detach(NodeId node, std::uint32_t cookie, std::string formerPath,
        const PendingRename& replacement = {});

    [[nodiscard]] std::optional<PendingRename> take(std::uint32_t cookie);

    /// Takes the folder that was at the former place of `other` until a folder from `name` in
    /// `parent` replaced it. If there is one, `other` is the second of the two renames that an
    /// exchange raises. Compares nodes and names, because detached folders have no paths.
    [[nodiscard]] std::optional<PendingRename> takeReplaced(
        const PendingRename& other, NodeId parent, std::string_view name);

    /// Call it when a node's folder has been found. Then only its former path remains to report.
    void forgetNode(NodeId node);

    /// An unwatched folder that moved cannot be recognised at its new path, so any folder that is
    /// found now may be that one. Returns the earliest of `since` and the times of such renames.
    [[nodiscard]] FileTime sinceNeverWatched(FileTime since) const;

    [[nodiscard]] std::optional<EventCoalescer::Time> due() const;
    [[nodiscard]] std::vector<PendingRename> takeExpired(EventCoalescer::Time now);

private:
    WatchTree& tree;
    const StreamClock& clock;
    std::vector<PendingRename> waiting; ///< Sorted by deadline; rarely more than a few.
};

} // namespace stemvault::file_events
