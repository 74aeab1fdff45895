#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace stemvault {

/// Which files a process has open.
class OpenFiles {
public:
    virtual ~OpenFiles() = default;

    /// What `lsof -p PROCESS -Fn` prints: a line for each open file, with an 'n' before its path,
    /// in the form of lsof under a UTF-8 locale. It is the whole output, whatever the exit status,
    /// and what lsof says on standard error is thrown away. A system may answer from elsewhere in
    /// the same form while lsof hangs, and leaves out paths that lead the process to another file
    /// than they lead us. No line for a process that does not exist or cannot be looked at.
    ///
    /// Absent when lsof could not be started, or printed more than the system takes. Blocks for as
    /// long as the system allows lsof, several seconds: for background threads only; safe from
    /// several at once.
    [[nodiscard]] virtual std::optional<std::string> listing(std::int32_t process) = 0;
};

} // namespace stemvault
