#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace stemvault::file_events {

/// One event. The name points into the buffer that the event was read into.
struct InotifyEvent {
    int watch = -1;
    std::uint32_t mask = 0;
    std::uint32_t cookie = 0;
    std::string_view name;

    [[nodiscard]] bool has(std::uint32_t bits) const { return (mask & bits) != 0; }
};

/// Removes the first event from the buffer and returns it. Absent when the buffer is empty or holds
/// only a part of an event, which is dropped.
[[nodiscard]] std::optional<InotifyEvent> takeInotifyEvent(std::span<const std::byte>& buffer);

} // namespace stemvault::file_events
