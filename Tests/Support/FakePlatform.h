#pragma once

#include "Platform/Platform.h"
#include "Support/FakeApplication.h"
#include "Support/FakeBundle.h"
#include "Support/FakeDialogs.h"
#include "Support/FakeDispatch.h"
#include "Support/FakeFileEvents.h"
#include "Support/FakeLoginItem.h"
#include "Support/FakeOpenFiles.h"
#include "Support/FakeStatusBar.h"
#include "Support/FakeURLSession.h"
#include "Support/FakeUserDefaults.h"
#include "Support/FakeUserNotificationCenter.h"
#include "Support/FakeWindows.h"
#include "Support/FakeWorkspace.h"

#include <string>

namespace stemvault {

/// A desktop for tests, installed during its lifetime. The program's shared instances are created
/// anew on it, and destroyed before it.
class FakePlatform {
public:
    FakePlatform();
    ~FakePlatform();
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    /// Opens this file in a DAW with process ID 5, and launches the DAW first if necessary.
    /// Returns after the program has handled this.
    void openSession(const std::string& file);
    /// Quits that DAW. Returns after the program has handled this.
    void quitDAW();

    FakeApplication application;
    FakeBundle bundle;
    FakeDialogs dialogs;
    FakeDispatch dispatch;
    FakeFileEvents fileEvents;
    FakeLoginItem loginItem;
    FakeOpenFiles openFiles;
    FakeStatusBar statusBar;
    FakeURLSession urlSession;
    FakeUserDefaults userDefaults;
    FakeUserNotificationCenter userNotificationCenter { dispatch };
    FakeWindows windows { dispatch };
    FakeWorkspace workspace;

private:
    Platform platform { application, bundle, dialogs, dispatch, fileEvents, loginItem, openFiles,
        statusBar, urlSession, userDefaults, userNotificationCenter, windows, workspace };
};

} // namespace stemvault
