#pragma once

#include "Foundation/FileURL.h"
#include "Foundation/Result.h"

#include <optional>
#include <string>
#include <vector>

namespace stemvault::FileManager {

enum class ItemKind { File, Directory };

/// What the path leads to, links followed: a directory, or anything else. Absent when it leads to
/// nothing.
[[nodiscard]] std::optional<ItemKind> itemKind(const std::string& path);

/// Everything directly in a folder, hidden items too, in the order in which the disk lists it.
/// Absent when it cannot be listed to its end.
[[nodiscard]] std::optional<std::vector<FileURL>> contentsOfDirectory(const FileURL& folder);

/// Makes a folder inside one that exists. Fails when the name is taken, whatever bears it; the
/// failure is described in words for the user.
Result<void> createDirectory(const FileURL& folder);

} // namespace stemvault::FileManager
