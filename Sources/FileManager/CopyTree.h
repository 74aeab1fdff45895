#pragma once

#include "FileManager/CopyFault.h"
#include "FileManager/DirectoryAccess.h"
#include "FileManager/FileCopy.h"

namespace stemvault {

// These copy one open item into another that is new and empty. On success the copy holds what the
// source held when the status `source` was read, including its attributes, and is on disk if the
// options ask for that. If the source has changed since then, the fault is `Changing`.

[[nodiscard]] CopyOutcome copyWholeFile(
    int in, int out, const struct stat& source, const CopyOptions& options);

/// Links are copied as links. Pipes and sockets are created anew and never opened. Creating a
/// device needs a privilege that users do not have, so a device makes the copy fail.
[[nodiscard]] CopyOutcome copyWholeFolder(
    int in, int out, const struct stat& source, const CopyOptions& options);

} // namespace stemvault
