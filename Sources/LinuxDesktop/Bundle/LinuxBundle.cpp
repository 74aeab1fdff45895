#include "LinuxDesktop/Bundle/LinuxBundle.h"

#include "Foundation/PathText.h"
#include "LinuxDesktop/Bundle/IcnsFile.h"

#include <QCoreApplication>
#include <QFile>

#include <filesystem>
#include <utility>

namespace stemvault::bundle {

LinuxBundle::LinuxBundle(std::vector<std::string> resourceFolders)
    : folders(std::move(resourceFolders))
{
}

std::vector<std::string> LinuxBundle::foldersOfExecutable()
{
    const std::string above = deletingLastPathComponent(
        QFile::encodeName(QCoreApplication::applicationDirPath()).toStdString());
    return { above + "/Resources", above + "/share/stemvault-connect" };
}

std::optional<std::string> LinuxBundle::pathForResource(
    const std::string& name, const std::string& type) const
{
    const std::string file = name + "." + type;
    for (const std::string& folder : folders) {
        std::string path = appendingPathComponent(folder, file);
        std::error_code failure;
        if (std::filesystem::exists(path, failure))
            return path;
    }
    return std::nullopt;
}

std::optional<Image> LinuxBundle::imageWithContentsOfFile(const std::string& path) const
{
    if (!isReadableImage(QString::fromStdString(path)))
        return std::nullopt;
    return Image { path };
}

std::optional<Image> LinuxBundle::imageWithSystemSymbolName(
    const std::string& name, const std::string& accessibilityDescription) const
{
    const auto path = pathForResource("Symbols/" + name, "svg");
    return path ? std::optional(Image { *path, accessibilityDescription }) : std::nullopt;
}

std::optional<std::string> LinuxBundle::shortVersionString() const
{
    return STEMVAULT_VERSION;
}

std::optional<Image> LinuxBundle::imageNamed(const std::string& name) const
{
    for (const char* type : { "icns", "svg", "png" })
        if (const auto path = pathForResource(name, type))
            if (auto image = imageWithContentsOfFile(*path))
                return image;
    if (QIcon::hasThemeIcon(QString::fromStdString(name)))
        return Image { name };
    return std::nullopt;
}

QIcon iconFromImage(const Image& image)
{
    const QString source = QString::fromStdString(image.source);
    return source.startsWith(u'/') ? iconFromFile(source) : QIcon::fromTheme(source);
}

} // namespace stemvault::bundle
