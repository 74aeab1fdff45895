#pragma once

#include "FileManager/CopyFault.h"
#include "FileManager/DirectoryAccess.h"
#include "FileManager/FileCopy.h"

namespace stemvault {

// From one open item into another that is new and empty. When they succeed, the copy holds what the
// source held when `source` was taken, attributes included, and is on disk if that is asked for. A
// source that has changed meanwhile is `Changing`.

[[nodiscard]] CopyOutcome copyWholeFile(
    int in, int out, const struct stat& source, const CopyOptions& options);

/// Links are copied as links, pipes and sockets are made anew as what they are, never opened. A
/// device needs a right that users do not have, and so fails the copy.
[[nodiscard]] CopyOutcome copyWholeFolder(
    int in, int out, const struct stat& source, const CopyOptions& options);

} // namespace stemvault
