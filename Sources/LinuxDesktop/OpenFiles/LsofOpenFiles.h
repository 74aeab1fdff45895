#pragma once

#include "LinuxDesktop/OpenFiles/ToolRunner.h"
#include "Platform/OpenFiles.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <set>
#include <string>

namespace stemvault::open_files {

/// Lists open files with lsof, or from /proc if lsof cannot be used.
///
/// A dead mount blocks lsof beyond any time limit, and often even after it was killed. While one is
/// stuck, and for a while after one took too long, no other is started, and the answer comes from
/// /proc. At most one lsof runs for a process at a time. Callers wait only briefly for another run
/// to end, because a waiting caller occupies a thread that others need.
///
/// If a process sees other files than this program under some paths, those paths are left out.
class LsofOpenFiles : public OpenFiles {
public:
    struct Limits {
        ToolRunner::Limits tool;
        /// How long to wait for another lsof run for the same process.
        std::chrono::milliseconds turn { 1'000 };
        /// How long lsof is not used after it took too long.
        std::chrono::milliseconds rest { 300'000 };
    };

    /// Copies the program's present environment for lsof.
    LsofOpenFiles();
    /// If `lsof` is absent, the system's lsof is looked up at each use.
    LsofOpenFiles(std::optional<std::string> lsof, Limits limits);

    /// The path of the system's lsof.
    [[nodiscard]] static std::string standardTool();

    [[nodiscard]] std::optional<std::string> listing(std::int32_t process) override;

private:
    [[nodiscard]] std::optional<std::string> ask(pid_t process);
    [[nodiscard]] bool beginRun(pid_t process);
    void endRun(pid_t process, bool isOverdue);
    [[nodiscard]] bool isOutOfUseLocked();

    const std::optional<std::string> tool;
    const Limits limits;
    ToolRunner runner;
    std::mutex mutex; ///< Guards all members below.
    std::condition_variable lookFinished;
    std::set<pid_t> runningFor;
    std::chrono::steady_clock::time_point restsUntil;
};

} // namespace stemvault::open_files
