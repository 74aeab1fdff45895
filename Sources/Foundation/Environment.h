#pragma once

#include <string>

namespace stemvault {

/// The value of a variable of the environment; empty when it is not set. From any thread: nothing
/// in the program changes the environment.
[[nodiscard]] std::string environment(const char* name);

/// The folder of the user's configuration files.
[[nodiscard]] std::string configurationFolder();

} // namespace stemvault
