#pragma once

#include "Platform/Image.h"

#include <optional>
#include <string>

namespace stemvault {

/// The program's own resources. Main thread only. The methods look at files of the installation and
/// at nothing else, so they are fast. What they return is a value: it does not keep a file open,
/// and drawing it later shows nothing if the file has gone.
class Bundle {
public:
    virtual ~Bundle() = default;

    /// The absolute path of the resource "name.type", such as "AppIcon" of type "icns"; absent when
    /// the program was installed without it.
    [[nodiscard]] virtual std::optional<std::string> pathForResource(
        const std::string& name, const std::string& type) const = 0;

    /// The image in the file at `path`; absent when there is no such file, or it is damaged, or it
    /// is in no format that the desktop can show.
    [[nodiscard]] virtual std::optional<Image> imageWithContentsOfFile(
        const std::string& path) const = 0;

    /// A single-coloured symbol such as "waveform.circle"; absent when there is none of that name.
    /// The image carries `accessibilityDescription`.
    [[nodiscard]] virtual std::optional<Image> imageWithSystemSymbolName(
        const std::string& name, const std::string& accessibilityDescription) const = 0;

    /// The version of the running program, such as "1.4.2"; absent when the bundle has none.
    [[nodiscard]] virtual std::optional<std::string> shortVersionString() const = 0;

    /// The program's own image of that name, else the one in the desktop's icon theme; absent when
    /// neither has one.
    [[nodiscard]] virtual std::optional<Image> imageNamed(const std::string& name) const = 0;
};

} // namespace stemvault
