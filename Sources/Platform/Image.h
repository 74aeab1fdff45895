#pragma once

#include <string>

namespace stemvault {

/// An image that the desktop was found able to show: a file's path or a name the desktop knows.
struct Image {
    std::string source;
    std::string accessibilityDescription {}; ///< What a screen reader says in its place.
    bool isTemplate = false; ///< Only its shape counts: it takes the colour of where it is shown.

    [[nodiscard]] bool operator==(const Image&) const = default;
};

} // namespace stemvault
