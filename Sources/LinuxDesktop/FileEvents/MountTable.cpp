#include "LinuxDesktop/FileEvents/MountTable.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <fcntl.h>
#include <unistd.h>

namespace stemvault {

namespace {

bool isOctal(std::string_view digits)
{
    return digits.size() == 3 && digits.find_first_not_of("01234567") == std::string_view::npos
        && digits[0] < '4';
}

/// Blanks, line ends and backslashes are written as a backslash and three octal digits.
std::string unescaped(std::string_view text)
{
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::string_view digits = text.substr(at + 1, 3);
        if (text[at] != '\\' || !isOctal(digits)) {
            result += text[at];
            continue;
        }
        const int byte = (digits[0] - '0') * 64 + (digits[1] - '0') * 8 + (digits[2] - '0');
        result += static_cast<char>(byte);
        at += 3;
    }
    return result;
}

/// A field of the line, counted from 0; empty if there are fewer.
std::string_view field(std::string_view line, int number)
{
    for (; number > 0; --number) {
        const std::size_t blank = line.find(' ');
        line = blank == std::string_view::npos ? std::string_view() : line.substr(blank + 1);
    }
    return line.substr(0, line.find(' '));
}

} // namespace

std::vector<std::string> parseMountPoints(std::string_view mountInfo)
{
    std::vector<std::string> points;
    while (!mountInfo.empty()) {
        const std::size_t end = std::min(mountInfo.find('\n'), mountInfo.size());
        if (const auto point = field(mountInfo.substr(0, end), 4); !point.empty())
            points.push_back(unescaped(point));
        mountInfo.remove_prefix(std::min(end + 1, mountInfo.size()));
    }
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

} // namespace stemvault
