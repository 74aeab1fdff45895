#pragma once

#include "Platform/Bundle.h"

#include <QIcon>
#include <QString>

#include <vector>

namespace stemvault::bundle {

/// Finds resources in the given folders; the first folder that has a resource wins.
class LinuxBundle final : public Bundle {
public:
    explicit LinuxBundle(std::vector<std::string> resourceFolders);

    /// The resource folders of the running executable: that of a build tree, and the data folder of
    /// an installation.
    [[nodiscard]] static std::vector<std::string> foldersOfExecutable();

    [[nodiscard]] std::optional<std::string> pathForResource(
        const std::string& name, const std::string& type) const override;
    [[nodiscard]] std::optional<Image> imageWithContentsOfFile(
        const std::string& path) const override;

    /// One of the program's own symbols, which are in the folder Symbols.
    [[nodiscard]] std::optional<Image> imageWithSystemSymbolName(
        const std::string& name, const std::string& accessibilityDescription) const override;

    [[nodiscard]] std::optional<std::string> shortVersionString() const override;

    /// The program's own image of that name, or else that of the icon theme.
    [[nodiscard]] std::optional<Image> imageNamed(const std::string& name) const override;

private:
    std::vector<std::string> folders;
};

/// The icon to draw for an image from the bundle. Null if the image no longer exists.
[[nodiscard]] QIcon iconFromImage(const Image& image);

} // namespace stemvault::bundle
