#pragma once

#include <string>
#include <vector>

namespace stemvault::hotkey {

/// The commands that show the keyboard shortcuts in the settings of each desktop, those of the
/// user's own desktop first. `currentDesktop` is a colon-separated list like XDG_CURRENT_DESKTOP.
[[nodiscard]] std::vector<std::vector<std::string>> keyboardSettingsCommands(
    const std::string& currentDesktop);

/// Starts the first of these commands that is installed, without waiting for it. Returns whether
/// one was started.
[[nodiscard]] bool openKeyboardSettings(const std::string& currentDesktop);

} // namespace stemvault::hotkey
