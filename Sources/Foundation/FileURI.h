#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace stemvault {

/// The URI of the file of this machine that has this absolute path, byte for byte: a name need not
/// be text, but what goes over a bus must.
[[nodiscard]] std::string fileURI(std::string_view path);

/// The absolute path that a file URI stands for, byte for byte. Absent for any other URI, for one
/// of another machine's file and for one that no file can have.
[[nodiscard]] std::optional<std::string> pathOfFileURI(std::string_view uri);

} // namespace stemvault
