#pragma once

#include "Foundation/Folder.h"

namespace stemvault {

/// Gives `out` the user attributes, the permissions and the modification time of `in`, as far as
/// the destination can hold them. Special permission bits stay behind.
void copyAttributes(int in, int out, const FileStatus& source);

} // namespace stemvault
