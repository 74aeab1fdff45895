#pragma once

#include "Platform/Image.h"

#include <optional>
#include <string>

namespace stemvault {

/// The program's own resources. Main thread only. The methods access only files of the
/// installation, so they are fast. They return values that keep no file open; an image whose file
/// is gone by the time it is drawn shows nothing.
class Bundle {
public:
    virtual ~Bundle() = default;

    /// The absolute path of the resource "name.type", such as "AppIcon" of type "icns"; absent when
    /// the program was installed without it.
    [[nodiscard]] virtual std::optional<std::string> pathForResource(
        const std::string& name, const std::string& type) const = 0;

    /// The image in the file at `path`; absent when the file does not exist, is damaged or has a
    /// format that the desktop cannot show.
    [[nodiscard]] virtual std::optional<Image> imageWithContentsOfFile(
        const std::string& path) const = 0;

    /// A single-coloured symbol such as "waveform.circle"; absent when there is none of that name.
    /// The image carries `accessibilityDescription`.
    [[nodiscard]] virtual std::optional<Image> imageWithSystemSymbolName(
        const std::string& name, const std::string& accessibilityDescription) const = 0;

    /// The version of the running program, such as "1.4.2"; absent when the bundle has none.
    [[nodiscard]] virtual std::optional<std::string> shortVersionString() const = 0;

    /// The program's own image of that name, else the one in the desktop's icon theme; absent when
    /// neither exists.
    [[nodiscard]] virtual std::optional<Image> imageNamed(const std::string& name) const = 0;
};

} // namespace stemvault
