#pragma once

#include "Foundation/FileDescriptor.h"

#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace stemvault {

// Work in folders by descriptor, so that neither the length of a path nor a rename of an ancestor
// matters. Failures leave their reason in errno.

/// As open(2), for paths of any length. Always close-on-exec.
[[nodiscard]] FileDescriptor openPath(const std::string& path, int flags);

/// As open(2), but fails when any part of the path is a link, and on a kernel that cannot tell.
[[nodiscard]] FileDescriptor openWithoutLinks(const std::string& path, int flags);

/// Opens the content of an item that was opened with O_PATH. Nothing can have taken its place.
[[nodiscard]] FileDescriptor openContent(int item, int flags);

/// Opens a folder to put items into. One that may be written but not listed is opened too.
[[nodiscard]] FileDescriptor openFolder(const std::string& path);

/// What is at the path, for paths of any length; a final link is not followed.
[[nodiscard]] std::optional<struct stat> linkStatus(const std::string& path);
[[nodiscard]] std::optional<struct stat> linkStatus(int folder, const std::string& name);

[[nodiscard]] std::optional<struct stat> statusOf(int descriptor);

[[nodiscard]] bool isSameItem(const struct stat& one, const struct stat& other);

/// The names in a folder in no order, without "." and "..".
[[nodiscard]] std::optional<std::vector<std::string>> namesIn(int folder);

/// Whether `folder` is `ancestor` or lies below it.
[[nodiscard]] bool isWithin(int folder, const struct stat& ancestor);

/// Removes a file, a link, or a folder with everything in it. Never enters another file system.
bool removeItem(int folder, const std::string& name);

} // namespace stemvault
