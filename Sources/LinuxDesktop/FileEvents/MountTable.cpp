#include "LinuxDesktop/FileEvents/MountTable.h"

#include "Foundation/FieldText.h"

#include <array>
#include <cstddef>
#include <fcntl.h>
#include <unistd.h>

namespace stemvault::file_events {

namespace {

/// Field `number` of the line, counted from 0; empty if there are fewer.
std::string_view field(std::string_view line, int number)
{
    for (; number > 0; --number)
        takeField(line, ' ');
    return takeField(line, ' ');
}

} // namespace

std::vector<std::string> parseMountPoints(std::string_view mountInfo)
{
    std::vector<std::string> points;
    while (!mountInfo.empty())
        if (const auto point = field(takeField(mountInfo, '\n'), 4); !point.empty())
            points.push_back(unescapedOctal(point));
    return points;
}

MountTable::MountTable() : descriptor(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC)) { }

std::vector<std::string> MountTable::mountPoints() const
{
    std::string text;
    std::array<char, 8192> piece {};
    if (!descriptor || ::lseek(descriptor.get(), 0, SEEK_SET) != 0)
        return {};
    while (true) {
        const ssize_t size = ::read(descriptor.get(), piece.data(), piece.size());
        if (size <= 0)
            return parseMountPoints(text);
        text.append(piece.data(), static_cast<std::size_t>(size));
    }
}

} // namespace stemvault::file_events
