#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace stemvault {

/// Colours named after their use. The backend picks a shade of each that is readable on the light
/// or dark background at hand.
enum class Color {
    Label, ///< Ordinary text.
    SecondaryLabel, ///< Text of less weight, such as a path below its name.
    TertiaryLabel, ///< Text of least weight, such as a hint.
    Accent, ///< What can be used or is selected.
    SystemGreen,
    SystemYellow,
};

/// The colour of some characters of a text. Positions count characters as the user sees them from
/// the start of the text, not bytes.
struct ForegroundColor {
    Color color = Color::Label;
    std::size_t location = 0; ///< The first character.
    std::size_t length = 0; ///< How many of them.

    [[nodiscard]] bool operator==(const ForegroundColor&) const = default;
};

/// A text of which some characters may have a colour of their own; the others have the usual colour
/// of the place where it is shown. A desktop that cannot colour a menu's text may show the same
/// mark as an image instead.
struct AttributedString {
    std::string string; ///< UTF-8, shown as it stands.
    std::optional<ForegroundColor> foregroundColor;

    [[nodiscard]] bool operator==(const AttributedString&) const = default;
};

} // namespace stemvault
