#pragma once

#include "Support/TemporaryFolder.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace stemvault::workspace {

/// A folder with the layout of /proc.
class FakeProcesses {
public:
    struct Description {
        std::string commandLine; ///< A NUL follows each word.
        std::string command;
        int parent = 1;
        std::int64_t startTime = 100;
        std::string unit = "session-2.scope";
        char state = 'S';
        std::string environment = {}; ///< A NUL follows each entry.
        int image = 1; ///< Changes when the process executes another program.
        std::string sandboxInfo = {}; ///< What it sees as /.flatpak-info.
    };

    [[nodiscard]] const std::string& root() const { return folder.path(); }

    void start(int process, const Description& description) const
    {
        const std::string at = std::to_string(process) + "/";
        folder.write(at + "cmdline", description.commandLine);
        folder.write(at + "comm", description.command + "\n");
        folder.write(at + "cgroup", "1:name=systemd:/\n0::/user.slice/" + description.unit + "\n");
        folder.write(at + "environ", description.environment);
        folder.write(at + "root/.flatpak-info", description.sandboxInfo);
        folder.write(at + "stat",
            std::to_string(process) + " (" + description.command + ") " + description.state + " "
                + std::to_string(description.parent) + " 1 1 0 -1 4194560 9 9 9 9 1 1 1 1 20 0 1 0 "
                + std::to_string(description.startTime) + " 5 5 5 "
                + std::to_string(description.image) + " 2 3 0 0\n");
    }

    void end(int process) const
    {
        std::filesystem::remove_all(folder.path(std::to_string(process)));
    }

private:
    TemporaryFolder folder;
};

} // namespace stemvault::workspace
