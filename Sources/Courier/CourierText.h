#pragma once

#include <string>
#include <string_view>

namespace stemvault {

/// The path that a program started here would open for this argument. Where "..", which leads to
/// another place behind a link, is in it, the folder's real path takes the place of the folder.
[[nodiscard]] std::string absolutePath(std::string_view argument);

/// The text as markup that shows it.
[[nodiscard]] std::string escapedMarkup(std::string_view text);

} // namespace stemvault
