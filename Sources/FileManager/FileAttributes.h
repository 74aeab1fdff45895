#pragma once

#include "FileManager/DirectoryAccess.h"
#include "FileManager/FileCopy.h"

#include <array>
#include <ctime>

namespace stemvault {

/// Gives `out` the user attributes, the permissions and the modification time of `in`, as far as
/// the destination supports them. The umask applies to the permissions as to those of every new
/// item. The set-user-ID, set-group-ID and sticky bits are not copied, but a new folder keeps the
/// set-group-ID bit that it inherited from its parent.
void copyAttributes(int in, int out, const struct stat& source, const CopyOptions& options);

using Times = std::array<timespec, 2>;

/// The current time as the access time, and the source's modification time. The access time is
/// included because file systems built on libfuse 2 set both times or, without an error, neither.
[[nodiscard]] Times modificationTime(const struct stat& source);

} // namespace stemvault
