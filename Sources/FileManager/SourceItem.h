#pragma once

#include "FileManager/CopyFault.h"
#include "FileManager/FileIdentity.h"
#include "Foundation/FileDescriptor.h"

#include <optional>
#include <string>

namespace stemvault {

/// Finds the item to be copied, opened without access to its content (O_PATH), so that nothing is
/// waited for and nothing acts. Without `foundIn` a final link is followed. With it the item must
/// lie in that folder and be no link, whatever has been put in its place since it was found.
[[nodiscard]] CopyOutcome findSource(
    const std::string& path, const std::optional<FileIdentity>& foundIn, FileDescriptor& item);

} // namespace stemvault
