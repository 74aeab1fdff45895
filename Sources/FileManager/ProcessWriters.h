#pragma once

namespace stemvault {

/// Whether a process of this user has the file behind a descriptor open for writing, or mapped so
/// that it can be written, as far as /proc shows. Takes some milliseconds. Asks no disk but the
/// file's own: a drive that does not answer and has nothing to do with the file changes nothing.
[[nodiscard]] bool isWrittenByOwnProcess(int descriptor);

} // namespace stemvault
