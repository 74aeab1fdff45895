#include "LinuxDesktop/LinuxPlatform.h"

#include "LinuxDesktop/Application/ActivationToken.h"
#include "LinuxDesktop/Application/Appearance.h"
#include "LinuxDesktop/Application/DBusServices.h"
#include "LinuxDesktop/Application/Identity.h"
#include "LinuxDesktop/Application/QtApplication.h"
#include "LinuxDesktop/Application/QtRuntime.h"
#include "LinuxDesktop/Application/SingleInstance.h"
#include "LinuxDesktop/Bundle/LinuxBundle.h"
#include "LinuxDesktop/Dialogs/QtDialogs.h"
#include "LinuxDesktop/Dispatch/QtDispatch.h"
#include "LinuxDesktop/FileEvents/LinuxFileEvents.h"
#include "LinuxDesktop/Hotkey/HotkeySetup.h"
#include "LinuxDesktop/LoginItem/AutostartEntry.h"
#include "LinuxDesktop/OpenFiles/LsofOpenFiles.h"
#include "LinuxDesktop/StatusBar/QtStatusBar.h"
#include "LinuxDesktop/URLSession/FetcherURLSession.h"
#include "LinuxDesktop/UserDefaults/UserDefaultsFile.h"
#include "LinuxDesktop/UserNotificationCenter/DBusUserNotificationCenter.h"
#include "LinuxDesktop/Windows/QtWindows.h"
#include "LinuxDesktop/Workspace/LinuxWorkspace.h"

#include <QWidget>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <utility>

namespace stemvault {

namespace {

using namespace std::chrono_literals;

// The time for copies in progress. One that takes longer is abandoned and leaves nothing behind.
constexpr auto timeForWorkAtEnd = 8s;

// In a build tree the icon is not in the icon theme, so notifications show the file instead.
std::string notificationIcon(const Bundle& bundle)
{
    return bundle.pathForResource("icons/hicolor/128x128/apps/net.stemvault.Connect", "png")
        .value_or(identity::applicationId.toStdString());
}

std::string symbolFolder(const Bundle& bundle)
{
    return deletingLastPathComponent(
        bundle.pathForResource("Symbols/waveform", "svg").value_or(""));
}

} // namespace

/// The parts that the process needs to find out whether it is the only instance.
struct LinuxPlatform::Session {
    QtRuntime gui { "stemvault-connect" };
    DBusServices services { QDBusConnection::sessionBus() }; ///< Needed before the name is claimed.
    SingleInstance instance { QDBusConnection::sessionBus() };
};

/// The members are in order of dependency.
struct LinuxPlatform::Parts {
    explicit Parts(DBusServices& busServices) : services(busServices) { }

    DBusServices& services;
    QtDispatch dispatch;
    Appearance appearance { QDBusConnection::sessionBus() };
    LinuxBundle bundle { LinuxBundle::foldersOfExecutable() };
    UserDefaultsFile userDefaults { UserDefaultsFile::standardPath(), dispatch };
    ModalWindows windows;
    QtApplication application { windows, services, [this] { userDefaults.synchronize(); } };
    QtDialogs dialogs { windows, application.applicationIcon() };
    LinuxFileEvents fileEvents { dispatch };
    AutostartEntry loginItem { AutostartEntry::standardFolder(),
        AutostartEntry::standardExecutable() };
    LsofOpenFiles openFiles;
    QtStatusBar statusBar;
    FetcherURLSession urlSession { FetcherURLSession::standardFetcher(), {} };
    DBusUserNotificationCenter userNotificationCenter { dispatch, QDBusConnection::sessionBus(),
        notificationIcon(bundle) };
    QtWindows viewWindows { symbolFolder(bundle), [this](QWidget& window) { prepare(window); } };
    HotkeySetup hotkey { dialogs, HotkeySetup::standardCourier(), QDBusConnection::sessionBus() };
    LinuxWorkspace workspace { dispatch, WorkspaceSources::ofThisSession(),
        [this] { return hotkey.show(); } };
    Platform platform { application, bundle, dialogs, dispatch, fileEvents, loginItem, openFiles,
        statusBar, urlSession, userDefaults, userNotificationCenter, viewWindows, workspace };

    void prepare(QWidget& window)
    {
        window.setWindowIcon(application.applicationIcon().icon());
        statusBar.addKeyEquivalents(window);
    }
};

std::unique_ptr<LinuxPlatform> LinuxPlatform::create()
{
    auto session = std::make_unique<Session>();
    const auto claim = session->instance.claim();
    if (claim == SingleInstance::Claim::ForeignProgram) {
        session.reset();
        std::cerr << "stemvault-connect: another program has the name "
                  << identity::applicationId.toStdString() << " on the session bus\n";
        std::exit(EXIT_FAILURE); // NOLINT(concurrency-mt-unsafe): no thread has been started.
    }
    if (claim == SingleInstance::Claim::OtherInstance)
        return nullptr;
    return std::unique_ptr<LinuxPlatform>(new LinuxPlatform(std::move(session)));
}

LinuxPlatform::LinuxPlatform(std::unique_ptr<Session> joined)
    : session(std::move(joined)), parts(std::make_unique<Parts>(session->services))
{
    takeActivationTokenOfStart();
    session->instance.onActivate([this] { parts->application.reopen(); });
}

// If work still runs, the process ends without destroying the objects that the work uses. The name
// is released first, so that the user can start the program again without waiting.
LinuxPlatform::~LinuxPlatform()
{
    session->instance.release();
    if (!parts->dispatch.finish(timeForWorkAtEnd))
        std::_Exit(EXIT_SUCCESS);
}

const Platform& LinuxPlatform::platform() const
{
    return parts->platform;
}

} // namespace stemvault
