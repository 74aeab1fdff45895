#include "LinuxDesktop/Qt/GuiProcess.h"

#include "LinuxDesktop/Qt/Identity.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace stemvault {

namespace {

// The toolkit complains at length about each platform that it cannot use and then aborts, which
// would leave a crash report behind where a display is merely not there yet.
void saveOnlyTheEnd(QtMsgType type, const QMessageLogContext& /*context*/, const QString& /*text*/)
{
    if (type != QtFatalMsg)
        return;
    std::fputs("stemvault-connect: there is no display to show windows on\n", stderr);
    std::_Exit(EXIT_FAILURE);
}

} // namespace

GuiProcess::GuiProcess(std::string programName) : name(std::move(programName))
{
    arguments[0] = name.data();
    choosePlatform();
    QGuiApplication::setDesktopFileName(identity::applicationId);
    qInstallMessageHandler(&saveOnlyTheEnd);
    application = std::make_unique<QApplication>(argumentCount, arguments.data());
    qInstallMessageHandler(nullptr);
}

GuiProcess::~GuiProcess() = default;

// An X display first, if only one within a Wayland desktop: there an alert that nobody clicked for
// can come to the front. Said by argument, as the environment is for our child processes too; the
// user's own choice in the environment counts more.
void GuiProcess::choosePlatform()
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return;
    arguments[1] = option.data();
    arguments[2] = platforms.data();
    argumentCount = 3;
}

} // namespace stemvault
