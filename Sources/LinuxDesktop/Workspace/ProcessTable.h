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

namespace stemvault::workspace {

/// Identifies one run of a process; the number alone is not enough, because numbers are reused.
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
    std::optional<std::string> sandboxIdentifier; ///< The sandbox's name for its application.
    std::optional<KnownApplication> known;
    /// Only for a DAW under Wine and for Wine's server.
    std::optional<std::string> winePrefix;
    bool isHelper = false;
    bool isSettled = false; ///< This data is unlikely to change any more.
};

/// The user's own processes. The data of each is read once and kept while it runs the same program,
/// so a sweep that finds nothing new reads only one small file per process. May be used from one
/// thread at a time.
class ProcessTable {
public:
    explicit ProcessTable(std::string root = "/proc");
    ProcessTable(std::string root, uid_t owner);

    /// Updates the table.
    void sweep();

    [[nodiscard]] const std::map<pid_t, Process>& processes() const { return table; }

    /// Whether that run of the process existed and had not ended at the latest sweep.
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

} // namespace stemvault::workspace
