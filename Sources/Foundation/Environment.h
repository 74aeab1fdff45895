#pragma once

#include <string>

namespace stemvault {

/// The value of an environment variable; empty if it is not set. May be called from any thread: the
/// program changes no variable but XDG_ACTIVATION_TOKEN.
[[nodiscard]] std::string environment(const char* name);

/// The folder for the user's configuration files.
[[nodiscard]] std::string configurationFolder();

} // namespace stemvault
