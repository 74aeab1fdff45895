#include "Foundation/UUID.h"

#include <cstddef>
#include <cstdlib>
#include <sys/random.h>

namespace stemvault {

namespace {

constexpr std::string_view hexDigits = "0123456789ABCDEF";

bool isHyphenPlace(std::size_t position)
{
    return position == 8 || position == 13 || position == 18 || position == 23;
}

std::optional<unsigned> hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return static_cast<unsigned>(c - '0');
    if (c >= 'A' && c <= 'F')
        return static_cast<unsigned>(c - 'A') + 10;
    if (c >= 'a' && c <= 'f')
        return static_cast<unsigned>(c - 'a') + 10;
    return std::nullopt;
}

} // namespace

UUID::UUID() : bytes {}
{
    // getrandom fills sixteen bytes completely or fails. Without them, no UUID can be made.
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        std::abort();
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
}

std::optional<UUID> UUID::fromString(std::string_view text)
{
    if (text.size() != 36)
        return std::nullopt;
    std::array<std::uint8_t, 16> bytes {};
    std::size_t digits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isHyphenPlace(i)) {
            if (text[i] != '-')
                return std::nullopt;
            continue;
        }
        const auto value = hexValue(text[i]);
        if (!value)
            return std::nullopt;
        auto& byte = bytes[digits / 2];
        byte = static_cast<std::uint8_t>(static_cast<unsigned>(byte) << 4 | *value);
        ++digits;
    }
    return UUID(bytes);
}

std::string UUID::uuidString() const
{
    std::string text;
    text.reserve(36);
    for (const std::uint8_t byte : bytes) {
        if (isHyphenPlace(text.size()))
            text += '-';
        text += hexDigits[byte >> 4];
        text += hexDigits[byte & 0x0F];
    }
    return text;
}

} // namespace stemvault
