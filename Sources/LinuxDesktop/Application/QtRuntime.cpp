#include "LinuxDesktop/Application/QtRuntime.h"

#include "LinuxDesktop/Application/Identity.h"

#include <QApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QPixmapCache>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace stemvault {

namespace {

// What is drawn is kept in case it is drawn again. The default is ten times as much, and over the
// days a program that shows a window now and then would fill it.
constexpr int keptDrawings = 1024; // In KiB.

// The toolkit's part for Wayland is a package of its own, which a desktop need not bring along.
bool lacksWayland()
{
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + "/platforms");
    return qEnvironmentVariableIsSet("WAYLAND_DISPLAY")
        && plugins.entryList({ "libqwayland*" }).isEmpty();
}

// The toolkit complains at length about each platform that it cannot use and then aborts, which
// would leave a crash report behind where a display is merely not there yet.
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
    QPixmapCache::setCacheLimit(keptDrawings);
}

QtRuntime::~QtRuntime() = default;

// An X display first, if only one within a Wayland desktop: there an alert that nobody clicked for
// can come to the front. Said by argument, as the environment is for our child processes too; the
// user's own choice in the environment counts more.
void QtRuntime::choosePlatform()
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return;
    arguments[1] = option.data();
    arguments[2] = platforms.data();
    argumentCount = 3;
}

} // namespace stemvault
