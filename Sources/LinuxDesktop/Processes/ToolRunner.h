#pragma once

#include "LinuxDesktop/Processes/ChildProcess.h"
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
/// A dead mount holds lsof beyond any limit, and beyond being killed. For as long as one is stuck
/// no other is started, and the question `-p PID -Fn` is answered in lsof's form from /proc. One
/// process is never looked at by two of them at a time.
class ToolRunner : public ProcessRunner {
public:
    struct Limits {
        std::chrono::milliseconds time { 10'000 };
        std::size_t output = std::size_t { 64 } << 20U;
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

    [[nodiscard]] std::optional<std::string> runLsof(
        const std::string& executable, const std::vector<std::string>& arguments, pid_t process);
    [[nodiscard]] Outcome runToEnd(
        const std::string& executable, const std::vector<std::string>& arguments);
    void setAside(ChildProcess child, bool isLsof);
    void collectGone();
    [[nodiscard]] bool isLsofStuck();

    const Limits limits;
    const std::vector<std::string> environment;
    std::mutex mutex;
    std::condition_variable lookFinished;
    std::set<pid_t> processesLookedAt;
    std::vector<SetAside> stuck;
};

} // namespace stemvault
