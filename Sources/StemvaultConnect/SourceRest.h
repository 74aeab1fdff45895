#pragma once

#include "FileManager/FileManager.h"
#include "Platform/Dispatch.h"

namespace stemvault {

/// Whether a file may be copied, by the watcher's measure of a finished one.
[[nodiscard]] bool isAtRest(const FileManager::SourceState& source, WallTime now);

} // namespace stemvault
