#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace stemvault {

/// The file URI of an absolute path on this machine, byte for byte: a file name need not be valid
/// UTF-8, but a string sent over D-Bus must be.
[[nodiscard]] std::string fileURI(std::string_view path);

/// The absolute path in a file URI, byte for byte. Absent for any other URI, for one with another
/// machine's name and for one whose path no file can have.
[[nodiscard]] std::optional<std::string> pathOfFileURI(std::string_view uri);

} // namespace stemvault
