#pragma once

#include <compare>
#include <cstdint>

namespace stemvault {

/// Identifies an item on disk, however its path is spelled. Unique for as long as the item exists;
/// a later one may get the same numbers.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    // The linter mistakes the result of the comparison for a pointer.
    auto operator<=>(const FileIdentity&) const = default; // NOLINT(modernize-use-nullptr)
};

} // namespace stemvault
