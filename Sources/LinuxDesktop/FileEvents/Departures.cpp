#include "LinuxDesktop/FileEvents/Departures.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace stemvault {

std::optional<Departure> Departures::take(std::uint32_t cookie)
{
    const auto found = std::find_if(waiting.begin(), waiting.end(),
        [cookie](const Departure& departure) { return departure.cookie == cookie; });
    if (cookie == 0 || found == waiting.end())
        return std::nullopt;
    Departure departure = std::move(*found);
    waiting.erase(found);
    // In roots within each other one name may leave from two places; it is reported once.
    for (Departure& other : waiting)
        if (other.cookie == cookie && other.formerPath == departure.formerPath)
            other.formerPath.clear();
    return departure;
}

std::optional<Departure> Departures::takeDisplaced(
    const Departure& other, NodeId parent, std::string_view name)
{
    const auto found =
        std::find_if(waiting.begin(), waiting.end(), [&](const Departure& departure) {
            return departure.displacerParent.id == parent && departure.displacerName == name
                && departure.formerParent.id == other.formerParent.id
                && departure.formerName == other.formerName;
        });
    if (found == waiting.end())
        return std::nullopt;
    Departure departure = std::move(*found);
    waiting.erase(found);
    return departure;
}

void Departures::forgetNode(NodeId node)
{
    for (Departure& departure : waiting)
        if (departure.node.id == node)
            departure.node = {};
}

FileTime Departures::sinceUnmet(FileTime since) const
{
    for (const Departure& departure : waiting)
        if (departure.isUnmet)
            since = std::min(since, departure.since);
    return since;
}

std::optional<EventWindow::Time> Departures::due() const
{
    if (waiting.empty())
        return std::nullopt;
    return waiting.front().deadline;
}

std::vector<Departure> Departures::takeOverdue(EventWindow::Time now)
{
    const auto end = std::find_if(waiting.begin(), waiting.end(),
        [now](const Departure& departure) { return departure.deadline > now; });
    std::vector<Departure> overdue(
        std::make_move_iterator(waiting.begin()), std::make_move_iterator(end));
    waiting.erase(waiting.begin(), end);
    return overdue;
}

} // namespace stemvault
