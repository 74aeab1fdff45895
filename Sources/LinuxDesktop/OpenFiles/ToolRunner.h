#pragma once

#include "LinuxDesktop/OpenFiles/ChildProcess.h"

#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stemvault {

/// Runs a system's tool as a child, under a UTF-8 locale and within a time limit. What it leaves
/// running in its process group ends with it. Safe from several threads.
class ToolRunner {
public:
    struct Limits {
        std::chrono::milliseconds time { 10'000 };
        std::size_t output = std::size_t { 64 } << 20U;
    };

    struct Outcome {
        /// The whole standard output, whatever the exit status; absent when the tool could not be
        /// started, was stopped, or printed more than it may.
        std::optional<std::string> output;
        bool isOverdue = false; ///< It did not end in time.
    };

    /// Takes the environment that its tools will have from this program's, as it is now.
    explicit ToolRunner(Limits limits);

    [[nodiscard]] Outcome run(
        const std::string& executable, const std::vector<std::string>& arguments);

    /// Whether a tool that was overdue is still there, though it was killed: the kernel holds it.
    [[nodiscard]] bool isOneStuck();

private:
    struct SetAside {
        ChildProcess child;
        bool isOverdue;
    };

    void setAside(ChildProcess child, bool isOverdue);

    const Limits limits;
    const std::vector<std::string> environment;
    std::mutex mutex; ///< Guards all below.
    std::vector<SetAside> killed; ///< Those that had not gone after a moment.
};

} // namespace stemvault
