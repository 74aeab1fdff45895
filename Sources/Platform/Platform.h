#pragma once

#include "Platform/Application.h"
#include "Platform/Bundle.h"
#include "Platform/Dialogs.h"
#include "Platform/Dispatch.h"
#include "Platform/FileEvents.h"
#include "Platform/LoginItem.h"
#include "Platform/ProcessRunner.h"
#include "Platform/StatusBar.h"
#include "Platform/URLSession.h"
#include "Platform/UserDefaults.h"
#include "Platform/UserNotificationCenter.h"
#include "Platform/Windows.h"
#include "Platform/Workspace.h"

namespace stemvault {

/// Everything the program asks of a desktop. Owns nothing.
struct Platform {
    Application& application;
    Bundle& bundle;
    Dialogs& dialogs;
    Dispatch& dispatch;
    FileEvents& fileEvents;
    LoginItem& loginItem;
    ProcessRunner& processRunner;
    StatusBar& statusBar;
    URLSession& urlSession;
    UserDefaults& userDefaults;
    UserNotificationCenter& userNotificationCenter;
    Windows& windows;
    Workspace& workspace;

    /// The desktop that the program runs on. Installed before anything asks for it, and asked for
    /// from any thread: the threads of each part are its own.
    [[nodiscard]] static const Platform& current();

    /// Set once by `main`, or by a test; null takes it back.
    static void install(const Platform* platform);
};

} // namespace stemvault
