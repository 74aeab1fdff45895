#pragma once

#include <string_view>

namespace stemvault {

/// Whether arrays and objects are nested so deeply that parsing the text would take several times
/// its size in memory and walking the result could overflow the stack. Our own files never are.
[[nodiscard]] bool isNestedTooDeeply(std::string_view json);

} // namespace stemvault
