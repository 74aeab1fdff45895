#include "LinuxDesktop/UserDefaults/Base64.h"

#include <cstddef>
#include <cstdint>

namespace stemvault {

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::uint32_t byteAt(std::string_view bytes, std::size_t place)
{
    return place < bytes.size() ? static_cast<unsigned char>(bytes[place]) : 0;
}

} // namespace

std::string base64Encoded(std::string_view bytes)
{
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::uint32_t group =
            byteAt(bytes, at) << 16 | byteAt(bytes, at + 1) << 8 | byteAt(bytes, at + 2);
        for (const int shift : { 18, 12, 6, 0 })
            text += alphabet[group >> shift & 63];
        const std::size_t missing = at + 3 > bytes.size() ? at + 3 - bytes.size() : 0;
        text.replace(text.size() - missing, missing, missing, '=');
    }
    return text;
}

std::optional<std::string> base64Decoded(std::string_view text)
{
    if (text.size() % 4 != 0)
        return std::nullopt;
    for (int padding = 0; padding < 2 && text.ends_with('='); ++padding)
        text.remove_suffix(1);
    std::string bytes;
    std::uint32_t group = 0;
    int bits = 0;
    for (const char c : text) {
        const auto value = alphabet.find(c);
        if (value == std::string_view::npos)
            return std::nullopt;
        group = group << 6 | static_cast<std::uint32_t>(value);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>(group >> bits & 0xFF);
        }
    }
    return bytes;
}

} // namespace stemvault
