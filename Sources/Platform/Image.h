#pragma once

#include <string>

namespace stemvault {

/// A reference to an image. Only a Bundle makes one, after it has seen that the desktop can show
/// it; the pixels are read when it is drawn.
struct Image {
    std::string source; ///< An absolute path, or a name of the icon theme. For the backend alone.
    std::string accessibilityDescription {}; ///< What a screen reader says in its place.
    bool isTemplate = false; ///< Only its shape is used: it is drawn in the text's colour.

    [[nodiscard]] bool operator==(const Image&) const = default;
};

} // namespace stemvault
