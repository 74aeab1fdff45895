#include "LinuxDesktop/FileEvents/PendingRenames.h"

#include "Platform/FileEvents.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace stemvault::file_events {

void PendingRenames::add(PendingRename rename)
{
    rename.deadline = std::chrono::steady_clock::now() + pairingTimeout;
    waiting.push_back(std::move(rename));
}

void PendingRenames::detach(
    NodeId node, std::uint32_t cookie, std::string formerPath, const PendingRename& replacement)
{
    PendingRename rename;
    rename.cookie = cookie;
    rename.formerPath = std::move(formerPath);
    rename.kind = FileEventFlag::ItemIsDir;
    rename.node = tree.ref(node);
    rename.formerParent = tree.ref(tree.parent(node));
    rename.formerName = tree.name(node);
    rename.since = clock.arrivalBound;
    rename.replacementParent = replacement.formerParent;
    rename.replacementName = replacement.formerName;
    rename.wasNeverWatched = tree.watch(node) < 0;
    add(std::move(rename));
    tree.detach(node);
}

std::optional<PendingRename> PendingRenames::take(std::uint32_t cookie)
{
    const auto found = std::ranges::find_if(
        waiting, [cookie](const PendingRename& rename) { return rename.cookie == cookie; });
    if (cookie == 0 || found == waiting.end())
        return std::nullopt;
    PendingRename rename = std::move(*found);
    waiting.erase(found);
    // If roots lie within each other, one name is removed at two places but reported only once.
    for (PendingRename& other : waiting)
        if (other.cookie == cookie && other.formerPath == rename.formerPath)
            other.formerPath.clear();
    return rename;
}

std::optional<PendingRename> PendingRenames::takeReplaced(
    const PendingRename& other, NodeId parent, std::string_view name)
{
    const auto found = std::ranges::find_if(waiting, [&](const PendingRename& rename) {
        return rename.replacementParent.id == parent && rename.replacementName == name
            && rename.formerParent.id == other.formerParent.id
            && rename.formerName == other.formerName;
    });
    if (found == waiting.end())
        return std::nullopt;
    PendingRename rename = std::move(*found);
    waiting.erase(found);
    return rename;
}

void PendingRenames::forgetNode(NodeId node)
{
    for (PendingRename& rename : waiting)
        if (rename.node.id == node)
            rename.node = {};
}

FileTime PendingRenames::sinceNeverWatched(FileTime since) const
{
    for (const PendingRename& rename : waiting)
        if (rename.wasNeverWatched)
            since = std::min(since, rename.since);
    return since;
}

std::optional<EventCoalescer::Time> PendingRenames::due() const
{
    if (waiting.empty())
        return std::nullopt;
    return waiting.front().deadline;
}

std::vector<PendingRename> PendingRenames::takeExpired(EventCoalescer::Time now)
{
    const auto end = std::ranges::find_if(
        waiting, [now](const PendingRename& rename) { return rename.deadline > now; });
    std::vector<PendingRename> expired(
        std::make_move_iterator(waiting.begin()), std::make_move_iterator(end));
    waiting.erase(waiting.begin(), end);
    return expired;
}

} // namespace stemvault::file_events
