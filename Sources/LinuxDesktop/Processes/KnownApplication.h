#pragma once

#include "LinuxDesktop/Processes/ProcessText.h"

#include <optional>
#include <string>

namespace stemvault {

/// A DAW under the identifier by which the program knows it on every system.
struct KnownApplication {
    std::string identifier;
    std::string name; ///< As its users call it.

    [[nodiscard]] bool operator==(const KnownApplication&) const = default;
};

/// `executable` is the file that the process runs, for what the program's own path leaves open.
[[nodiscard]] std::optional<KnownApplication> knownApplication(
    const Program& program, const std::string& executable);

/// Whether it is a part of Wine, of a sandbox or of a plug-in host, which works for applications
/// and is none itself, even when it owns a window.
[[nodiscard]] bool isHelper(const Program& program);

/// Whether it only starts the application that it is a parent of: a sandbox's own processes.
[[nodiscard]] bool isSandboxLauncher(const Program& program);

} // namespace stemvault
