#pragma once

#include <string>
#include <string_view>

namespace stemvault {

/// The absolute path that a program started here would open for this argument. If it contains "..",
/// the links in its folder are resolved, because ".." after a link is the parent of the target.
[[nodiscard]] std::string absolutePath(std::string_view argument);

/// The text as markup that displays it unchanged.
[[nodiscard]] std::string escapedMarkup(std::string_view text);

} // namespace stemvault
