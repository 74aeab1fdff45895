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

/// The program's file operations. Plain functions that may be called from any thread; each reads
/// the disk anew. Failures are described in words for the user.
namespace stemvault::FileManager {

/// Whether anything exists at this path: a file, a folder, a link (even a dangling one).
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

/// The folder that the path leads to, following links; absent when it leads to none.
[[nodiscard]] std::optional<FileIdentity> identityOfFolder(const std::string& path);

/// The state of a file that is to be copied.
struct SourceState {
    Writers writers = Writers::Unknown;
    std::int64_t size = 0; ///< In bytes.
    FileDate contentModificationDate;
};

/// Absent unless `from` is a regular file that `copyItem` would copy. `writers` is determined only
/// if `needsWriterCheck` returns true for the size and date, because that opens the file, which
/// changes its date on some drives.
[[nodiscard]] std::optional<SourceState> sourceState(const FileURL& from,
    const std::optional<FileIdentity>& foundIn,
    const std::function<bool(const SourceState&)>& needsWriterCheck);

enum class ItemKind { File, Directory };

/// What the path leads to, following links: a directory or anything else. Absent when it leads to
/// nothing.
[[nodiscard]] std::optional<ItemKind> itemKind(const std::string& path);

/// Everything directly in a folder, including hidden items, in the order in which the disk lists
/// it. Absent when it cannot be listed completely.
[[nodiscard]] std::optional<std::vector<FileURL>> contentsOfDirectory(const FileURL& folder);

/// Creates a folder inside an existing one. Fails when any item already has the name.
Result<void> createDirectory(const FileURL& folder);

/// Copies a file, or a folder with everything in it, to an unused name. Without `foundIn` the user
/// has chosen the item, and a link is followed; with it the item must lie in that folder and must
/// not be a link. Data, permissions as far as the umask allows them, modification time and user
/// attributes are copied. The copy appears under its final name only when it is complete and on
/// disk. When `to` exists, the call fails and changes nothing; after any failure nothing is left
/// behind. A failure has `isTransient` set if its reason is that the source kept changing.
Result<void> copyItem(const FileURL& from, const FileURL& to,
    const std::optional<FileIdentity>& foundIn = std::nullopt);

/// As `copyItem`, but the copy replaces any item at `to`. The old item stays as it was until the
/// new one is complete and on disk, and for good if anything fails.
Result<void> replaceItem(const FileURL& from, const FileURL& to,
    const std::optional<FileIdentity>& foundIn = std::nullopt);

} // namespace stemvault::FileManager
