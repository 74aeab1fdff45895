#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace stemvault::file_events {

/// Stores file names back to back in one block of memory; each takes its length plus two bytes.
class NameArena {
public:
    /// `name` must have at most 65,535 bytes; the limit of file systems is lower.
    [[nodiscard]] std::uint32_t add(std::string_view name)
    {
        const auto place = static_cast<std::uint32_t>(bytes.size());
        const auto length = static_cast<std::uint16_t>(name.size());
        bytes.resize(place + sizeof length + length);
        std::memcpy(&bytes[place], &length, sizeof length);
        std::memcpy(&bytes[place] + sizeof length, name.data(), length);
        return place;
    }

    /// Valid until the next `add`.
    [[nodiscard]] std::string_view at(std::uint32_t place) const
    {
        std::uint16_t length = 0;
        std::memcpy(&length, &bytes[place], sizeof length);
        return { &bytes[place] + sizeof length, length };
    }

    void forget(std::uint32_t place) { wasted += at(place).size() + sizeof(std::uint16_t); }

    /// Whether it is worth copying the names in use to a new arena.
    [[nodiscard]] bool isWasteful() const { return wasted > 65536 && wasted > bytes.size() / 2; }

private:
    std::vector<char> bytes;
    std::size_t wasted = 0;
};

} // namespace stemvault::file_events
