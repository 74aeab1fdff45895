#include "LinuxDesktop/FileEvents/EventCoalescer.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace stemvault::file_events {

namespace {

std::uint32_t hashOf(std::string_view path)
{
    return spread(std::hash<std::string_view> {}(path));
}

} // namespace

EventCoalescer::EventCoalescer(std::chrono::milliseconds wantedLatency, FirstEvent wantedFirst)
    : latency(wantedLatency), firstEvent(wantedFirst)
{
}

std::size_t EventCoalescer::add(std::string_view path, std::uint32_t flags, More more, Time now)
{
    const std::uint32_t hash = hashOf(path);
    std::uint32_t place = find(path, hash);
    if (place == FlatIndex::none) {
        place = static_cast<std::uint32_t>(entries.size());
        entries.push_back({ std::string(path), 0, hash, now, more == More::Expected });
        openEntries += more == More::Expected ? 1 : 0;
        index(place);
    }
    addTo(place, flags, more);
    return place;
}

void EventCoalescer::addTo(std::size_t place, std::uint32_t flags, More more)
{
    Entry& entry = entries[place];
    entry.flags |= flags;
    if (more == More::Done && std::exchange(entry.isOpen, false))
        --openEntries;
}

std::uint32_t EventCoalescer::flagsOf(std::string_view path) const
{
    const std::uint32_t place = find(path, hashOf(path));
    return place == FlatIndex::none ? 0 : entries[place].flags;
}

std::optional<EventCoalescer::Time> EventCoalescer::due() const
{
    if (entries.empty())
        return std::nullopt;
    if (openEntries < entries.size())
        return windowEnd();
    return std::max(windowEnd(), entries.front().since + holdTime());
}

EventBatch EventCoalescer::take(Time now)
{
    EventBatch batch;
    if (const std::optional<Time> time = due(); !time || now < *time)
        return batch;
    std::vector<Entry> kept;
    const auto wait = holdTime();
    for (Entry& entry : entries) {
        if (entry.isOpen && now - entry.since < wait) {
            kept.push_back(std::move(entry));
        } else {
            batch.paths.push_back(std::move(entry.path));
            batch.flags.push_back(entry.flags);
        }
    }
    lastBatch = now;
    keepOnly(std::move(kept));
    return batch;
}

std::uint32_t EventCoalescer::find(std::string_view path, std::uint32_t hash) const
{
    return byPath.find(hash, [&](std::uint32_t place) {
        return entries[place].hash == hash && entries[place].path == path;
    });
}

EventCoalescer::Time EventCoalescer::windowEnd() const
{
    const Time first = entries.front().since;
    if (firstEvent == FirstEvent::Gathered)
        return first + latency;
    return lastBatch ? std::max(first, *lastBatch + latency) : first;
}

std::chrono::steady_clock::duration EventCoalescer::holdTime() const
{
    const bool isQuiet = windowEnd() == entries.front().since;
    return isQuiet ? std::chrono::steady_clock::duration(holdWhenQuiet) : holdWhenBusy;
}

void EventCoalescer::keepOnly(std::vector<Entry> kept)
{
    entries = std::move(kept);
    openEntries = entries.size();
    byPath.clear();
    for (std::uint32_t place = 0; place < entries.size(); ++place)
        index(place);
}

void EventCoalescer::index(std::uint32_t place)
{
    byPath.insert(
        entries[place].hash, place, [this](std::uint32_t other) { return entries[other].hash; });
}

} // namespace stemvault::file_events
