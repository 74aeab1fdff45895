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

/// A desktop for tests, installed for as long as it lives. The program's shared instances begin
/// anew on it, and end before it.
class FakePlatform {
public:
    FakePlatform();
    ~FakePlatform();
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    /// Opens this file in a DAW, process 5, which is launched first unless it runs; all that
    /// follows from it has happened when this returns.
    void openSession(const std::string& file);
    /// Ends that DAW, likewise.
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
