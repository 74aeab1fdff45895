#pragma once

#include "Foundation/Result.h"

#include <string>
#include <vector>

namespace stemvault {

/// The URIs of the files that the user means with a hotkey, or what to tell him when there are
/// none.
///
/// Where an X window has the keyboard, these are the files selected in it: it is made to copy them,
/// and a process that stays behind then has the clipboard as it was. Elsewhere, and in a terminal,
/// these are the files last copied, as no program may press a key for another.
[[nodiscard]] Result<std::vector<std::string>> selectedFiles();

} // namespace stemvault
