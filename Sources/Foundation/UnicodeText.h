#pragma once

#include <string>
#include <string_view>

namespace stemvault {

[[nodiscard]] bool isValidUTF8(std::string_view bytes);

/// Full Unicode lower case, independent of the locale. Text that is not UTF-8 has only its ASCII
/// letters lowered, so that no byte of a file name is lost.
[[nodiscard]] std::string lowercased(std::string_view text);

} // namespace stemvault
