#include "FileManager/TemporaryItem.h"

#include "FileManager/DirectoryAccess.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <fcntl.h>
#include <random>
#include <sys/file.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace stemvault {

namespace {

constexpr std::string_view prefix = ".syncthing.~";
constexpr std::string_view asidePrefix = ".~";
constexpr std::string_view suffix = ".tmp";
constexpr std::string_view asideSuffix = ".old";
constexpr std::string_view alphabet =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr std::size_t randomLength = 6;
constexpr std::size_t added = prefix.size() + 1 + randomLength + suffix.size();

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Some file systems allow fewer than 255 bytes: a name as long as the final one fits wherever that
// one does, and a short one always fits.
std::size_t lengthToKeep(std::string_view name)
{
    constexpr std::size_t alwaysFits = 64;
    const std::size_t limit = std::clamp<std::size_t>(name.size(), alwaysFits, NAME_MAX);
    std::size_t length = std::min(name.size(), limit - added);
    // A character has at most three continuation bytes; more are not UTF-8 and may be cut anywhere.
    for (int i = 0; i < 3 && length < name.size() && length > 1 && isContinuation(name[length]);
         ++i)
        --length;
    return length;
}

std::string randomText()
{
    std::random_device source;
    std::uniform_int_distribution<std::size_t> place(0, alphabet.size() - 1);
    std::string text;
    for (std::size_t i = 0; i < randomLength; ++i)
        text += alphabet[place(source)];
    return text;
}

std::string randomName(std::string_view beginning, std::string_view name, std::string_view ending)
{
    std::string text(beginning);
    text.append(name.substr(0, lengthToKeep(name))).append(".");
    return text.append(randomText()).append(ending);
}

// Uses the change time, which cannot be set; a copy takes its modification time from its source.
bool isUntouchedFor(std::chrono::seconds age, const struct stat& status)
{
    const auto touched = std::chrono::system_clock::from_time_t(status.st_ctim.tv_sec);
    return std::chrono::system_clock::now() - touched >= age;
}

bool isCandidate(const struct stat& status, std::chrono::seconds age)
{
    return (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)) && status.st_uid == ::geteuid()
        && isUntouchedFor(age, status);
}

// On a network file system, only a file that is open for writing can be locked.
FileDescriptor openToLock(int folder, const std::string& name, const struct stat& status)
{
    constexpr int flags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    if (S_ISDIR(status.st_mode))
        return FileDescriptor(::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | flags));
    FileDescriptor item(::openat(folder, name.c_str(), O_RDWR | flags));
    if (!item && errno == EACCES)
        item = FileDescriptor(::openat(folder, name.c_str(), O_RDONLY | flags));
    return item;
}

// A copy that was killed before it could mark its staged item has left the item empty.
bool isOurs(int item, const struct stat& status)
{
    if (::fgetxattr(item, stagedMark, nullptr, 0) >= 0)
        return true;
    return S_ISREG(status.st_mode) && (errno == ENOTSUP || status.st_size == 0);
}

void removeIfLeftover(int folder, const std::string& name, std::chrono::seconds age)
{
    const auto status = linkStatus(folder, name);
    if (!status || !isCandidate(*status, age))
        return;
    const FileDescriptor item = openToLock(folder, name, *status);
    if (!item || ::flock(item.get(), LOCK_EX | LOCK_NB) != 0)
        return;
    if (isOurs(item.get(), *status))
        removeItem(folder, name);
    else if (S_ISDIR(status->st_mode))
        ::unlinkat(folder, name.c_str(), AT_REMOVEDIR); // Succeeds only if it is empty.
}

} // namespace

std::string temporaryName(std::string_view name)
{
    return randomName(prefix, name, suffix);
}

std::string asideName(std::string_view name)
{
    return randomName(asidePrefix, name, asideSuffix);
}

bool isTemporaryName(std::string_view name)
{
    if (name.size() <= added || !name.starts_with(prefix) || !name.ends_with(suffix))
        return false;
    name.remove_suffix(suffix.size());
    const std::string_view random = name.substr(name.size() - randomLength);
    return name[name.size() - randomLength - 1] == '.'
        && random.find_first_not_of(alphabet) == std::string_view::npos;
}

void markStaged(int item)
{
    ::flock(item, LOCK_EX | LOCK_NB);
    ::fsetxattr(item, stagedMark, "", 0, 0);
}

void unmarkStaged(int folder, const std::string& name)
{
    const std::string path = "/proc/self/fd/" + std::to_string(folder) + "/" + name;
    if (::lremovexattr(path.c_str(), stagedMark) == 0 || (errno != EACCES && errno != EPERM))
        return;
    // An item that its owner may not write must be made writable for this.
    const auto status = linkStatus(folder, name);
    if (!status || S_ISLNK(status->st_mode)
        || ::chmod(path.c_str(), status->st_mode | S_IWUSR) != 0)
        return;
    ::lremovexattr(path.c_str(), stagedMark);
    ::chmod(path.c_str(), status->st_mode);
}

void removeLeftovers(int folder, std::chrono::seconds age)
{
    for (const std::string& name : namesIn(folder).value_or(std::vector<std::string>()))
        if (isTemporaryName(name))
            removeIfLeftover(folder, name, age);
}

} // namespace stemvault
