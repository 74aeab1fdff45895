#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace stemvault {

// A process in a sandbox can see other files than we do under the same path: its /tmp, for one, is
// often its own. The kernel names its open files by the paths that it sees.

/// What is mounted where, as some process sees it. Pure.
class MountView {
public:
    /// From the text of /proc/PID/mountinfo.
    explicit MountView(std::string_view mountInfo);

    /// Where a path leads: a file system and the path in it. Empty when nothing is mounted there.
    /// Names are in the form in which lsof prints them.
    [[nodiscard]] std::string placeOf(std::string_view path) const;

private:
    struct Mount {
        std::string identifier;
        std::string parent;
        std::string device;
        std::string root; ///< What of the file system is mounted; empty for all of it.
        std::string point; ///< Where; empty for the root.
    };

    [[nodiscard]] const Mount* rootMount() const;
    [[nodiscard]] const Mount* firstMountBelow(const Mount& mount, std::string_view path) const;

    std::vector<Mount> mounts;
};

/// What lsof printed about a process, without the names that lead to other files there than here.
[[nodiscard]] std::string namesThatLeadToTheSame(
    std::string_view lsofOutput, const MountView& there, const MountView& here);

/// The same for a running process: the whole text, unless it has a mount namespace of its own.
/// Asks the kernel only, no disk.
[[nodiscard]] std::string namesSeenFromHere(std::string lsofOutput, pid_t process);

} // namespace stemvault
