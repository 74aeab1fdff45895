#include "Foundation/PercentEncoding.h"

#include <charconv>
#include <cstddef>

namespace stemvault {

namespace {

constexpr std::string_view digits = "0123456789ABCDEF";
constexpr std::string_view unreserved = "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                        "abcdefghijklmnopqrstuvwxyz"
                                        "0123456789-._~/";

/// The value of two hexadecimal digits; absent for any other text.
std::optional<char> byteOf(std::string_view pair)
{
    unsigned char byte = 0;
    const char* end = pair.data() + pair.size();
    const auto [last, error] = std::from_chars(pair.data(), end, byte, 16);
    if (pair.size() != 2 || error != std::errc() || last != end)
        return std::nullopt;
    return static_cast<char>(byte);
}

} // namespace

std::string percentEncoded(std::string_view bytes)
{
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (unreserved.find(c) != std::string_view::npos)
            text += c;
        else
            text.append({ '%', digits[byte / 16], digits[byte % 16] });
    }
    return text;
}

std::optional<std::string> percentDecoded(std::string_view text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            bytes += text[i];
            continue;
        }
        const auto byte = byteOf(text.substr(i + 1, 2));
        if (!byte)
            return std::nullopt;
        bytes += *byte;
        i += 2;
    }
    return bytes;
}

} // namespace stemvault
