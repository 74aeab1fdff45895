#pragma once

#include "FileManager/DirectoryAccess.h"
#include "FileManager/FileCopy.h"

#include <array>
#include <ctime>

namespace stemvault {

/// Gives `out` the user attributes, the permissions and the modification time of `in`, as far as
/// the destination can hold them. Permissions are those of the source without what the umask takes
/// from every new item; special bits stay behind, but a new folder keeps the group that its parent
/// hands down.
void copyAttributes(int in, int out, const struct stat& source, const CopyOptions& options);

using Times = std::array<timespec, 2>;

/// The source's time of modification and, as time of access, now: file systems built on libfuse 2
/// set both times or, without an error, neither.
[[nodiscard]] Times modificationTime(const struct stat& source);

} // namespace stemvault
