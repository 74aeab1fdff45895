#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace stemvault {

/// The absolute path that a file URI stands for, byte for byte. Absent for any other URI, for one
/// of another machine's file and for one that no file can have.
[[nodiscard]] std::optional<std::string> pathOfFileURI(std::string_view uri);

} // namespace stemvault
