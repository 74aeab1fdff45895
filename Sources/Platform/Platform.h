#pragma once

#include "Platform/Application.h"
#include "Platform/Bundle.h"
#include "Platform/Dialogs.h"
#include "Platform/Dispatch.h"
#include "Platform/FileEvents.h"
#include "Platform/LoginItem.h"
#include "Platform/OpenFiles.h"
#include "Platform/StatusBar.h"
#include "Platform/URLSession.h"
#include "Platform/UserDefaults.h"
#include "Platform/UserNotificationCenter.h"
#include "Platform/Windows.h"
#include "Platform/Workspace.h"

namespace stemvault {

/// Everything that the program needs from a desktop, one interface per subject. Each interface
/// states which threads may call it, what failure means and who owns what; a method for which no
/// failure is described cannot fail. No method throws. Only values are passed: a path is a UTF-8
/// string or the file system's own bytes, a length is in points, a time is a std::chrono type. The
/// references stay valid for as long as the platform is installed.
struct Platform {
    Application& application;
    Bundle& bundle;
    Dialogs& dialogs;
    Dispatch& dispatch;
    FileEvents& fileEvents;
    LoginItem& loginItem;
    OpenFiles& openFiles;
    StatusBar& statusBar;
    URLSession& urlSession;
    UserDefaults& userDefaults;
    UserNotificationCenter& userNotificationCenter;
    Windows& windows;
    Workspace& workspace;

    /// The installed platform. There must be one. May be called from any thread, but each interface
    /// has its own rules about threads.
    [[nodiscard]] static const Platform& current();

    /// Called by `main` before it starts any other thread, and by each test. The platform is not
    /// owned; null removes it.
    static void install(const Platform* platform);
};

} // namespace stemvault
