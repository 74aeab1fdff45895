#pragma once

#include "LinuxDesktop/FileEvents/FlatIndex.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault::file_events {

/// Paths in the order in which they first occurred; `flags[i]` belongs to `paths[i]`.
struct EventBatch {
    std::vector<std::string> paths;
    std::vector<std::uint32_t> flags;
};

/// Gathers events into batches, with one entry per path that combines the flags of its events.
/// With FirstEvent::AtOnce, the first event after a quiet spell is due at once; later events are
/// due together, one latency after the previous batch. This is not a debounce: further events
/// never delay a batch.
///
/// A file that was created a moment ago and not closed yet is held briefly, so that the events of
/// one short write make one entry and not two.
///
/// It reads no clock; the caller passes the time.
class EventCoalescer {
public:
    using Time = std::chrono::steady_clock::time_point;

    enum class FirstEvent { AtOnce, Gathered };

    /// Whether more events of the same write will follow.
    enum class More { Unsaid, Expected, Done };

    static constexpr std::chrono::microseconds holdWhenQuiet { 500 };
    static constexpr std::chrono::milliseconds holdWhenBusy { 50 };

    EventCoalescer(std::chrono::milliseconds latency, FirstEvent firstEvent);

    /// Returns the index of the entry, valid until the next `take`.
    std::size_t add(std::string_view path, std::uint32_t flags, More more, Time now);
    void addTo(std::size_t entry, std::uint32_t flags, More more);

    /// The flags gathered for a path so far; 0 if there is none.
    [[nodiscard]] std::uint32_t flagsOf(std::string_view path) const;
    [[nodiscard]] std::uint32_t flagsOf(std::size_t entry) const { return entries[entry].flags; }

    /// When the next batch is due; absent while there are no entries.
    [[nodiscard]] std::optional<Time> due() const;

    /// Removes and returns the entries that are due; empty before `due()`. Files held briefly stay.
    [[nodiscard]] EventBatch take(Time now);

private:
    struct Entry {
        std::string path;
        std::uint32_t flags;
        std::uint32_t hash;
        Time since;
        bool isOpen;
    };

    [[nodiscard]] std::uint32_t find(std::string_view path, std::uint32_t hash) const;
    [[nodiscard]] Time windowEnd() const;
    [[nodiscard]] std::chrono::steady_clock::duration holdTime() const;
    void keepOnly(std::vector<Entry> kept);
    void index(std::uint32_t entry);

    std::chrono::milliseconds latency;
    FirstEvent firstEvent;
    std::vector<Entry> entries;
    FlatIndex byPath;
    std::size_t openEntries = 0;
    std::optional<Time> lastBatch;
};

} // namespace stemvault::file_events
