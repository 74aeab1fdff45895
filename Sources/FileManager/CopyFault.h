#pragma once

#include <optional>
#include <string>

namespace stemvault {

/// Why a copy could not be made.
struct CopyFault {
    enum class Kind {
        Reading, ///< The system refused something at the source.
        Writing, ///< The system refused something at the destination.
        Name, ///< The destination's disk does not allow this name.
        Changing, ///< The source changed each time while it was being copied.
        Removed, ///< Another program removed the unfinished copy each time.
        NotAFile, ///< The source is a device, a pipe or a socket.
        FoundLink, ///< The source is a link that the user did not choose himself.
        FolderReplaced, ///< The path leads to a different folder than when the source was found.
        SameItem, ///< Source and destination are the same item.
        IntoItself, ///< The destination lies inside the source.
        InsideReplacedFolder, ///< The source lies inside the folder that it would replace.
    };

    Kind kind;
    int error = 0; ///< The errno, if the system refused.
};

/// Absent on success.
using CopyOutcome = std::optional<CopyFault>;

/// The fault of the system call that has just failed, with its errno.
[[nodiscard]] CopyFault readingFault();
[[nodiscard]] CopyFault writingFault();

/// Whether this errno means that the system refuses the name, given that the folder exists.
[[nodiscard]] bool isAboutName(int error);

/// States that a folder's disk does not allow the name, as the end of a sentence.
[[nodiscard]] std::string namingReason(const std::string& folder);

/// Why the system refused to create an item in a folder, as the end of a sentence. `error` is an
/// errno; `folder` is the name of the folder as the user will see it.
[[nodiscard]] std::string writingReason(int error, const std::string& folder);

/// The fault as a sentence for the user. Bytes of a name that are not UTF-8 are shown as U+FFFD.
[[nodiscard]] std::string describe(
    const CopyFault& fault, const std::string& from, const std::string& to);

} // namespace stemvault
