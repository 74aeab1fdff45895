#include "LinuxDesktop/Application/QtApplication.h"

#include "LinuxDesktop/Application/DBusServices.h"
#include "LinuxDesktop/Application/TerminationSignals.h"

#include <QApplication>
#include <QEvent>
#include <QSessionManager>

#include <cstdlib>
#include <utility>

namespace stemvault::application {

namespace {

std::function<void()> onAbruptExit; ///< Set while the event loop runs.

// The toolkit calls exit from its event loop when the display is lost. The stack is not unwound
// then and worker threads still run, so the process ends without destroying what they use.
void endWithoutDisplay()
{
    if (!onAbruptExit)
        return;
    std::exchange(onAbruptExit, nullptr)();
    std::_Exit(EXIT_FAILURE);
}

} // namespace

QtApplication::QtApplication(
    ModalWindows& modalWindows, DBusServices& busServices, std::function<void()> workAtEnd)
    : windows(modalWindows), services(busServices), finalWork(std::move(workAtEnd))
{
    QGuiApplication::setQuitOnLastWindowClosed(false);
    qApp->installEventFilter(this);
    connect(qApp, &QGuiApplication::commitDataRequest, this, &QtApplication::endOfSession,
        Qt::DirectConnection);
}

QtApplication::~QtApplication() = default;

void QtApplication::setDelegate(ApplicationDelegate* chosen)
{
    delegate = chosen;
}

void QtApplication::setActivationPolicy(ActivationPolicy /*policy*/) { }

void QtApplication::setServicesProvider(ServicesProvider* provider)
{
    services.setProvider(provider);
}

void QtApplication::setApplicationIconImage(const Image& image)
{
    iconOfWindows.setImage(image);
}

void QtApplication::activateIgnoringOtherApps()
{
    windows.activate();
}

void QtApplication::run()
{
    static const bool registered = std::atexit(&endWithoutDisplay) == 0;
    Q_UNUSED(registered);
    const TerminationSignals handled([this] { terminate(); });
    onAbruptExit = [this] { notifyWillTerminate(); };
    QMetaObject::invokeMethod(
        this, [this] { launch(); }, Qt::QueuedConnection);
    QApplication::exec();
    notifyWillTerminate();
    onAbruptExit = nullptr;
}

void QtApplication::launch()
{
    isLaunched = true;
    if (delegate)
        delegate->applicationDidFinishLaunching();
}

void QtApplication::reopen()
{
    if (isLaunched && !hasNotifiedTermination && delegate)
        delegate->applicationShouldHandleReopen();
}

// Notifies the delegate first, so that its work has stopped by the time the open windows close and
// their callers return.
void QtApplication::terminate()
{
    if (std::exchange(isTerminating, true))
        return;
    notifyWillTerminate();
    windows.stop();
    QCoreApplication::exit();
}

void QtApplication::notifyWillTerminate()
{
    if (std::exchange(hasNotifiedTermination, true))
        return;
    if (isLaunched && delegate)
        delegate->applicationWillTerminate();
    if (finalWork)
        finalWork();
}

// If a session manager or a desktop shell asks the toolkit to quit, the program ends through
// `terminate`.
bool QtApplication::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != qApp || event->type() != QEvent::Quit)
        return false;
    terminate();
    return true;
}

// The session may still continue, so nothing is closed here; if it ends, a quit event follows. Only
// settings that are not on the disk yet need to be saved.
void QtApplication::endOfSession(QSessionManager& manager)
{
    manager.setRestartHint(QSessionManager::RestartNever);
    if (finalWork)
        finalWork();
}

} // namespace stemvault::application
