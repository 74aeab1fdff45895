#pragma once

#include <optional>
#include <string>

namespace stemvault::workspace {

/// The bytes of a small file, or of one that the kernel generates as it is read. Absent if it
/// cannot be read or exceeds `most` bytes. `folder` is a descriptor to start from, as in openat.
[[nodiscard]] std::optional<std::string> readFile(
    int folder, const std::string& path, std::size_t most);
[[nodiscard]] std::optional<std::string> readFile(
    const std::string& path, std::size_t most = std::size_t { 64 } << 20U);

} // namespace stemvault::workspace
