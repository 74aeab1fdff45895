#pragma once

#include <string>
#include <string_view>

namespace stemvault {

[[nodiscard]] bool isValidUTF8(std::string_view bytes);

/// A name as text to display: bytes that are not UTF-8, control characters, line separators and
/// characters that change the direction of text become U+FFFD.
[[nodiscard]] std::string printable(std::string_view name);

/// Full Unicode lower case, independent of the locale. Text that is not UTF-8 has only its ASCII
/// letters lowered, so that no byte of a file name is lost.
[[nodiscard]] std::string lowercased(std::string_view text);

/// The text without the white space and line breaks at its ends.
[[nodiscard]] std::string trimmed(std::string_view text);

} // namespace stemvault
