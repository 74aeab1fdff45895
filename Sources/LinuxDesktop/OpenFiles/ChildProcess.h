#pragma once

#include "Foundation/FileDescriptor.h"

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace stemvault {

/// A tool running as a child in a process group of its own, its standard output in a pipe, its
/// standard input and error nowhere, and no other descriptor of ours. Any thread, one at a time.
class ChildProcess {
public:
    /// Absent when the tool could not be started. `environment` holds entries of the form "A=b".
    [[nodiscard]] static std::optional<ChildProcess> start(const std::string& executable,
        const std::vector<std::string>& arguments, const std::vector<std::string>& environment);

    /// The reading end, which never blocks.
    [[nodiscard]] int standardOutput() const { return output.get(); }
    /// Readable once the child has ended.
    [[nodiscard]] int ending() const { return processEnding.get(); }
    void closeStandardOutput() { output.reset(); }

    /// Ends the child and whatever it has left running in its group.
    void killGroup() const;

    /// Whether the child has ended; collects it, so that it leaves no zombie. Never waits.
    [[nodiscard]] bool hasEnded();

    /// Whether nothing of its group is left. A killed helper of the child can outlast it for as
    /// long as the kernel keeps it waiting for a dead mount.
    [[nodiscard]] bool isGone();

private:
    ChildProcess(pid_t child, FileDescriptor readingEnd);

    pid_t process;
    FileDescriptor output;
    FileDescriptor processEnding;
    bool isCollected = false;
};

} // namespace stemvault
