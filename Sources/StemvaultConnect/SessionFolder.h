#pragma once

#include "Foundation/FileURL.h"

#include <chrono>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault {

/// When a file's content last changed; absent when that cannot be read.
using ModificationDate =
    std::function<std::optional<std::chrono::sys_time<std::chrono::nanoseconds>>(
        const std::string& path)>;

/// The absolute paths among the names that `lsof -Fn` printed, in its order and spelling. They
/// point into `lsofOutput`. Text that is not UTF-8 counts as empty.
[[nodiscard]] std::vector<std::string_view> openPaths(std::string_view lsofOutput);

/// The folder of the session whose files a DAW has open; absent when none of them identifies it.
/// `extensions` are those of session files, in lower case.
[[nodiscard]] std::optional<FileURL> sessionFolder(std::span<const std::string_view> openPaths,
    std::span<const std::string_view> extensions, const ModificationDate& modificationDate);

/// Only the last rule of sessionFolder(): the folder of the newest session file.
[[nodiscard]] std::optional<FileURL> newestSessionFileFolder(
    std::span<const std::string_view> openPaths, std::span<const std::string_view> extensions,
    const ModificationDate& modificationDate);

} // namespace stemvault
