#pragma once

#include <string_view>

namespace stemvault {

/// Whether lists and objects stand within one another so deeply that reading the text would take a
/// multiple of it in memory, and walking what was read could use up the stack. None of ours does.
[[nodiscard]] bool isNestedTooDeeply(std::string_view json);

} // namespace stemvault
