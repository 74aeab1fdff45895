#include "FileManager/SourceItem.h"

#include "FileManager/DirectoryAccess.h"
#include "Foundation/PathText.h"

#include <fcntl.h>

namespace stemvault {

namespace {

bool isFolder(const FileDescriptor& folder, const FileIdentity& identity)
{
    const auto status = statusOf(folder.get());
    return status && FileIdentity { status->st_dev, status->st_ino } == identity;
}

// Some drives give a folder a new inode number once the kernel no longer caches it, and a program
// may create its folder again. If the path contains no link, it still leads to the same place.
CopyOutcome findFolder(const std::string& path, const FileIdentity& foundIn, FileDescriptor& folder)
{
    folder = openPath(path, O_PATH | O_DIRECTORY);
    if (!folder)
        return readingFault();
    if (isFolder(folder, foundIn))
        return std::nullopt;
    folder = openWithoutLinks(path, O_PATH | O_DIRECTORY);
    if (!folder)
        return CopyFault { CopyFault::Kind::FolderReplaced };
    return std::nullopt;
}

} // namespace

CopyOutcome findSource(
    const std::string& path, const std::optional<FileIdentity>& foundIn, FileDescriptor& item)
{
    FileDescriptor folder;
    if (!foundIn)
        item = openPath(path, O_PATH);
    else if (const auto fault = findFolder(deletingLastPathComponent(path), *foundIn, folder))
        return fault;
    else
        item = FileDescriptor(::openat(
            folder.get(), lastPathComponent(path).c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    const auto found = item ? statusOf(item.get()) : std::nullopt;
    if (!found)
        return readingFault();
    if (S_ISLNK(found->st_mode))
        return CopyFault { CopyFault::Kind::FoundLink };
    if (!S_ISREG(found->st_mode) && !S_ISDIR(found->st_mode))
        return CopyFault { CopyFault::Kind::NotAFile };
    return std::nullopt;
}

} // namespace stemvault
