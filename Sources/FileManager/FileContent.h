#pragma once

#include "FileManager/CopyFault.h"
#include "FileManager/DirectoryAccess.h"
#include "FileManager/FileCopy.h"

namespace stemvault {

/// Copies what `in` held when `source` was taken into the empty file `out`: by sharing blocks where
/// the file system can, else inside the kernel, else by reading and writing. Holes stay holes. A
/// file that has become shorter is `Changing`.
[[nodiscard]] CopyOutcome copyContent(
    int in, int out, const struct stat& source, const CopyOptions& options);

} // namespace stemvault
