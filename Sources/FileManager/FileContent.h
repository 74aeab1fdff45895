#pragma once

#include "FileManager/CopyFault.h"
#include "FileManager/DirectoryAccess.h"
#include "FileManager/FileCopy.h"

namespace stemvault {

/// Copies what `in` held when its status `source` was read into the empty file `out`: by sharing
/// blocks if the file system can, else inside the kernel, else by reading and writing. Holes are
/// kept if the destination supports them. If `in` has become shorter, the fault is `Changing`.
[[nodiscard]] CopyOutcome copyContent(
    int in, int out, const struct stat& source, const CopyOptions& options);

} // namespace stemvault
