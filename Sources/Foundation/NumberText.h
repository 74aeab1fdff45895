#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace stemvault {

/// The number that a text is, from its first character to its last; absent for any other text and
/// for a number out of range. No sign but "-" and no white space.
template <typename Number>
[[nodiscard]] std::optional<Number> numberOf(std::string_view text, int base = 10)
{
    Number value {};
    const char* const end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, value, base);
    return failure == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

} // namespace stemvault
