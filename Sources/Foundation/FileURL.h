#pragma once

#include "Foundation/PathText.h"

#include <string>
#include <string_view>
#include <utility>

namespace stemvault {

/// The location of a file or folder: an absolute path, kept as the bytes it was made from.
class FileURL {
public:
    explicit FileURL(std::string path) : text(std::move(path)) { }

    [[nodiscard]] const std::string& path() const { return text; }
    [[nodiscard]] std::string lastPathComponent() const
    {
        return stemvault::lastPathComponent(text);
    }
    [[nodiscard]] std::string pathExtension() const { return stemvault::pathExtension(text); }
    [[nodiscard]] FileURL deletingLastPathComponent() const
    {
        return FileURL(stemvault::deletingLastPathComponent(text));
    }
    [[nodiscard]] FileURL appendingPathComponent(std::string_view name) const
    {
        return FileURL(stemvault::appendingPathComponent(text, name));
    }

    /// Two locations are equal if their paths are equal, ignoring a trailing slash.
    [[nodiscard]] bool operator==(const FileURL& other) const
    {
        return withoutTrailingSlash(text) == withoutTrailingSlash(other.text);
    }

private:
    std::string text;
};

} // namespace stemvault
