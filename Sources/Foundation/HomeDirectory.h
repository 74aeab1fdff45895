#pragma once

#include <string>

namespace stemvault {

/// The user's home folder as the system reports it, without a trailing slash; empty when it does
/// not say.
[[nodiscard]] std::string homeDirectory();

} // namespace stemvault
