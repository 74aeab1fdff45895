#include "LinuxDesktop/FileEvents/FileStatus.h"

#include "FileManager/DirectoryAccess.h"
#include "Platform/FileEvents.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace stemvault::file_events {

namespace {

FileTime toFileTime(const statx_timestamp& time)
{
    return FileTime(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
}

bool isCoarse(FileTime time)
{
    return time.time_since_epoch() % std::chrono::seconds(1) == std::chrono::nanoseconds::zero();
}

/// Some file systems store only whole or even seconds, so such a time may be up to 2 s too early.
bool isSince(FileTime time, FileTime since)
{
    return time >= since || (isCoarse(time) && time + std::chrono::seconds(2) > since);
}

/// An empty path stands for "/".
const std::string& named(const std::string& path)
{
    static const std::string root = "/";
    return path.empty() ? root : path;
}

} // namespace

FileTime wallClock()
{
    return std::chrono::system_clock::now();
}

std::uint32_t FileStatus::kind() const
{
    if (S_ISREG(mode))
        return FileEventFlag::ItemIsFile;
    if (S_ISDIR(mode))
        return FileEventFlag::ItemIsDir;
    return S_ISLNK(mode) ? FileEventFlag::ItemIsSymlink : 0;
}

bool FileStatus::isModifiedSince(FileTime since) const
{
    return isSince(modified, since);
}

bool FileStatus::isTouched() const
{
    return accessed == modified && born != modified && !isCoarse(modified);
}

std::uint32_t FileStatus::changesSince(FileTime since) const
{
    if (!isSince(changed, since))
        return 0;
    // A copy that keeps its date is reported like a moved file: neither is a new recording.
    if (S_ISREG(mode) && !isModifiedSince(since))
        return FileEventFlag::ItemRenamed | kind();
    if (!born || isSince(*born, since))
        return FileEventFlag::ItemCreated | kind();
    // A folder's modification time changes with the names in it, which are reported separately.
    if (isModifiedSince(since))
        return S_ISDIR(mode) ? 0 : FileEventFlag::ItemModified | kind();
    // The item was neither created nor written since, so it was renamed.
    return FileEventFlag::ItemRenamed | kind();
}

std::uint32_t kindOfEntry(unsigned char type)
{
    switch (type) {
    case DT_REG:
        return FileEventFlag::ItemIsFile;
    case DT_DIR:
        return FileEventFlag::ItemIsDir;
    case DT_LNK:
        return FileEventFlag::ItemIsSymlink;
    default:
        return 0;
    }
}

std::optional<FileStatus> fileStatus(int folder, const char* name)
{
    struct statx status { };
    if (::statx(folder, name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT,
            STATX_BASIC_STATS | STATX_BTIME, &status)
        != 0)
        return std::nullopt;
    FileStatus result;
    result.device = (std::uint64_t { status.stx_dev_major } << 32U) | status.stx_dev_minor;
    result.inode = status.stx_ino;
    result.mode = status.stx_mode;
    result.links = status.stx_nlink;
    result.size = status.stx_size;
    result.accessed = toFileTime(status.stx_atime);
    result.modified = toFileTime(status.stx_mtime);
    result.changed = toFileTime(status.stx_ctime);
    if ((status.stx_mask & STATX_BTIME) != 0)
        result.born = toFileTime(status.stx_btime);
    return result;
}

std::optional<FileStatus> fileStatus(const std::string& path)
{
    const KernelPath kernelPath(named(path));
    return fileStatus(kernelPath.folder(), kernelPath.name());
}

FileDescriptor openFolder(const std::string& path, int access)
{
    const KernelPath kernelPath(named(path));
    return FileDescriptor(::openat(kernelPath.folder(), kernelPath.name(),
        access | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
}

FileTime arrivalTime(const std::optional<FileStatus>& arrived, FileTime bound)
{
    if (arrived && arrived->modified < arrived->changed && arrived->changed > bound)
        return arrived->changed;
    return bound;
}

} // namespace stemvault::file_events
