#pragma once

#include "LinuxDesktop/OpenFiles/ToolRunner.h"
#include "Platform/OpenFiles.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <set>
#include <string>

namespace stemvault {

/// Asks lsof, and /proc in its place where lsof cannot be used.
///
/// A dead mount holds lsof beyond any limit, and often beyond being killed. For as long as one is
/// stuck, and for a while after one took too long, no other is started, and the answer is put
/// together from /proc. One process is never looked at by two of them at a time, nor does anyone
/// wait long for the other one's look: whoever asks occupies a thread that others need.
///
/// Of a process that sees other files than we do under some paths, those paths are left out.
class LsofOpenFiles : public OpenFiles {
public:
    struct Limits {
        ToolRunner::Limits tool;
        /// How long to wait for another look at the same process.
        std::chrono::milliseconds turn { 1'000 };
        /// How long to do without lsof after it took too long.
        std::chrono::milliseconds rest { 300'000 };
    };

    /// Takes the environment that lsof will have from this program's, as it is now.
    LsofOpenFiles();
    /// Absent, `lsof` is the system's own, wherever it is at the time.
    LsofOpenFiles(std::optional<std::string> lsof, Limits limits);

    /// Where this system keeps lsof.
    [[nodiscard]] static std::string standardTool();

    [[nodiscard]] std::optional<std::string> listing(std::int32_t process) override;

private:
    [[nodiscard]] std::optional<std::string> ask(pid_t process);
    [[nodiscard]] bool beginLook(pid_t process);
    void endLook(pid_t process, bool isOverdue);
    [[nodiscard]] bool isOutOfUseLocked();

    const std::optional<std::string> tool;
    const Limits limits;
    ToolRunner runner;
    std::mutex mutex; ///< Guards all below.
    std::condition_variable lookFinished;
    std::set<pid_t> processesLookedAt;
    std::chrono::steady_clock::time_point restsUntil;
};

} // namespace stemvault
