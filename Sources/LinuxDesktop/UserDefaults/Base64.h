#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace stemvault {

[[nodiscard]] std::string base64Encoded(std::string_view bytes);

/// Absent when the text is not whole base64 with its padding.
[[nodiscard]] std::optional<std::string> base64Decoded(std::string_view text);

} // namespace stemvault
