#include "LinuxDesktop/Application/QtRuntime.h"

#include "LinuxDesktop/Application/Identity.h"

#include <QApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QPixmapCache>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace stemvault::application {

namespace {

// The limit of the toolkit's pixmap cache. The default is ten times as much, and a program that
// shows a window now and then would fill it over several days.
constexpr int pixmapCacheLimit = 1024; // In KiB.

// The toolkit's Wayland support is a separate package, which a Wayland desktop need not install.
bool lacksWayland()
{
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + "/platforms");
    return qEnvironmentVariableIsSet("WAYLAND_DISPLAY")
        && plugins.entryList({ "libqwayland*" }).isEmpty();
}

// The toolkit prints a long message about each platform that it cannot use and then aborts, which
// would leave a crash report when there is merely no display yet.
void exitOnFatalMessage(
    QtMsgType type, const QMessageLogContext& /*context*/, const QString& /*text*/)
{
    if (type != QtFatalMsg)
        return;
    std::fputs(lacksWayland()
            ? "stemvault-connect: showing windows on Wayland takes the package qt6-wayland\n"
            : "stemvault-connect: there is no display to show windows on\n",
        stderr);
    std::_Exit(EXIT_FAILURE);
}

} // namespace

QtRuntime::QtRuntime(std::string programName) : name(std::move(programName))
{
    arguments[0] = name.data();
    choosePlatform();
    QGuiApplication::setDesktopFileName(identity::applicationId);
    qInstallMessageHandler(&exitOnFatalMessage);
    application = std::make_unique<QApplication>(argumentCount, arguments.data());
    qInstallMessageHandler(nullptr);
    QPixmapCache::setCacheLimit(pixmapCacheLimit);
}

QtRuntime::~QtRuntime() = default;

// Prefers an X display, even one inside a Wayland desktop, because there an alert can come to the
// front without a click. Passes that as an argument, because child processes would inherit an
// environment variable. The user's own choice in the environment takes precedence.
void QtRuntime::choosePlatform()
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return;
    arguments[1] = option.data();
    arguments[2] = platforms.data();
    argumentCount = 3;
}

} // namespace stemvault::application
