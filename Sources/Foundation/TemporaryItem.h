#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace stemvault {

// Names for items that are not whole yet: ".~Mix.wav.x7Kq0B.tmp". Programs that mirror folders pass
// over such names, and none ends as an audio file does.

/// A fresh random name made from `name`, at most 255 bytes, never cut within a character.
[[nodiscard]] std::string temporaryName(std::string_view name);

/// Such a name for an item that is moved aside and may have to come back. It ends in ".old" and is
/// never taken for a leftover.
[[nodiscard]] std::string asideName(std::string_view name);

[[nodiscard]] bool isTemporaryName(std::string_view name);

/// Marks an open file or folder as in use for as long as it is open, whoever holds it.
void markInUse(int item);

/// Removes from a folder the temporary items that nobody has in use and that have not been touched
/// for `age`.
void removeLeftovers(int folder, std::chrono::seconds age);

} // namespace stemvault
