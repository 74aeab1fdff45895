#pragma once

#include "LinuxDesktop/FileEvents/EventCoalescer.h"
#include "LinuxDesktop/FileEvents/FileStatus.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault {

/// An item that has left its place and may turn up in another one.
struct PendingRename {
    std::uint32_t cookie = 0; ///< What the kernel gives both halves of a rename; 0 if unknown.
    std::string formerPath; ///< To be reported; empty if it need not be.
    std::uint32_t kind = 0; ///< The bit of FileEventFlag that says what left.
    NodeRef node; ///< A folder's node, detached, still watched.
    NodeRef formerParent;
    std::string formerName;
    EventCoalescer::Time deadline;
    FileTime since {}; ///< Whatever stands in its place now, came after this.
    NodeRef replacementParent {}; ///< Where the one came from that has taken its place.
    std::string replacementName {};
    bool wasNeverWatched = false; ///< A folder that left before it was watched.
    bool isBeingWritten = false; ///< A file that was written and not closed yet.
};

/// The second half of a rename follows the first at once, but perhaps in the next read. Until its
/// time is up an item is neither here nor gone.
class PendingRenames {
public:
    static constexpr std::chrono::milliseconds pairingTimeout { 20 };

    void add(PendingRename rename) { waiting.push_back(std::move(rename)); }

    [[nodiscard]] std::optional<PendingRename> take(std::uint32_t cookie);

    /// The folder that another one displaced which came from there, and which leaves that place
    /// now itself: two that change places are told as two moves in a row. Paths would not do, for
    /// this may happen in folders on the move.
    [[nodiscard]] std::optional<PendingRename> takeReplaced(
        const PendingRename& other, NodeId parent, std::string_view name);

    /// The folder has been found; only the report of its old path is still owed.
    void forgetNode(NodeId node);

    /// Nothing tells a folder that left unmet from any other when it is met elsewhere, so what is
    /// new in one that is met now may be as old as that. Not later than `since`.
    [[nodiscard]] FileTime sinceNeverWatched(FileTime since) const;

    [[nodiscard]] std::optional<EventCoalescer::Time> due() const;
    [[nodiscard]] std::vector<PendingRename> takeExpired(EventCoalescer::Time now);

private:
    std::vector<PendingRename> waiting; ///< Hardly ever more than a few; by deadline.
};

} // namespace stemvault
