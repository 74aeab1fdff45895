#pragma once

#include "LinuxDesktop/Workspace/KnownApplication.h"
#include "LinuxDesktop/Workspace/ProcessText.h"

#include <array>
#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>

namespace stemvault {

/// One run of one process: the number alone is given out again.
struct ProcessKey {
    std::uint64_t startTime = 0;
    pid_t process = 0;

    [[nodiscard]] bool operator==(const ProcessKey&) const = default;
    // NOLINTNEXTLINE(modernize-use-nullptr): it takes the default's zero for a pointer.
    [[nodiscard]] auto operator<=>(const ProcessKey&) const = default;
};

struct Process {
    ProcessKey key;
    pid_t parent = 0;
    std::string command;
    std::array<std::uint64_t, 3> image {}; ///< See ProcessStat.
    Program program;
    std::optional<ApplicationUnit> unit;
    std::optional<std::string> sandboxIdentifier; ///< What a sandbox calls its application.
    std::optional<KnownApplication> known;
    /// Of a DAW under Wine, and of Wine's server.
    std::optional<std::string> winePrefix;
    bool isHelper = false;
    bool isSettled = false; ///< No longer likely to turn into something else.
};

/// The user's own processes. What they are is read once and kept for as long as each runs the same
/// program; a sweep that finds nothing new reads one small file for each. One thread at a time.
class ProcessTable {
public:
    explicit ProcessTable(std::string root = "/proc");
    ProcessTable(std::string root, uid_t owner);

    /// Brings the table up to date.
    void sweep();

    [[nodiscard]] const std::map<pid_t, Process>& processes() const { return table; }

    /// Whether that run of the process is there and has not ended, as of the latest sweep.
    [[nodiscard]] bool contains(const ProcessKey& key) const;

private:
    struct ForeignProcess {
        std::uint64_t fileNumber;
        bool isSettled;
    };

    void visit(int folder, pid_t process, std::uint64_t fileNumber);
    void readProcess(int folder, pid_t process, const ProcessStat& stat);
    [[nodiscard]] bool isOwn(int folder, const std::string& name) const;
    [[nodiscard]] bool isSettled(std::uint64_t startTime) const;
    [[nodiscard]] bool isSandboxed(const Process& process) const;

    const std::string root;
    const uid_t owner;
    std::map<pid_t, Process> table;
    std::map<pid_t, ForeignProcess> foreign;
    std::map<pid_t, Process> previous;
    std::map<pid_t, ForeignProcess> previousForeign;
    std::uint64_t settledBefore = 0;
};

} // namespace stemvault
