#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace stemvault {

/// Which files other processes have open. Safe from several threads at once, and for background
/// threads only: it blocks.
class OpenFiles {
public:
    virtual ~OpenFiles() = default;

    /// The files that `process` has open, as `lsof -p PROCESS -Fn` prints them under a UTF-8
    /// locale: one line for each, with an 'n' before the path. The output counts whatever lsof's
    /// exit status, since lsof fails when a single descriptor was unreadable. While lsof hangs, the
    /// backend may answer in the same form from elsewhere. Paths under which `process` sees other
    /// files than we do are left out. A process that does not exist or may not be looked at has no
    /// line.
    ///
    /// Blocks for some seconds at most. Absent when lsof could not be started, or printed more than
    /// the backend accepts.
    [[nodiscard]] virtual std::optional<std::string> listing(std::int32_t process) = 0;
};

} // namespace stemvault
