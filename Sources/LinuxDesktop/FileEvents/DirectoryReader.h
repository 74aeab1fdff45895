#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace stemvault {

struct DirectoryEntry {
    const char* name;
    unsigned char type; ///< A DT_ value; DT_UNKNOWN where the file system does not say.
};

/// Reads the names in an open folder with getdents64, without "." and "..". A name is valid until
/// the next call. The buffer is the caller's, so that scanning many folders needs only one.
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

} // namespace stemvault
