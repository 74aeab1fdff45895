#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace stemvault::file_events {

struct DirectoryEntry {
    const char* name;
    unsigned char type; ///< A DT_ value; DT_UNKNOWN if the file system does not report types.
};

/// Reads the names in an open folder with getdents64, without "." and "..". A name is valid until
/// the next call. The caller provides the buffer, so that one buffer serves many folders.
class DirectoryReader {
public:
    DirectoryReader(int openFolder, std::span<std::byte> ownBuffer)
        : folder(openFolder), buffer(ownBuffer)
    {
    }

    [[nodiscard]] std::optional<DirectoryEntry> next();

private:
    [[nodiscard]] bool fill();

    int folder;
    std::span<std::byte> buffer;
    std::span<const std::byte> unread;
};

} // namespace stemvault::file_events
