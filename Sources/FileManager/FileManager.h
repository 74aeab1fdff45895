#pragma once

#include "FileManager/FileIdentity.h"
#include "FileManager/WriterCheck.h"
#include "Foundation/FileURL.h"
#include "Foundation/Result.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// What the program asks of the disk. Plain functions, safe from every thread; each looks at the
/// disk anew. Failures are described in words for the user.
namespace stemvault::FileManager {

/// Whether anything bears this name: a file, a folder, a link (also a dangling one).
[[nodiscard]] bool fileExists(const std::string& path);

using FileDate = std::chrono::sys_time<std::chrono::nanoseconds>;

struct ItemAttributes {
    bool isRegularFile = false; ///< Neither a folder, nor a link, nor anything special.
    std::int64_t size = 0; ///< In bytes.
    FileDate contentModificationDate;
};

/// The item's own attributes (a link is not followed); absent if they cannot be read.
[[nodiscard]] std::optional<ItemAttributes> attributesOfItem(const std::string& path);

/// When the content last changed; absent if it cannot be read.
[[nodiscard]] std::optional<FileDate> contentModificationDate(const std::string& path);

/// Which folder the path leads to, links followed; absent when it leads to none.
[[nodiscard]] std::optional<FileIdentity> identityOfFolder(const std::string& path);

/// What a file to be copied is like.
struct SourceState {
    Writers writers = Writers::Unknown;
    std::int64_t size = 0; ///< In bytes.
    FileDate contentModificationDate;
};

/// Absent for all but an ordinary file that `copyItem` would copy. Its writers are asked for only
/// if they matter to a file with that size and date: to ask opens the file, which gives it a new
/// date on some drives.
[[nodiscard]] std::optional<SourceState> sourceState(const FileURL& from,
    const std::optional<FileIdentity>& foundIn,
    const std::function<bool(const SourceState&)>& mattersWhoWrites);

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

/// Copies a file, or a folder with everything in it, to a name that is free. Without `foundIn` the
/// user has named the item, and a link is followed; with it the item must lie in that folder and be
/// no link. Data, permissions as far as the umask allows them, modification time and user
/// attributes come along. The copy appears under its final
/// name only when it is whole and on disk. When `to` is taken this fails and nothing is touched;
/// after any failure nothing is left behind. A failure may pass if it is that the source kept
/// changing meanwhile.
Result<void> copyItem(const FileURL& from, const FileURL& to,
    const std::optional<FileIdentity>& foundIn = std::nullopt);

/// As `copyItem`, but puts the copy in the place of whatever bears the name. The old item stays as
/// it was until the new one is whole on disk, and for good if anything fails.
Result<void> replaceItem(const FileURL& from, const FileURL& to,
    const std::optional<FileIdentity>& foundIn = std::nullopt);

} // namespace stemvault::FileManager
