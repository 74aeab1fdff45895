#pragma once

#include "FileManager/FileCopyOptions.h"
#include "Foundation/Result.h"

#include <string>

namespace stemvault {

/// Copies the file or folder `from` to the path `to`, whole or not at all, as FileManager promises.
/// A source that changes while it is copied is copied again, twice at most.
/// Safe from every thread.
Result<void> copyItem(
    const std::string& from, const std::string& to, const CopyOptions& options = {});

} // namespace stemvault
