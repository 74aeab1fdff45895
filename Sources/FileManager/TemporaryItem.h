#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace stemvault {

// Names for items that are not complete yet: ".syncthing.~Mix.wav.x7Kq0B.tmp". Sync clients ignore
// them: Syncthing because of the beginning, Nextcloud and ownCloud because of the ".~", Insync and
// OneDrive's client because of the end. Dropbox does not, but it runs only on file systems where a
// staged item has no name until it is complete. No such name ends like an audio file's.

/// The attribute that a staged item has until it gets its final name, if the file system supports
/// attributes.
inline constexpr const char* stagedMark = "user.stemvault.draft";

/// A fresh random name made from `name`, at most 255 bytes, never cut within a character.
[[nodiscard]] std::string temporaryName(std::string_view name);

/// A hidden name for an item that is moved aside and may have to be moved back. It ends in ".old",
/// so neither we nor a sync client ever treat it as a leftover.
[[nodiscard]] std::string asideName(std::string_view name);

[[nodiscard]] bool isTemporaryName(std::string_view name);

/// Marks an open file or folder as staged, and locks it as in use until every copy of the
/// descriptor is closed.
void markStaged(int item);

/// Removes the mark from an item that has its final name.
void unmarkStaged(int folder, const std::string& name);

/// Removes from a folder the staged items of this user that are not in use and have not changed for
/// `age`. An item with such a name and no mark stays, unless it is empty, or a file on a file
/// system without attributes.
void removeLeftovers(int folder, std::chrono::seconds age);

} // namespace stemvault
