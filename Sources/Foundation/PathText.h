#pragma once

#include <string>
#include <string_view>

namespace stemvault {

// These functions treat paths as text and never access the disk. File names are bytes: a name that
// is not UTF-8 passes through unchanged.

/// The text after the last slash, ignoring trailing ones: "b" of "/a/b" and "/a/b/"; "/" of "/".
[[nodiscard]] std::string lastPathComponent(std::string_view path);

/// The path without its last component: "/a" of "/a/b" and "/a/b/"; "/" of "/a" and "/".
[[nodiscard]] std::string deletingLastPathComponent(std::string_view path);

/// `name` below `folder`, with one slash between them.
[[nodiscard]] std::string appendingPathComponent(std::string_view folder, std::string_view name);

/// The text after the last full stop of the last component; empty if there is none.
[[nodiscard]] std::string pathExtension(std::string_view path);

/// The path without one trailing slash; "/" is kept.
[[nodiscard]] std::string_view withoutTrailingSlash(std::string_view path);

} // namespace stemvault
