#include "Foundation/FileManager.h"

#include "Foundation/FileCopy.h"
#include "Foundation/Folder.h"

namespace stemvault::FileManager {

bool fileExists(const std::string& path)
{
    return linkStatus(path).has_value();
}

std::optional<std::int64_t> fileSize(const std::string& path)
{
    const auto status = linkStatus(path);
    return status ? std::optional<std::int64_t>(status->st_size) : std::nullopt;
}

std::optional<std::chrono::sys_time<std::chrono::nanoseconds>> contentModificationDate(
    const std::string& path)
{
    const auto status = linkStatus(path);
    if (!status)
        return std::nullopt;
    return std::chrono::sys_time<std::chrono::nanoseconds>(
        std::chrono::seconds(status->st_mtim.tv_sec)
        + std::chrono::nanoseconds(status->st_mtim.tv_nsec));
}

Result<void> copyItem(const FileURL& from, const FileURL& to)
{
    return stemvault::copyItem(from.path(), to.path());
}

Result<void> replaceItem(const FileURL& from, const FileURL& to)
{
    CopyOptions options;
    options.ifTaken = IfTaken::Replace;
    return stemvault::copyItem(from.path(), to.path(), options);
}

} // namespace stemvault::FileManager
