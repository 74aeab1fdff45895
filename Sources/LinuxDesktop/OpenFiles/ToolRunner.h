#pragma once

#include "LinuxDesktop/OpenFiles/ChildProcess.h"
#include "Platform/ProcessRunner.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace stemvault {

/// Runs the system's tools as children, under a UTF-8 locale and within a time limit. What a tool
/// leaves running in its process group ends with it.
///
/// A dead mount holds lsof beyond any limit, and often beyond being killed. For as long as one is
/// stuck, and for a while after one took too long, no other is started, and the question
/// `-p PID -Fn` is answered in lsof's form from /proc. One process is never looked at by two of
/// them at a time, nor does anyone wait long for the other one's look: whoever asks occupies a
/// thread that others need.
///
/// Of a process that sees other files than we do under some paths, those paths are left out.
class ToolRunner : public ProcessRunner {
public:
    struct Limits {
        std::chrono::milliseconds time { 10'000 };
        std::size_t output = std::size_t { 64 } << 20U;
        /// How long to wait for another look at the same process.
        std::chrono::milliseconds turn { 1'000 };
        /// How long to do without lsof after it took too long.
        std::chrono::milliseconds rest { 300'000 };
    };

    /// Takes the environment that its tools will have from this program's, as it is now.
    ToolRunner();
    explicit ToolRunner(Limits limits);

    [[nodiscard]] std::string pathForTool(const std::string& name) const override;
    [[nodiscard]] std::optional<std::string> run(
        const std::string& executable, const std::vector<std::string>& arguments) override;

private:
    struct SetAside {
        ChildProcess child;
        bool isLsof;
    };
    struct Outcome {
        std::optional<std::string> output;
        bool isOverdue = false;
    };

    [[nodiscard]] std::optional<std::string> openFiles(
        const std::string& executable, const std::vector<std::string>& arguments, pid_t process);
    [[nodiscard]] bool beginLook(pid_t process);
    void endLook(pid_t process, bool isOverdue);
    [[nodiscard]] Outcome runToEnd(
        const std::string& executable, const std::vector<std::string>& arguments);
    void setAside(ChildProcess child, bool isLsof);
    void collectGone();
    [[nodiscard]] bool isLsofOutOfUseLocked() const;

    const Limits limits;
    const std::vector<std::string> environment;
    std::mutex mutex; ///< Guards all below.
    std::condition_variable lookFinished;
    std::set<pid_t> processesLookedAt;
    std::vector<SetAside> stuck;
    std::chrono::steady_clock::time_point restsUntil;
};

} // namespace stemvault
