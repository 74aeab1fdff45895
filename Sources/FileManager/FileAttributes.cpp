#include "FileManager/FileAttributes.h"

#include "FileManager/TemporaryItem.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <endian.h>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace stemvault {

namespace {

// The kernel's limit for the size of an attribute and for the size of the list of names.
constexpr std::size_t largestAttribute = 65536;

void copyUserAttributes(int in, int out)
{
    std::string names(largestAttribute, '\0');
    const ssize_t listed = ::flistxattr(in, names.data(), names.size());
    if (listed <= 0)
        return;
    names.resize(static_cast<std::size_t>(listed));
    std::string value(largestAttribute, '\0');
    for (std::size_t at = 0; at < names.size();) {
        const std::string name(names.c_str() + at);
        at += name.size() + 1;
        if (!name.starts_with("user.") || name == stagedMark)
            continue;
        const ssize_t length = ::fgetxattr(in, name.c_str(), value.data(), value.size());
        if (length >= 0)
            ::fsetxattr(out, name.c_str(), value.data(), static_cast<std::size_t>(length), 0);
    }
}

constexpr mode_t groupPermissions = S_IRWXG;

/// The extended access control list of an item in the kernel's binary format; empty without one.
std::string accessList(int item)
{
    std::string list(largestAttribute, '\0');
    const ssize_t length = ::fgetxattr(item, "system.posix_acl_access", list.data(), list.size());
    list.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return list;
}

// With an access control list, the group bits of the mode are the list's mask. The permissions of
// the group itself are in a separate entry.
mode_t groupPermissionsIn(const std::string& list, mode_t mask)
{
    constexpr std::uint16_t group = 0x04;
    constexpr std::size_t header = 4;
    struct Entry {
        std::uint16_t tag, permissions;
        std::uint32_t id;
    } entry {};
    for (std::size_t at = header; at + sizeof entry <= list.size(); at += sizeof entry) {
        std::memcpy(&entry, &list[at], sizeof entry);
        if (le16toh(entry.tag) == group)
            return mask & static_cast<mode_t>(le16toh(entry.permissions) << 3);
    }
    return mask;
}

// The process's umask is read from /proc: umask(2) returns it only by changing it, which would
// affect other threads.
mode_t currentUmask()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("Umask:"))
            return static_cast<mode_t>(std::strtoul(line.c_str() + 6, nullptr, 8));
    return S_IWGRP | S_IWOTH;
}

mode_t permissionsFor(int in, int out, const struct stat& source)
{
    mode_t mode = source.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
    mode = (mode & ~groupPermissions) | groupPermissionsIn(accessList(in), mode & groupPermissions);
    // If the folder has a default access control list, that list limits new items instead.
    if (accessList(out).empty())
        mode &= ~currentUmask();
    const auto made = statusOf(out);
    return made && S_ISDIR(made->st_mode) ? mode | (made->st_mode & S_ISGID) : mode;
}

} // namespace

void copyAttributes(int in, int out, const struct stat& source, const CopyOptions& options)
{
    copyUserAttributes(in, out);
    ::fchmod(out, permissionsFor(in, out, source));
    options.calls.futimens(out, modificationTime(source).data());
}

Times modificationTime(const struct stat& source)
{
    Times times { timespec {}, source.st_mtim };
    ::clock_gettime(CLOCK_REALTIME, times.data());
    return times;
}

} // namespace stemvault
