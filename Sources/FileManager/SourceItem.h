#pragma once

#include "FileManager/CopyFault.h"
#include "FileManager/FileIdentity.h"
#include "Foundation/FileDescriptor.h"

#include <optional>
#include <string>

namespace stemvault {

/// Opens the item to be copied without access to its content (O_PATH), so that a pipe cannot block
/// and a device does nothing. Without `foundIn` a final link is followed. With it the item must lie
/// in that folder and must not be a link, whatever has taken its place since it was found.
[[nodiscard]] CopyOutcome findSource(
    const std::string& path, const std::optional<FileIdentity>& foundIn, FileDescriptor& item);

} // namespace stemvault
