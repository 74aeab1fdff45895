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
#include <malloc.h>
#include <utility>

namespace stemvault {

namespace {

using namespace std::chrono_literals;

// The time for copies in progress. One that takes longer is abandoned and leaves nothing behind.
constexpr auto timeForWorkAtEnd = 8s;

// By default the C library gives the threads heaps of their own, up to eight per processor, and
// each heap keeps the most memory that was ever in use there. The program's threads are short-lived
// and allocate little, so those heaps would keep growing while what is in use in them does not.
//
// It also raises the size from which a block is mapped on its own to that of the largest such block
// freed so far. The drawings of a closed window would then leave gaps in the heap.
void limitHeaps()
{
    constexpr int heaps = 2;
    constexpr int largestBlockInHeap = 128 * 1024;
    ::mallopt(M_ARENA_MAX, heaps); // NOLINT(concurrency-mt-unsafe): no thread has been started.
    ::mallopt(M_MMAP_THRESHOLD, largestBlockInHeap); // NOLINT(concurrency-mt-unsafe)
}

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
    application::QtRuntime gui { "stemvault-connect" };
    application::DBusServices services {
        QDBusConnection::sessionBus()
    }; ///< Needed before the name is claimed.
    application::SingleInstance instance { QDBusConnection::sessionBus() };
};

/// The members are in order of dependency.
struct LinuxPlatform::Parts {
    explicit Parts(application::DBusServices& busServices) : services(busServices) { }

    application::DBusServices& services;
    dispatch::QtDispatch dispatch;
    application::Appearance appearance { QDBusConnection::sessionBus() };
    bundle::LinuxBundle bundle { bundle::LinuxBundle::foldersOfExecutable() };
    user_defaults::UserDefaultsFile userDefaults { user_defaults::UserDefaultsFile::standardPath(),
        dispatch };
    application::ModalWindows windows;
    application::QtApplication application { windows, services,
        [this] { userDefaults.synchronize(); } };
    dialogs::QtDialogs dialogs { windows, application.applicationIcon() };
    file_events::LinuxFileEvents fileEvents { dispatch };
    login_item::AutostartEntry loginItem { login_item::AutostartEntry::standardFolder(),
        login_item::AutostartEntry::standardExecutable() };
    open_files::LsofOpenFiles openFiles;
    status_bar::QtStatusBar statusBar;
    url_session::FetcherURLSession urlSession { url_session::FetcherURLSession::standardFetcher(),
        {} };
    notification_center::DBusUserNotificationCenter userNotificationCenter { dispatch,
        QDBusConnection::sessionBus(), notificationIcon(bundle) };
    windows::QtWindows viewWindows { symbolFolder(bundle),
        [this](QWidget& window) { prepare(window); } };
    hotkey::HotkeySetup hotkey { dialogs, hotkey::HotkeySetup::standardCourier(),
        QDBusConnection::sessionBus() };
    workspace::LinuxWorkspace workspace { dispatch, workspace::WorkspaceSources::ofThisSession(),
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
    limitHeaps();
    auto session = std::make_unique<Session>();
    const auto claim = session->instance.claim();
    if (claim == application::SingleInstance::Claim::ForeignProgram) {
        session.reset();
        std::cerr << "stemvault-connect: another program has the name "
                  << identity::applicationId.toStdString() << " on the session bus\n";
        std::exit(EXIT_FAILURE); // NOLINT(concurrency-mt-unsafe): no thread has been started.
    }
    if (claim == application::SingleInstance::Claim::OtherInstance)
        return nullptr;
    return std::unique_ptr<LinuxPlatform>(new LinuxPlatform(std::move(session)));
}

LinuxPlatform::LinuxPlatform(std::unique_ptr<Session> joined)
    : session(std::move(joined)), parts(std::make_unique<Parts>(session->services))
{
    application::takeActivationTokenOfStart();
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
