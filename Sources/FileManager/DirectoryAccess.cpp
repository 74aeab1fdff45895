#include "FileManager/DirectoryAccess.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <memory>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>

namespace stemvault {

namespace {

// Opens the folder again, so that the new descriptor has its own position in the listing.
FileDescriptor reopened(int folder)
{
    return FileDescriptor(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

bool isDots(std::string_view name)
{
    return name == "." || name == "..";
}

// A folder about to be removed may lack its owner's permissions; it is first given all of them.
FileDescriptor openToEmpty(int folder, const std::string& name, const struct stat& status)
{
    const FileDescriptor item(
        ::openat(folder, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (item && (status.st_mode & S_IRWXU) != S_IRWXU)
        ::chmod(("/proc/self/fd/" + std::to_string(item.get())).c_str(), S_IRWXU);
    return item ? reopened(item.get()) : FileDescriptor();
}

bool removeBelow(int folder, const std::string& name, dev_t device)
{
    if (::unlinkat(folder, name.c_str(), 0) == 0)
        return true;
    const auto status = linkStatus(folder, name);
    if (!status || !S_ISDIR(status->st_mode) || status->st_dev != device)
        return false;
    const FileDescriptor inner = openToEmpty(folder, name, *status);
    if (!inner)
        return false;
    for (const std::string& entry : namesIn(inner.get()).value_or(std::vector<std::string>()))
        removeBelow(inner.get(), entry, device);
    return ::unlinkat(folder, name.c_str(), AT_REMOVEDIR) == 0;
}

} // namespace

KernelPath::KernelPath(const std::string& path) : rest(path)
{
    while (reachable && rest.size() >= PATH_MAX)
        reachable = enterAsFarAsPossible();
    if (!reachable)
        rest = {};
}

bool KernelPath::enterAsFarAsPossible()
{
    const auto cut = rest.rfind('/', PATH_MAX - 1);
    if (cut == std::string_view::npos || cut == 0)
        return errno = ENAMETOOLONG, false;
    base = FileDescriptor(::openat(
        folder(), std::string(rest.substr(0, cut)).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    rest.remove_prefix(std::min(rest.find_first_not_of('/', cut), rest.size()));
    return base.isOpen();
}

const char* KernelPath::name() const
{
    if (!reachable)
        return "";
    return rest.empty() ? "." : rest.data();
}

FileDescriptor openPath(const std::string& path, int flags)
{
    const KernelPath kernelPath(path);
    if (!kernelPath.isReachable())
        return {};
    return FileDescriptor(::openat(kernelPath.folder(), kernelPath.name(), flags | O_CLOEXEC));
}

FileDescriptor openWithoutLinks(const std::string& path, int flags)
{
    open_how how {};
    how.flags = static_cast<std::uint64_t>(flags | O_CLOEXEC);
    how.resolve = RESOLVE_NO_SYMLINKS;
    return FileDescriptor(
        static_cast<int>(::syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how)));
}

FileDescriptor openContent(int item, int flags)
{
    return FileDescriptor(
        ::open(("/proc/self/fd/" + std::to_string(item)).c_str(), flags | O_NOCTTY | O_CLOEXEC));
}

FileDescriptor openFolder(const std::string& path)
{
    FileDescriptor folder = openPath(path, O_RDONLY | O_DIRECTORY);
    if (!folder && errno == EACCES)
        folder = openPath(path, O_PATH | O_DIRECTORY);
    return folder;
}

std::optional<struct stat> linkStatus(const std::string& path)
{
    if (path.size() < PATH_MAX)
        return linkStatus(AT_FDCWD, path);
    const FileDescriptor item = openPath(path, O_PATH | O_NOFOLLOW);
    return item ? statusOf(item.get()) : std::nullopt;
}

std::optional<struct stat> linkStatus(int folder, const std::string& name)
{
    struct stat status { };
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return std::nullopt;
    return status;
}

std::optional<struct stat> statusOf(int descriptor)
{
    struct stat status { };
    if (::fstat(descriptor, &status) != 0)
        return std::nullopt;
    return status;
}

std::optional<std::string> linkTarget(int folder, const std::string& link)
{
    std::array<char, PATH_MAX> target; // NOLINT(*-member-init): readlinkat fills what is used.
    const ssize_t length = ::readlinkat(folder, link.c_str(), target.data(), target.size());
    if (length <= 0)
        return std::nullopt;
    return std::string(target.data(), static_cast<std::size_t>(length));
}

bool isSameItem(const struct stat& one, const struct stat& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

std::optional<std::vector<std::string>> namesIn(int folder)
{
    FileDescriptor listed = reopened(folder);
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(
        listed ? ::fdopendir(listed.get()) : nullptr, ::closedir);
    if (!stream)
        return std::nullopt;
    static_cast<void>(listed.release());
    std::vector<std::string> names;
    errno = 0;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other call uses this stream.
    while (const dirent* entry = ::readdir(stream.get()))
        if (!isDots(entry->d_name))
            names.emplace_back(entry->d_name);
    if (errno != 0)
        return std::nullopt;
    return names;
}

bool isWithin(int folder, const struct stat& ancestor)
{
    auto status = statusOf(folder);
    FileDescriptor place;
    while (status && !isSameItem(*status, ancestor)) {
        place = FileDescriptor(
            ::openat(place ? place.get() : folder, "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
        const auto above = place ? statusOf(place.get()) : std::nullopt;
        if (!above || isSameItem(*above, *status))
            return false;
        status = above;
    }
    return status.has_value();
}

bool removeItem(int folder, const std::string& name)
{
    const auto status = linkStatus(folder, name);
    return status && removeBelow(folder, name, status->st_dev);
}

} // namespace stemvault
