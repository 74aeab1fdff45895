#include "LinuxDesktop/FileEvents/DirectoryReader.h"

#include <cstdint>
#include <cstring>
#include <sys/syscall.h>
#include <unistd.h>

namespace stemvault::file_events {

namespace {

/// The header that the kernel writes in front of each name.
struct EntryHead {
    std::uint64_t inode;
    std::int64_t offset;
    std::uint16_t length;
    unsigned char type;
};

constexpr std::size_t nameOffset = offsetof(EntryHead, type) + 1;

bool isDotOrDotDot(const char* name)
{
    return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

} // namespace

std::optional<DirectoryEntry> DirectoryReader::next()
{
    while (!unread.empty() || fill()) {
        EntryHead head {};
        std::memcpy(&head, unread.data(), nameOffset);
        const char* const name = reinterpret_cast<const char*>(unread.data()) + nameOffset;
        unread = unread.subspan(head.length);
        if (!isDotOrDotDot(name))
            return DirectoryEntry { name, head.type };
    }
    return std::nullopt;
}

bool DirectoryReader::fill()
{
    const long size = ::syscall(SYS_getdents64, folder, buffer.data(), buffer.size());
    if (size <= 0)
        return false;
    unread = buffer.first(static_cast<std::size_t>(size));
    return true;
}

} // namespace stemvault::file_events
