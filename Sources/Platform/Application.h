#pragma once

#include "Platform/Image.h"

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

/// The running program and its event loop. Main thread only.
class Application {
public:
    virtual ~Application() = default;

    /// Not owned; it must outlive `run`.
    virtual void setDelegate(ApplicationDelegate* delegate) = 0;
    virtual void setActivationPolicy(ActivationPolicy policy) = 0;

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
