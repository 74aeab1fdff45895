#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace stemvault {

/// Colours named after their use. The desktop gives each a shade for light and one for dark.
enum class Color {
    Label, ///< Ordinary text.
    SecondaryLabel,
    TertiaryLabel,
    Accent,
    SystemGreen,
    SystemYellow,
};

/// Some characters of a text, counted from its start, and the colour that they bear.
struct ForegroundColor {
    Color color = Color::Label;
    std::size_t location = 0;
    std::size_t length = 0;

    [[nodiscard]] bool operator==(const ForegroundColor&) const = default;
};

/// A text that may be coloured in part; the rest of it has the colour of where it is shown.
struct AttributedString {
    std::string string;
    std::optional<ForegroundColor> foregroundColor;

    [[nodiscard]] bool operator==(const AttributedString&) const = default;
};

} // namespace stemvault
