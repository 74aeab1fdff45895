#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace stemvault {

/// Which files other processes have open. May be called from several threads at once, but only from
/// background threads, because it blocks.
class OpenFiles {
public:
    virtual ~OpenFiles() = default;

    /// The files that `process` has open, as `lsof -p PROCESS -Fn` prints them under a UTF-8
    /// locale: one line for each, with an 'n' before the path. The output is used whatever lsof's
    /// exit status, because lsof fails when a single descriptor is unreadable. While lsof hangs,
    /// the backend may get the list from another source, in the same format. Paths that refer to
    /// different files for `process` than for us are left out. The listing has no lines for a
    /// process that does not exist or that we may not inspect.
    ///
    /// Blocks for some seconds at most. Absent when lsof could not be started, or printed more than
    /// the backend accepts.
    [[nodiscard]] virtual std::optional<std::string> listing(std::int32_t process) = 0;
};

} // namespace stemvault
