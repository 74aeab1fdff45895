#pragma once

#include "Platform/Image.h"

#include <optional>
#include <string>

namespace stemvault {

/// The program's own resources. Main thread only.
class Bundle {
public:
    virtual ~Bundle() = default;

    /// The path of a resource that exists, such as "AppIcon" of type "icns".
    [[nodiscard]] virtual std::optional<std::string> pathForResource(
        const std::string& name, const std::string& type) const = 0;

    /// The image in a file; absent when the file holds none that can be read.
    [[nodiscard]] virtual std::optional<Image> imageWithContentsOfFile(
        const std::string& path) const = 0;

    /// The symbol of that name; absent when there is none.
    [[nodiscard]] virtual std::optional<Image> imageWithSystemSymbolName(
        const std::string& name, const std::string& accessibilityDescription) const = 0;

    /// The version of the running program; absent when the bundle does not say.
    [[nodiscard]] virtual std::optional<std::string> shortVersionString() const = 0;

    /// The image that the desktop keeps under a name; absent when there is none.
    [[nodiscard]] virtual std::optional<Image> imageNamed(const std::string& name) const = 0;
};

} // namespace stemvault
