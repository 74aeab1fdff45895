#pragma once

#include "FileManager/FileManager.h"
#include "Foundation/DAWTable.h"
#include "Foundation/FileURL.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace stemvault {

/// The modification date of the newest of a DAW's session files directly in a folder; absent when
/// there is none.
using NewestSessionFile =
    std::function<std::optional<FileManager::FileDate>(const std::string& folder)>;

/// The folder of the session that a DAW has open, judged by the media among its open files: the
/// nearest folder above them that contains one of its session files. Of several, the one with the
/// most open media is chosen, then the one with the newest session file. Files that come with
/// programs, such as libraries and factory packs, do not count, nor do caches, hidden and system
/// folders, `home` and the folders above it. `newestSessionFile` is called once for each folder.
[[nodiscard]] std::optional<FileURL> mediaSessionFolder(std::span<const std::string_view> openPaths,
    const DAW& daw, std::string_view home, const NewestSessionFile& newestSessionFile);

/// Reads the disk, and may hang with it.
[[nodiscard]] std::optional<FileManager::FileDate> newestSessionFile(
    const std::string& folder, const DAW& daw);

} // namespace stemvault
