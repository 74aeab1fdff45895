#pragma once

#include <string>
#include <vector>

namespace stemvault {

/// The commands that show the keyboard's shortcuts in the desktops' settings, those of the user's
/// own desktop first. `currentDesktop` is a list with colons, as XDG_CURRENT_DESKTOP has it.
[[nodiscard]] std::vector<std::vector<std::string>> keyboardSettingsCommands(
    const std::string& currentDesktop);

/// Starts the first of them that is installed; whether there was one. Does not wait for it.
[[nodiscard]] bool openKeyboardSettings(const std::string& currentDesktop);

} // namespace stemvault
