#pragma once

#include <string>

namespace stemvault {

/// Who has a file open for writing, or mapped so that it can be written.
enum class Writers {
    None,
    Some,
    Unknown, ///< The file system does not tell, and no process of this user is seen writing it.
};

/// Checks a regular file; a link is not followed, and anything else is Unknown. Reads no data,
/// changes nothing and waits for no writer, but may hang like every access to a disk. May be called
/// from any thread.
[[nodiscard]] Writers writersOf(const std::string& path);

/// As above, for a file that the caller has open; if that is for writing, the caller is a writer.
[[nodiscard]] Writers writersOf(int descriptor);

/// Whether a process of this user has the file behind a descriptor open for writing, or mapped so
/// that it can be written, as far as /proc shows. Takes some milliseconds. Accesses no disk but the
/// file's own, so that another drive that does not respond cannot block it.
[[nodiscard]] bool isWrittenByOwnProcess(int descriptor);

} // namespace stemvault
