#pragma once

#include "Foundation/Result.h"

#include <string>
#include <vector>

namespace stemvault {

/// The URIs of the files that the user means with a hotkey, or the text to show if there are none.
///
/// If an X window has the keyboard focus, these are the files selected in it: it is made to copy
/// them, and a process that stays behind then serves the previous content of the clipboard.
/// Elsewhere, and in a terminal, Ctrl+C cannot be pressed for the user, so these are the files that
/// were copied last.
[[nodiscard]] Result<std::vector<std::string>> selectedFiles();

} // namespace stemvault
