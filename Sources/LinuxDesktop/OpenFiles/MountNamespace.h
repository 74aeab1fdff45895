#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace stemvault::open_files {

// A process in a sandbox can see other files than this program under the same path; for example, it
// often has its own /tmp. The kernel reports its open files by the paths that the process sees.

/// The mounts that a process sees. Pure.
class MountView {
public:
    /// From the text of /proc/PID/mountinfo.
    explicit MountView(std::string_view mountInfo);

    /// The file system to which a path leads, followed by the path in it. Empty if nothing is
    /// mounted at "/". Names have the form in which lsof prints them.
    [[nodiscard]] std::string resolvedLocation(std::string_view path) const;

private:
    struct Mount {
        std::string identifier;
        std::string parent;
        std::string device;
        std::string root; ///< The folder of the file system that is mounted; empty for its root.
        std::string point; ///< The mount point; empty for "/".
    };

    [[nodiscard]] const Mount* rootMount() const;
    [[nodiscard]] const Mount* firstMountBelow(const Mount& mount, std::string_view path) const;

    std::vector<Mount> mounts;
};

/// The output of lsof for a process, without the names that lead to other files in `there` than in
/// `here`.
[[nodiscard]] std::string namesThatLeadToTheSame(
    std::string_view lsofOutput, const MountView& there, const MountView& here);

/// The same for a running process: the whole text, unless the process has its own mount namespace.
/// Reads only from /proc, never from a disk.
[[nodiscard]] std::string namesSeenFromHere(std::string lsofOutput, pid_t process);

} // namespace stemvault::open_files
