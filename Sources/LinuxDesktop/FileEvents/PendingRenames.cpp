#include "LinuxDesktop/FileEvents/PendingRenames.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace stemvault {

std::optional<PendingRename> PendingRenames::take(std::uint32_t cookie)
{
    const auto found = std::find_if(waiting.begin(), waiting.end(),
        [cookie](const PendingRename& rename) { return rename.cookie == cookie; });
    if (cookie == 0 || found == waiting.end())
        return std::nullopt;
    PendingRename rename = std::move(*found);
    waiting.erase(found);
    // In roots within each other one name may leave from two places; it is reported once.
    for (PendingRename& other : waiting)
        if (other.cookie == cookie && other.formerPath == rename.formerPath)
            other.formerPath.clear();
    return rename;
}

std::optional<PendingRename> PendingRenames::takeReplaced(
    const PendingRename& other, NodeId parent, std::string_view name)
{
    const auto found =
        std::find_if(waiting.begin(), waiting.end(), [&](const PendingRename& rename) {
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
    const auto end = std::find_if(waiting.begin(), waiting.end(),
        [now](const PendingRename& rename) { return rename.deadline > now; });
    std::vector<PendingRename> expired(
        std::make_move_iterator(waiting.begin()), std::make_move_iterator(end));
    waiting.erase(waiting.begin(), end);
    return expired;
}

} // namespace stemvault
