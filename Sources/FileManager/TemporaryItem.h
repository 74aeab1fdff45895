#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace stemvault {

// Names for items that are not whole yet: ".syncthing.~Mix.wav.x7Kq0B.tmp". Sync clients pass over
// them: Syncthing by the beginning, Nextcloud and ownCloud by the ".~", Insync and OneDrive's
// client by the end. Dropbox does not, but it runs only on file systems where a staged item has no
// name until it is whole. None ends as an audio file does.

/// The attribute that a staged item carries until it has its final name, where the file system has
/// any.
inline constexpr const char* stagedMark = "user.stemvault.draft";

/// A fresh random name made from `name`, at most 255 bytes, never cut within a character.
[[nodiscard]] std::string temporaryName(std::string_view name);

/// A hidden name for an item that is moved aside and may have to come back. It ends in ".old" and
/// is never taken for a leftover, neither by us nor by a sync client.
[[nodiscard]] std::string asideName(std::string_view name);

[[nodiscard]] bool isTemporaryName(std::string_view name);

/// Marks an open file or folder as staged, in use for as long as it is open, whoever holds it.
void markStaged(int item);

/// Takes the mark off an item that has got its final name.
void unmarkStaged(int folder, const std::string& name);

/// Removes from a folder the staged items of this user that nobody has in use and that have not
/// been touched for `age`. What bears such a name and no mark stays, unless it is empty, or a file
/// on a file system without attributes.
void removeLeftovers(int folder, std::chrono::seconds age);

} // namespace stemvault
