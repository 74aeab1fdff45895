#pragma once

#include "LinuxDesktop/Workspace/ProcessText.h"

#include <optional>
#include <string>
#include <string_view>

namespace stemvault::workspace {

/// A DAW, with the identifier that this program uses for it on every system.
struct KnownApplication {
    std::string identifier;
    std::string name; ///< As its users call it.

    [[nodiscard]] bool operator==(const KnownApplication&) const = default;
};

/// By the program's name, or else by the name of `executable`, the file that the process runs.
[[nodiscard]] std::optional<KnownApplication> knownApplication(
    const Program& program, const std::string& executable);

/// By the desktop entry that started it, without ".desktop". The name of the result is empty if the
/// DAW's editions have different names.
[[nodiscard]] std::optional<KnownApplication> knownApplicationOfEntry(std::string_view entry);

/// Whether the program is a part of Wine, of Steam, of a sandbox or of a plug-in host, which serves
/// applications and is not one itself, even if it owns a window.
[[nodiscard]] bool isHelper(const Program& program);

/// Whether the program is Wine's server, which opens files for the programs under Wine.
[[nodiscard]] bool isWineServer(const Program& program);

/// Whether the program belongs to a sandbox and only starts the application, as its parent.
[[nodiscard]] bool isSandboxLauncher(const Program& program);

} // namespace stemvault::workspace
