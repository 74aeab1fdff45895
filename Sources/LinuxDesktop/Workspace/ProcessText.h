#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace stemvault {

// What the kernel's files about one process say. Nothing here reads a file.

struct ProcessStat {
    char state = 0;
    pid_t parent = 0;
    std::uint64_t startTime = 0; ///< Clock ticks since the system started.
    std::string command; ///< At most 15 bytes.
    /// Where its code begins and ends and its stack began, which another program in the same
    /// process changes; zeros where the kernel does not say.
    std::array<std::uint64_t, 3> image {};

    [[nodiscard]] bool operator==(const ProcessStat&) const = default;
};

[[nodiscard]] std::optional<ProcessStat> parseProcessStat(std::string_view text);

struct Program {
    std::string path; ///< As the process was told it: Unix or Windows, absolute or not.
    std::string name; ///< Its last component, without ".exe".
    bool isWindows = false;
    /// Steam's own "reaper" is the parent of everything that it starts.
    bool isSteamLauncher = false;

    [[nodiscard]] bool operator==(const Program&) const = default;
};

/// From the texts of `cmdline` and `comm`. Under Wine `exe` names the loader for every program, so
/// that only these two tell what runs.
[[nodiscard]] Program parseProgram(std::string_view cmdline, std::string_view comm);

/// From the text of `environ`: the folder that a Windows program takes for its computer. Wine has a
/// server for each. Absent when neither it nor the user's home is named.
[[nodiscard]] std::optional<std::string> parseWinePrefix(std::string_view environment);

/// The unit that the desktop has put an application in.
struct ApplicationUnit {
    std::string unit; ///< Its whole name, the same for all processes of the application.
    std::string identifier; ///< That of the desktop entry that started it.
    bool isAutostart = false;

    [[nodiscard]] bool operator==(const ApplicationUnit&) const = default;
};

/// From the text of `cgroup`; absent for a process outside any such unit.
[[nodiscard]] std::optional<ApplicationUnit> parseApplicationUnit(std::string_view cgroup);

} // namespace stemvault
