#include "Foundation/FileAttributes.h"

#include <cstddef>
#include <string>
#include <sys/xattr.h>

namespace stemvault {

namespace {

// Attributes are at most this large in the kernel's own interface, and so is the list of names.
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
        if (!name.starts_with("user."))
            continue;
        const ssize_t length = ::fgetxattr(in, name.c_str(), value.data(), value.size());
        if (length >= 0)
            ::fsetxattr(out, name.c_str(), value.data(), static_cast<std::size_t>(length), 0);
    }
}

} // namespace

void copyAttributes(int in, int out, const FileStatus& source)
{
    constexpr mode_t permissions = S_IRWXU | S_IRWXG | S_IRWXO;
    copyUserAttributes(in, out);
    ::fchmod(out, source.st_mode & permissions);
    const timespec times[] = { { 0, UTIME_OMIT }, source.st_mtim };
    ::futimens(out, times);
}

} // namespace stemvault
