#include "LinuxDesktop/Application/QtApplication.h"

#include "LinuxDesktop/Application/DBusServices.h"
#include "LinuxDesktop/Application/TerminationSignals.h"

#include <QApplication>
#include <QEvent>
#include <QSessionManager>

#include <cstdlib>
#include <utility>

namespace stemvault {

namespace {

std::function<void()> onAbruptExit; ///< Set while the event loop runs.

// The toolkit exits from within its event loop when the display is gone. Nothing is left to unwind
// then, and worker threads still run: the process ends without destroying what they use.
void endWithoutDisplay()
{
    if (!onAbruptExit)
        return;
    std::exchange(onAbruptExit, nullptr)();
    std::_Exit(EXIT_FAILURE);
}

} // namespace

QtApplication::QtApplication(
    ModalWindows& modalWindows, DBusServices& busServices, std::function<void()> finalWork)
    : windows(modalWindows), services(busServices), lastWork(std::move(finalWork))
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
    if (isLaunched && !isEndTold && delegate)
        delegate->applicationShouldHandleReopen();
}

// The delegate is told first, so that nothing of it is at work any more when the answers of open
// windows unwind.
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
    if (std::exchange(isEndTold, true))
        return;
    if (isLaunched && delegate)
        delegate->applicationWillTerminate();
    if (lastWork)
        lastWork();
}

// Whatever asks the toolkit to quit, a session manager or a desktop's shell, ends the program in
// the one way.
bool QtApplication::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != qApp || event->type() != QEvent::Quit)
        return false;
    terminate();
    return true;
}

// The session may still be kept, so nothing ends here; what it ends with is a quit event. All there
// is to save is settings on their way to the disk.
void QtApplication::endOfSession(QSessionManager& manager)
{
    manager.setRestartHint(QSessionManager::RestartNever);
    if (lastWork)
        lastWork();
}

} // namespace stemvault
