#pragma once

#include <string>

namespace stemvault {

/// An image that the desktop was found able to show: a file's path or a name the desktop knows.
struct Image {
    std::string source;

    [[nodiscard]] bool operator==(const Image&) const = default;
};

} // namespace stemvault
