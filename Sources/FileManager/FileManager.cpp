#include "FileManager/FileManager.h"

#include "FileManager/CopyFault.h"
#include "FileManager/DirectoryAccess.h"
#include "FileManager/FileCopy.h"
#include "FileManager/SourceItem.h"
#include "Foundation/UnicodeText.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace stemvault::FileManager {

namespace {

FileDate dateOf(const struct stat& status)
{
    return FileDate(std::chrono::seconds(status.st_mtim.tv_sec)
        + std::chrono::nanoseconds(status.st_mtim.tv_nsec));
}

std::string quotedName(const FileURL& url)
{
    return "“" + printable(url.lastPathComponent()) + "”";
}

} // namespace

bool fileExists(const std::string& path)
{
    return linkStatus(path).has_value();
}

std::optional<ItemAttributes> attributesOfItem(const std::string& path)
{
    const auto status = linkStatus(path);
    if (!status)
        return std::nullopt;
    return ItemAttributes { S_ISREG(status->st_mode), status->st_size, dateOf(*status) };
}

std::optional<FileDate> contentModificationDate(const std::string& path)
{
    const auto attributes = attributesOfItem(path);
    return attributes ? std::optional(attributes->contentModificationDate) : std::nullopt;
}

std::optional<FileIdentity> identityOfFolder(const std::string& path)
{
    const FileDescriptor folder = openPath(path, O_PATH | O_DIRECTORY);
    const auto status = folder ? statusOf(folder.get()) : std::nullopt;
    return status ? std::optional(FileIdentity { status->st_dev, status->st_ino }) : std::nullopt;
}

std::optional<SourceState> sourceState(const FileURL& from,
    const std::optional<FileIdentity>& foundIn,
    const std::function<bool(const SourceState&)>& needsWriterCheck)
{
    FileDescriptor item;
    if (findSource(from.path(), foundIn, item))
        return std::nullopt;
    const auto status = statusOf(item.get());
    if (!status || !S_ISREG(status->st_mode))
        return std::nullopt;
    SourceState state { Writers::Unknown, status->st_size, dateOf(*status) };
    if (needsWriterCheck(state))
        state.writers = writersOf(item.get());
    return state;
}

std::optional<ItemKind> itemKind(const std::string& path)
{
    struct stat status { };
    if (::stat(path.c_str(), &status) != 0)
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
    if (::mkdir(folder.path().c_str(), S_IRWXU | S_IRWXG | S_IRWXO) == 0)
        return {};
    const int error = errno;
    const FileURL parent = folder.deletingLastPathComponent();
    const bool isNamesFault = isAboutName(error) && itemKind(parent.path()) == ItemKind::Directory;
    const std::string name = quotedName(parent);
    return Failure { "The folder " + quotedName(folder) + " couldn’t be made because "
        + (isNamesFault ? namingReason(name) : writingReason(error, name)) + "." };
}

Result<void> copyItem(
    const FileURL& from, const FileURL& to, const std::optional<FileIdentity>& foundIn)
{
    CopyOptions options;
    options.foundIn = foundIn;
    return stemvault::copyItem(from.path(), to.path(), options);
}

Result<void> replaceItem(
    const FileURL& from, const FileURL& to, const std::optional<FileIdentity>& foundIn)
{
    CopyOptions options;
    options.foundIn = foundIn;
    options.ifExists = IfExists::Replace;
    return stemvault::copyItem(from.path(), to.path(), options);
}

} // namespace stemvault::FileManager
