#include "FileManager/CopyFault.h"
#include "FileManager/FileManager+Folders.h"
#include "Foundation/UnicodeText.h"

#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>

namespace stemvault::FileManager {

namespace {

std::string quotedName(const FileURL& url)
{
    return "“" + printable(url.lastPathComponent()) + "”";
}

} // namespace

std::optional<ItemKind> itemKind(const std::string& path)
{
    struct stat status { };
    if (stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return S_ISDIR(status.st_mode) ? ItemKind::Directory : ItemKind::File;
}

std::optional<std::vector<FileURL>> contentsOfDirectory(const FileURL& folder)
{
    std::error_code error;
    std::vector<FileURL> contents;
    std::filesystem::directory_iterator entry(folder.path(), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
        contents.push_back(folder.appendingPathComponent(entry->path().filename().native()));
    return error ? std::nullopt : std::optional(std::move(contents));
}

Result<void> createDirectory(const FileURL& folder)
{
    if (mkdir(folder.path().c_str(), S_IRWXU | S_IRWXG | S_IRWXO) == 0)
        return {};
    const int error = errno;
    const FileURL parent = folder.deletingLastPathComponent();
    const bool isNamesFault = isAboutName(error) && itemKind(parent.path()) == ItemKind::Directory;
    const std::string name = quotedName(parent);
    return Failure { "The folder " + quotedName(folder) + " couldn’t be made because "
        + (isNamesFault ? namingReason(name) : writingReason(error, name)) + "." };
}

} // namespace stemvault::FileManager
