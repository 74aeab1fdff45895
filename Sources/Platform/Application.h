#pragma once

#include "Platform/Image.h"

#include <optional>
#include <string>
#include <vector>

namespace stemvault {

enum class ActivationPolicy {
    Regular = 0, ///< An ordinary application with a place in the desktop's task list.
    Accessory = 1, ///< No place in the task list and no menu bar, but it may show windows.
    Prohibited = 2, ///< Works in the background only.
};

/// Callbacks for the start, the reopening and the end of the program. Called on the main thread
/// while `run` runs.
class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;

    /// Called once, when the event loop is running and windows can be shown.
    virtual void applicationDidFinishLaunching() = 0;

    /// Called each time the user starts the program while it is already running, between the other
    /// two callbacks. The second process exits at once; this one should show a window.
    virtual void applicationShouldHandleReopen() = 0;

    /// Called once, before the event loop ends and before open alerts return; not called if
    /// launching never finished. Main-queue work that it adds may never run. Settings that it
    /// changes are still written.
    virtual void applicationWillTerminate() = 0;
};

/// What the user had selected when choosing a service.
struct Pasteboard {
    /// Absolute paths, in the file manager's order. Absent when the selection contains no file on
    /// this machine. The paths have not been checked: an item may not exist.
    std::optional<std::vector<std::string>> filenames;
};

/// Performs the services that other programs offer for their selection.
class ServicesProvider {
public:
    virtual ~ServicesProvider() = default;

    /// Performs the service called `message` and returns when it is done. It may run modal alerts,
    /// and while one is open it may be called again for another selection. If the service fails,
    /// `error` is set to a text for the user; otherwise it is unchanged. Returns false only when
    /// there is no service of that name. Called on the main thread.
    virtual bool perform(const std::string& message, const Pasteboard& pasteboard,
        const std::string& userData, std::string& error) = 0;
};

/// The running program and its event loop. Main thread only. Delegate and provider are borrowed:
/// each must outlive `run`.
class Application {
public:
    virtual ~Application() = default;

    /// Called before `run`. An application without a delegate runs, but does nothing.
    virtual void setDelegate(ApplicationDelegate* delegate) = 0;

    /// Called before `run`. A desktop without this distinction ignores it. Whatever the policy,
    /// closing the last window does not end the program.
    virtual void setActivationPolicy(ActivationPolicy policy) = 0;

    /// Sends service requests to `provider` from now on. Requests that arrived earlier have been
    /// queued and are performed first, from the event loop, never inside this call.
    virtual void setServicesProvider(ServicesProvider* provider) = 0;

    /// Sets the icon of the program's windows, and of alerts that set no icon. The image is read
    /// when the next window or alert opens.
    virtual void setApplicationIconImage(const Image& image) = 0;

    /// Asks the desktop to bring the program to the front and to give its modal window the keyboard
    /// focus: the window that is open, or the next one if it opens within a few seconds. A desktop
    /// may refuse; it then shows the window without the focus.
    virtual void activateIgnoringOtherApps() = 0;

    /// Runs the event loop until `terminate` is called, a signal asks the program to end, the
    /// session ends or the display is lost; in each case the delegate's applicationWillTerminate is
    /// called first. Does not return after the display is lost: the process then ends. Called once.
    virtual void run() = 0;

    /// Calls applicationWillTerminate, ends every open modal session with `ModalResponse::stopped`
    /// and lets `run` return. Later calls do nothing.
    virtual void terminate() = 0;
};

} // namespace stemvault
