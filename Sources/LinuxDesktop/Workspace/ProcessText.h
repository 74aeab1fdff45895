#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace stemvault::workspace {

// Parsers for the text of the kernel's files about a process. Nothing here reads a file.

struct ProcessStat {
    char state = 0;
    pid_t parent = 0;
    std::uint64_t startTime = 0; ///< Clock ticks since the system started.
    std::string command; ///< At most 15 bytes.
    /// The addresses at which its code begins and ends and its stack began. They change when the
    /// process executes another program. Zeros if the kernel does not report them.
    std::array<std::uint64_t, 3> image {};

    [[nodiscard]] bool operator==(const ProcessStat&) const = default;
};

[[nodiscard]] std::optional<ProcessStat> parseProcessStat(std::string_view text);

struct Program {
    std::string path; ///< As passed to the process: Unix or Windows, absolute or not.
    std::string name; ///< Its last component, without ".exe".
    bool isWindows = false;
    /// Whether this is Steam's own "reaper", the parent of everything that Steam starts.
    bool isSteamLauncher = false;

    [[nodiscard]] bool operator==(const Program&) const = default;
};

/// From the texts of `cmdline` and `comm`. Under Wine, `exe` names the loader for every program, so
/// only these two identify the program.
[[nodiscard]] Program parseProgram(std::string_view cmdline, std::string_view comm);

/// The Wine prefix, from the text of `environ`: the folder that a Windows program sees as its
/// computer. Wine runs one server per prefix. Absent if neither it nor the user's home is set.
[[nodiscard]] std::optional<std::string> parseWinePrefix(std::string_view environment);

/// The unit that the desktop has put an application in.
struct ApplicationUnit {
    std::string unit; ///< The unit's full name, the same for all processes of the application.
    std::string identifier; ///< The identifier of the desktop entry that started the application.
    bool isAutostart = false;

    [[nodiscard]] bool operator==(const ApplicationUnit&) const = default;
};

/// From the text of `cgroup`; absent for a process outside any such unit.
[[nodiscard]] std::optional<ApplicationUnit> parseApplicationUnit(std::string_view cgroup);

} // namespace stemvault::workspace
