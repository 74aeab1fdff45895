#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

/// Texts of fields, as the kernel prints them below /proc and as desktop entries have them.
namespace stemvault {

/// Takes the text before the next separator off the front, and the separator with it.
inline std::string_view takeField(std::string_view& text, char separator)
{
    const auto end = std::min(text.find(separator), text.size());
    const auto field = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return field;
}

/// Without the blanks and line ends at its beginning and its end.
[[nodiscard]] inline std::string_view withoutOuterBlanks(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

/// With bytes in place of backslashes and three octal digits, as which the kernel writes blanks,
/// line ends and backslashes in its tables.
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
