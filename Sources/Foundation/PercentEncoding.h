#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace stemvault {

/// Encodes every byte except letters, digits, "-._~" and "/" as "%" and two hexadecimal digits. The
/// result decodes to the same bytes in every part of a URL, also when read as form data.
[[nodiscard]] std::string percentEncoded(std::string_view bytes);

/// The decoded bytes; absent if a "%" is not followed by two hexadecimal digits.
[[nodiscard]] std::optional<std::string> percentDecoded(std::string_view text);

} // namespace stemvault
