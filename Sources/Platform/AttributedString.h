#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace stemvault {

/// Colours named after their use. The backend picks a shade of each that is readable on the light
/// or dark background at hand.
enum class Color {
    Label, ///< Ordinary text.
    SecondaryLabel, ///< Less prominent text, such as a path below its name.
    TertiaryLabel, ///< The least prominent text, such as a hint.
    Accent, ///< Interactive or selected elements.
    SystemGreen,
    SystemYellow,
};

/// The colour of some characters of a text. Positions count characters as the user sees them, not
/// bytes, from the start of the text.
struct ForegroundColor {
    Color color = Color::Label;
    std::size_t location = 0; ///< The first character.
    std::size_t length = 0; ///< The number of characters.

    [[nodiscard]] bool operator==(const ForegroundColor&) const = default;
};

/// A text in which some characters may have a different colour; the others have the usual colour of
/// the place where the text is shown. A desktop that cannot colour the text of a menu may show the
/// coloured characters as an image instead.
struct AttributedString {
    std::string string; ///< UTF-8, shown as it stands.
    std::optional<ForegroundColor> foregroundColor;

    [[nodiscard]] bool operator==(const AttributedString&) const = default;
};

} // namespace stemvault
