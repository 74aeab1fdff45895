#pragma once

#include "Platform/Application.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace stemvault {

/// An application as it was when it was listed.
struct RunningApplication {
    /// Identifies the application on every machine, such as "com.cockos.reaper". Absent if it has
    /// no such identifier.
    std::optional<std::string> bundleIdentifier;
    /// Regular from its first window, or from its start if it is a known DAW, until it ends.
    ActivationPolicy activationPolicy = ActivationPolicy::Prohibited;
    std::optional<std::string> localizedName; ///< As the desktop shows it; absent if unknown.
    std::int32_t processIdentifier = 0;
    /// A process that holds files open for this one, and perhaps for others as well; 0 if there is
    /// none. A Windows program's files are open in its Wine server until the program reads them.
    std::int32_t fileServerIdentifier = 0;

    [[nodiscard]] bool operator==(const RunningApplication&) const = default;
};

enum class WorkspaceNotification {
    DidLaunchApplication, ///< A process became a regular application, or its name changed.
    DidTerminateApplication, ///< The process of a regular application ended.
    /// The user switched to another window, or the title of a DAW's window changed: in either case
    /// a DAW may have opened another session.
    DidActivateApplication,
};

/// The user's session and the applications in it. Main thread only.
class Workspace {
public:
    virtual ~Workspace() = default;

    /// The applications that are running now, oldest first. Examines the processes each time and
    /// does not rely on events, but reads no disk. Calls no observer inside this call; if something
    /// has changed since the last check, observers are called from the event loop soon after. Must
    /// be called once before observers are added, because launches and exits are detected by
    /// comparison with it.
    [[nodiscard]] virtual std::vector<RunningApplication> runningApplications() const = 0;

    /// Calls `work` on the main thread, from the event loop, after each event of this kind in any
    /// application; simultaneous events may be reported once. Observers are called in the order in
    /// which they were added. `observer` is an identity for `removeObserver` and is never
    /// dereferenced.
    virtual void addObserver(
        const void* observer, WorkspaceNotification notification, std::function<void()> work) = 0;

    /// Removes everything that was added for `observer`. None of its work runs afterwards, even
    /// when another observer makes this call during an event. Does nothing for an unknown observer.
    virtual void removeObserver(const void* observer) = 0;

    /// Opens an http or https URL in the user's browser. A URL that begins with
    /// "x-apple.systempreferences:com.apple.preference.keyboard" shows the desktop's settings for
    /// keyboard shortcuts instead. Every other URL is refused and reaches no other program. True
    /// when the desktop accepted it, which does not mean that a page was loaded. May run a nested
    /// event loop, in which main-queue work runs.
    [[nodiscard]] virtual bool open(const std::string& url) = 0;
};

} // namespace stemvault
