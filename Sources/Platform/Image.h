#pragma once

#include <string>

namespace stemvault {

/// A reference to an image. Only a Bundle creates one, after checking that the desktop can show it;
/// the pixels are read when it is drawn.
struct Image {
    std::string source; ///< An absolute path or a name in the icon theme. Only the backend uses it.
    std::string accessibilityDescription {}; ///< What a screen reader says instead.
    bool isTemplate = false; ///< Only its shape is used: it is drawn in the colour of the text.

    [[nodiscard]] bool operator==(const Image&) const = default;
};

} // namespace stemvault
