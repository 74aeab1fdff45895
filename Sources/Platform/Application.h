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

/// Both are called once, on the main thread.
class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;
    virtual void applicationDidFinishLaunching() = 0;
    virtual void applicationWillTerminate() = 0;
};

/// What the user had selected when choosing a service.
struct Pasteboard {
    /// Absolute paths, in the order in which the file manager gave them; absent when the selection
    /// was not one of files.
    std::optional<std::vector<std::string>> filenames;
};

/// Answers the services that other programs offer on their selection.
class ServicesProvider {
public:
    virtual ~ServicesProvider() = default;

    /// Performs the service of this message name and returns when it is done, however long the user
    /// takes over its questions; it may be called again meanwhile. On failure `error` becomes a
    /// text for the user, otherwise it is left untouched. False when there is no such service. Main
    /// thread only.
    virtual bool perform(const std::string& message, const Pasteboard& pasteboard,
        const std::string& userData, std::string& error) = 0;
};

/// The running program and its event loop. Main thread only.
class Application {
public:
    virtual ~Application() = default;

    /// Not owned; it must outlive `run`.
    virtual void setDelegate(ApplicationDelegate* delegate) = 0;
    virtual void setActivationPolicy(ActivationPolicy policy) = 0;

    /// From here on the program's services are answered by it; those asked for earlier wait for it.
    /// Not owned; it must outlive `run`.
    virtual void setServicesProvider(ServicesProvider* provider) = 0;

    /// The icon that windows and alerts of the program bear by default.
    virtual void setApplicationIconImage(const Image& image) = 0;

    /// Asks the desktop to put the program in front of all others and to give its next window, or
    /// the one it has open, the keyboard.
    virtual void activateIgnoringOtherApps() = 0;

    /// Runs the event loop; returns at exit. Tells the delegate when launching has finished and,
    /// whatever ended the program short of a kill, when it is about to terminate.
    virtual void run() = 0;

    /// Ends `run` once the delegate has been told; open alerts answer as stopped.
    virtual void terminate() = 0;
};

} // namespace stemvault
