#pragma once

#include "Platform/Application.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace stemvault {

struct RunningApplication {
    std::optional<std::string> bundleIdentifier;
    ActivationPolicy activationPolicy = ActivationPolicy::Prohibited;
    std::optional<std::string> localizedName;
    std::int32_t processIdentifier = 0;
    /// The process that holds files open in its place, of several applications perhaps; 0 when
    /// there is none. Files that a Windows program has opened and not yet read are its server's.
    std::int32_t fileServerIdentifier = 0;

    [[nodiscard]] bool operator==(const RunningApplication&) const = default;
};

enum class WorkspaceNotification {
    DidLaunchApplication,
    DidTerminateApplication,
    DidActivateApplication,
};

/// The user's session and the applications in it. Main thread only.
class Workspace {
public:
    virtual ~Workspace() = default;

    /// In the order in which they were started. Never waits for anything slower than memory.
    [[nodiscard]] virtual std::vector<RunningApplication> runningApplications() const = 0;

    /// Calls `work` on the main thread for each such notice, whichever application it is about.
    /// `observer` is only a handle.
    virtual void addObserver(
        const void* observer, WorkspaceNotification notification, std::function<void()> work) = 0;

    /// Afterwards none of the observer's work runs.
    virtual void removeObserver(const void* observer) = 0;

    /// Hands the address of a web page to the user's browser, and says whether the desktop could.
    /// Any other URL is refused, but for that of the keyboard's shortcuts, which shows the
    /// desktop's settings for them. Main-queue work may go on before it returns.
    [[nodiscard]] virtual bool open(const std::string& url) = 0;
};

} // namespace stemvault
