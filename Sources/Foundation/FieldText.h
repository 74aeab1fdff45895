#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

/// Parsing of fields, as found in the kernel's tables below /proc and in desktop entries.
namespace stemvault {

/// Removes the text up to and including the next separator; returns it without the separator.
inline std::string_view takeField(std::string_view& text, char separator)
{
    const auto end = std::min(text.find(separator), text.size());
    const auto field = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return field;
}

/// The text without leading and trailing blanks and line ends.
[[nodiscard]] inline std::string_view withoutOuterBlanks(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

/// Replaces each backslash with three octal digits by the byte it stands for. The kernel escapes
/// blanks, line ends and backslashes in its tables this way.
[[nodiscard]] inline std::string unescapedOctal(std::string_view text)
{
    const auto isByte = [](std::string_view digits) {
        return digits.size() == 3 && digits.find_first_not_of("01234567") == std::string_view::npos
            && digits[0] < '4';
    };
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::string_view digits = text.substr(at + 1, 3);
        if (text[at] != '\\' || !isByte(digits)) {
            result += text[at];
            continue;
        }
        const int byte = (digits[0] - '0') * 64 + (digits[1] - '0') * 8 + (digits[2] - '0');
        result += static_cast<char>(byte);
        at += 3;
    }
    return result;
}

} // namespace stemvault
