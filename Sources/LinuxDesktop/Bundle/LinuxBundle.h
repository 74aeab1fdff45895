#pragma once

#include "Platform/Bundle.h"

#include <QIcon>
#include <QString>

#include <vector>

namespace stemvault {

/// Resources in the folders given, the first that has one wins.
class LinuxBundle final : public Bundle {
public:
    explicit LinuxBundle(std::vector<std::string> resourceFolders);

    /// Where the running executable's resources are: beside it in a build tree, and in the data
    /// folder of an installation.
    [[nodiscard]] static std::vector<std::string> foldersOfExecutable();

    [[nodiscard]] std::optional<std::string> pathForResource(
        const std::string& name, const std::string& type) const override;
    [[nodiscard]] std::optional<Image> imageWithContentsOfFile(
        const std::string& path) const override;

    /// One of the program's own, which lie in the folder Symbols.
    [[nodiscard]] std::optional<Image> imageWithSystemSymbolName(
        const std::string& name, const std::string& accessibilityDescription) const override;

    [[nodiscard]] std::optional<std::string> shortVersionString() const override;

    /// The program's own image of that name, else the icon theme's.
    [[nodiscard]] std::optional<Image> imageNamed(const std::string& name) const override;

private:
    std::vector<std::string> folders;
};

/// An image that the bundle gave, to be drawn. Null when it has gone since.
[[nodiscard]] QIcon iconFromImage(const Image& image);

} // namespace stemvault
