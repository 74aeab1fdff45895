#pragma once

#include <string>

namespace stemvault {

/// Who has a file open for writing, or mapped so that it can be written.
enum class Writers {
    None,
    Some,
    Unknown, ///< The file system does not tell and no process of this user is seen to write it.
};

/// Looks at an ordinary file; a link is not followed, and anything else is Unknown. Reads no data,
/// changes nothing and waits for no writer, but as everything that asks a disk it may hang. From
/// any thread.
[[nodiscard]] Writers writersOf(const std::string& path);

/// As above, for a file that the caller has open in any way, which counts if it is for writing.
[[nodiscard]] Writers writersOf(int descriptor);

/// Whether a process of this user has the file behind a descriptor open for writing, or mapped so
/// that it can be written, as far as /proc shows. Takes some milliseconds. Asks no disk but the
/// file's own: a drive that does not answer and has nothing to do with the file changes nothing.
[[nodiscard]] bool isWrittenByOwnProcess(int descriptor);

} // namespace stemvault
