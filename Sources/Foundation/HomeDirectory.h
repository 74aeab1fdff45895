#pragma once

#include <string>

namespace stemvault {

/// The user's home folder without a trailing slash, from HOME or else the user database; empty if
/// neither gives one.
[[nodiscard]] std::string homeDirectory();

} // namespace stemvault
