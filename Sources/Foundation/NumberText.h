#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace stemvault {

/// Parses the whole text as a number. Absent if anything else is in the text or the number is out
/// of range. White space and a leading "+" are not accepted.
template <typename Number>
[[nodiscard]] std::optional<Number> parseNumber(std::string_view text, int base = 10)
{
    Number value {};
    const char* const end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, value, base);
    return failure == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

} // namespace stemvault
