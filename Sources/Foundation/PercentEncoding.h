#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace stemvault {

/// Each byte that is neither a letter, a digit, one of "-._~" nor a slash as "%" and two digits: it
/// decodes to the same bytes wherever in a URL it stands, in a form's way of reading too.
[[nodiscard]] std::string percentEncoded(std::string_view bytes);

/// The bytes that a text stands for; absent where a "%" is not followed by two hexadecimal digits.
[[nodiscard]] std::optional<std::string> percentDecoded(std::string_view text);

} // namespace stemvault
