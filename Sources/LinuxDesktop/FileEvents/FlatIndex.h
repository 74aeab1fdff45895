#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace stemvault::file_events {

/// A hash table of indices into a vector that holds the keys, with four bytes per slot. The caller
/// hashes and compares, because the table does not hold the keys.
class FlatIndex {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    template <typename Equal>
    [[nodiscard]] std::uint32_t find(std::uint32_t hash, Equal&& equal) const
    {
        if (slots.empty())
            return none;
        std::size_t slot = hash & mask();
        while (slots[slot] != none && !equal(slots[slot]))
            slot = (slot + 1) & mask();
        return slots[slot];
    }

    template <typename HashOf> void insert(std::uint32_t hash, std::uint32_t index, HashOf&& hashOf)
    {
        if ((used + 1) * 4 > slots.size() * 3)
            grow(hashOf);
        put(hash, index);
        ++used;
    }

    /// Backward-shift deletion: entries behind the gap that a search would no longer reach are
    /// moved into it. Tombstones would be simpler, but folders come and go for weeks, and
    /// tombstones would fill the table and slow down every search.
    template <typename HashOf> void erase(std::uint32_t hash, std::uint32_t index, HashOf&& hashOf)
    {
        std::size_t gap = hash & mask();
        while (slots[gap] != index)
            gap = (gap + 1) & mask();
        for (std::size_t next = (gap + 1) & mask(); slots[next] != none;
             next = (next + 1) & mask()) {
            // An entry may move if the gap lies between its home slot and where it is now.
            const std::size_t home = hashOf(slots[next]) & mask();
            if (((next - home) & mask()) >= ((next - gap) & mask()))
                slots[std::exchange(gap, next)] = slots[next];
        }
        slots[gap] = none;
        --used;
    }

    void clear()
    {
        slots.clear();
        slots.shrink_to_fit();
        used = 0;
    }

private:
    [[nodiscard]] std::size_t mask() const { return slots.size() - 1; }

    void put(std::uint32_t hash, std::uint32_t index)
    {
        std::size_t slot = hash & mask();
        while (slots[slot] != none)
            slot = (slot + 1) & mask();
        slots[slot] = index;
    }

    template <typename HashOf> void grow(HashOf&& hashOf)
    {
        const std::vector<std::uint32_t> old = std::exchange(
            slots, std::vector<std::uint32_t>(slots.empty() ? 16 : slots.size() * 2, none));
        for (const std::uint32_t index : old)
            if (index != none)
                put(hashOf(index), index);
    }

    std::vector<std::uint32_t> slots;
    std::size_t used = 0;
};

/// Fibonacci hashing: multiplies by 2^64 divided by the golden ratio and keeps the upper half,
/// which depends on every bit of the value. The table uses the lowest bits of the result.
[[nodiscard]] inline std::uint32_t spread(std::uint64_t value)
{
    value *= 0x9E3779B97F4A7C15U;
    return static_cast<std::uint32_t>(value >> 32U);
}

} // namespace stemvault::file_events
