#pragma once

#include <optional>
#include <string>

namespace stemvault {

/// Why a copy could not be made.
struct CopyFault {
    enum class Kind {
        Reading, ///< The system refused something at the source.
        Writing, ///< The system refused something at the destination.
        Name, ///< The destination's disk holds no item of this name.
        Changing, ///< The source changed each time while it was being copied.
        Removed, ///< Another program removed the unfinished copy each time.
        NotAFile, ///< The source is a device, a pipe or a socket.
        FoundLink, ///< The source is a link that the user did not name himself.
        OtherFolder, ///< The path leads to another folder than when the source was found.
        SameItem, ///< Source and destination are one item.
        IntoItself, ///< The destination lies inside the source.
        OverItsFolder, ///< The source lies inside what it would replace.
    };

    Kind kind;
    int error = 0; ///< As errno, where the system refused.
};

/// Absent when all went well.
using CopyOutcome = std::optional<CopyFault>;

/// The fault of the call that has just failed.
[[nodiscard]] CopyFault readingFault();
[[nodiscard]] CopyFault writingFault();

/// Whether the system refuses a name with this errno in a folder that exists.
[[nodiscard]] bool isAboutName(int error);

/// That a folder's disk holds no such name, as the end of a sentence.
[[nodiscard]] std::string namingReason(const std::string& folder);

/// Why the system refused to make an item in a folder, as the end of a sentence. `error` is as
/// errno; `folder` names the folder as it is to be shown.
[[nodiscard]] std::string writingReason(int error, const std::string& folder);

/// The fault as a sentence for the user. Bytes of a name that are not text are shown as U+FFFD.
[[nodiscard]] std::string describe(
    const CopyFault& fault, const std::string& from, const std::string& to);

} // namespace stemvault
