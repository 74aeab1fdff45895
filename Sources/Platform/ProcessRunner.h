#pragma once

#include <optional>
#include <string>
#include <vector>

namespace stemvault {

/// Runs the system's tools.
class ProcessRunner {
public:
    virtual ~ProcessRunner() = default;

    /// Where this system keeps a tool, such as "lsof"; an absolute path, which may not exist.
    [[nodiscard]] virtual std::string pathForTool(const std::string& name) const = 0;

    /// Runs a tool to its end and gives its whole standard output, whatever its exit status; its
    /// standard error is thrown away. Absent when it could not be started or did not end in the
    /// time that the system allows it. Blocks: for background threads only; safe from several.
    [[nodiscard]] virtual std::optional<std::string> run(
        const std::string& executable, const std::vector<std::string>& arguments) = 0;
};

} // namespace stemvault
