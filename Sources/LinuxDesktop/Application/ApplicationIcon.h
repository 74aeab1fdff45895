#pragma once

#include "Platform/Image.h"

#include <optional>

class QIcon;

namespace stemvault::application {

/// The icon of the program's windows. It is read when the first window needs it, not at start.
class ApplicationIcon {
public:
    void setImage(const Image& chosen);

    /// A null icon until an image has been set. Main thread only.
    [[nodiscard]] QIcon icon();

private:
    std::optional<Image> unread;
};

} // namespace stemvault::application
