#pragma once

#include "LinuxDesktop/Workspace/ProcessText.h"

#include <optional>
#include <string>
#include <string_view>

namespace stemvault {

/// A DAW under the identifier by which the program knows it on every system.
struct KnownApplication {
    std::string identifier;
    std::string name; ///< As its users call it.

    [[nodiscard]] bool operator==(const KnownApplication&) const = default;
};

/// By the program's name, else by the name of `executable`, the file that the process runs.
[[nodiscard]] std::optional<KnownApplication> knownApplication(
    const Program& program, const std::string& executable);

/// By the desktop entry that started it, without ".desktop". The name is empty where the DAW's
/// editions differ.
[[nodiscard]] std::optional<KnownApplication> knownApplicationOfEntry(std::string_view entry);

/// Whether it is a part of Wine, of Steam, of a sandbox or of a plug-in host, which works for
/// applications and is none itself, even when it owns a window.
[[nodiscard]] bool isHelper(const Program& program);

/// Whether it is the server of Wine's programs, which opens files for them.
[[nodiscard]] bool isWineServer(const Program& program);

/// Whether it only starts the application that it is a parent of: a sandbox's own processes.
[[nodiscard]] bool isSandboxLauncher(const Program& program);

} // namespace stemvault
