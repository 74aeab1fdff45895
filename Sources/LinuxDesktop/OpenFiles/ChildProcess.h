#pragma once

#include "Foundation/FileDescriptor.h"

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace stemvault::open_files {

/// A tool that runs as a child in its own process group, with a pipe as standard output, /dev/null
/// as standard input and error, and no other descriptor of this program. May be used from any
/// thread, but only from one at a time.
class ChildProcess {
public:
    /// Absent if the tool could not be started. `environment` holds entries of the form "A=b".
    [[nodiscard]] static std::optional<ChildProcess> start(const std::string& executable,
        const std::vector<std::string>& arguments, const std::vector<std::string>& environment);

    /// The non-blocking read end of the output pipe.
    [[nodiscard]] int standardOutput() const { return output.get(); }
    /// A descriptor that becomes readable once the child has ended.
    [[nodiscard]] int ending() const { return processEnding.get(); }
    void closeStandardOutput() { output.reset(); }

    /// Kills the child and everything that it has left running in its process group.
    void killGroup() const;

    /// Whether the child has ended. Collects it then, so that it leaves no zombie. Never blocks.
    [[nodiscard]] bool hasEnded();

    /// Whether the whole process group is gone. A killed helper of the child can remain after it,
    /// for as long as the kernel blocks the helper on a dead mount.
    [[nodiscard]] bool isGone();

private:
    ChildProcess(pid_t child, FileDescriptor readingEnd);

    pid_t process;
    FileDescriptor output;
    FileDescriptor processEnding;
    bool isCollected = false;
};

} // namespace stemvault::open_files
