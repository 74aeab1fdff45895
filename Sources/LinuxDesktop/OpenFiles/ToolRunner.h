#pragma once

#include "LinuxDesktop/OpenFiles/ChildProcess.h"

#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stemvault::open_files {

/// Runs a tool of the system as a child, in a UTF-8 locale and within a time limit. Processes that
/// it leaves in its process group are killed when it ends. May be used from several threads.
class ToolRunner {
public:
    struct Limits {
        std::chrono::milliseconds time { 10'000 };
        std::size_t output = std::size_t { 64 } << 20U;
    };

    struct Outcome {
        /// The whole standard output, whatever the exit status. Absent if the tool could not be
        /// started, was stopped, or printed more than the limit.
        std::optional<std::string> output;
        bool isOverdue = false; ///< The tool did not end in time.
    };

    /// Copies the program's present environment for the tools.
    explicit ToolRunner(Limits limits);

    [[nodiscard]] Outcome run(
        const std::string& executable, const std::vector<std::string>& arguments);

    /// Whether an overdue tool still exists although it was killed, because the kernel blocks it.
    [[nodiscard]] bool hasStuckTool();

private:
    struct SetAside {
        ChildProcess child;
        bool isOverdue;
    };

    void setAside(ChildProcess child, bool isOverdue);

    const Limits limits;
    const std::vector<std::string> environment;
    std::mutex mutex; ///< Guards all members below.
    std::vector<SetAside> killed; ///< Killed tools that did not end within the grace time.
};

} // namespace stemvault::open_files
