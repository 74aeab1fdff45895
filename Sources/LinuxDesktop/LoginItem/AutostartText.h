#pragma once

#include <string>
#include <string_view>

namespace stemvault::login_item {

/// Whether a desktop that finds this text as an autostart entry starts the program.
[[nodiscard]] bool isSwitchedOn(std::string_view text);

/// An entry that starts the executable. Other content of `before`, for example a key that the user
/// has written, is kept.
[[nodiscard]] std::string switchedOn(std::string_view before, const std::string& executable);

} // namespace stemvault::login_item
