#include "Foundation/UnicodeText.h"

#include "Foundation/ASCIIText.h"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace stemvault {

namespace {

std::string lowercasedASCIIOnly(std::string_view text)
{
    std::string lowered(text);
    std::ranges::transform(lowered, lowered.begin(), asciiLowercased);
    return lowered;
}

bool isASCII(std::string_view text)
{
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Control characters, line separators, and characters that change the direction of text.
bool isInvisible(UChar32 character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0)
        || (character >= 0x2028 && character <= 0x202E)
        || (character >= 0x2066 && character <= 0x2069);
}

} // namespace

bool isValidUTF8(std::string_view bytes)
{
    const auto* text = reinterpret_cast<const std::uint8_t*>(bytes.data());
    const auto length = static_cast<std::int64_t>(bytes.size());
    for (std::int64_t position = 0; position < length;) {
        UChar32 character = 0;
        U8_NEXT(text, position, length, character);
        if (character < 0)
            return false;
    }
    return true;
}

std::string printable(std::string_view name)
{
    const auto* text = reinterpret_cast<const std::uint8_t*>(name.data());
    const auto length = static_cast<std::int64_t>(name.size());
    std::string shown;
    for (std::int64_t position = 0; position < length;) {
        const auto start = static_cast<std::size_t>(position);
        UChar32 character = 0;
        U8_NEXT(text, position, length, character);
        if (isInvisible(character))
            shown += "\uFFFD";
        else
            shown += name.substr(start, static_cast<std::size_t>(position) - start);
    }
    return shown;
}

std::string lowercased(std::string_view text)
{
    // Almost every name and extension is plain ASCII, which needs no call into ICU.
    if (isASCII(text) || !isValidUTF8(text))
        return lowercasedASCIIOnly(text);
    std::string lowered;
    icu::StringByteSink<std::string> sink(&lowered);
    UErrorCode status = U_ZERO_ERROR;
    icu::CaseMap::utf8ToLower("", 0,
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())), sink, nullptr,
        status);
    return U_SUCCESS(status) ? lowered : lowercasedASCIIOnly(text);
}

std::string trimmed(std::string_view text)
{
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int64_t>(text.size());
    std::int64_t first = length;
    std::int64_t last = length;
    for (std::int64_t position = 0; position < length;) {
        const std::int64_t start = position;
        UChar32 character = 0;
        U8_NEXT(bytes, position, length, character);
        if (u_isUWhiteSpace(character))
            continue;
        first = std::min(first, start);
        last = position;
    }
    return std::string(
        text.substr(static_cast<std::size_t>(first), static_cast<std::size_t>(last - first)));
}

} // namespace stemvault
