#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace stemvault {

/// One event as the kernel tells it. The name points into the buffer it was read from.
struct InotifyEvent {
    int watch = -1;
    std::uint32_t mask = 0;
    std::uint32_t cookie = 0;
    std::string_view name;

    [[nodiscard]] bool has(std::uint32_t bits) const { return (mask & bits) != 0; }
};

/// Takes the first event off the front of what was read. Absent at the end, and when the rest is
/// not a whole event, which is then dropped. Pure.
[[nodiscard]] std::optional<InotifyEvent> takeInotifyEvent(std::span<const std::byte>& buffer);

} // namespace stemvault
