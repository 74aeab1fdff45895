#include "FileManager/FileManager.h"

#include "FileManager/DirectoryAccess.h"
#include "FileManager/FileCopy.h"
#include "FileManager/SourceItem.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace stemvault::FileManager {

namespace {

FileDate dateOf(const FileStatus& status)
{
    return FileDate(std::chrono::seconds(status.st_mtim.tv_sec)
        + std::chrono::nanoseconds(status.st_mtim.tv_nsec));
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
    const std::function<bool(const SourceState&)>& mattersWhoWrites)
{
    FileDescriptor item;
    if (findSource(from.path(), foundIn, item))
        return std::nullopt;
    const auto status = statusOf(item.get());
    if (!status || !S_ISREG(status->st_mode))
        return std::nullopt;
    SourceState state { Writers::Unknown, status->st_size, dateOf(*status) };
    if (mattersWhoWrites(state))
        state.writers = writersOf(item.get());
    return state;
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
    options.ifTaken = IfTaken::Replace;
    return stemvault::copyItem(from.path(), to.path(), options);
}

} // namespace stemvault::FileManager
