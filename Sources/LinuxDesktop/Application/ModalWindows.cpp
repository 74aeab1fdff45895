#include "LinuxDesktop/Application/ModalWindows.h"

#include "LinuxDesktop/Application/AnswerGuard.h"
#include "LinuxDesktop/Windows/WindowActivation.h"

#include <QCursor>
#include <QDialog>
#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace stemvault::application {

namespace {

// Long enough for a question that follows an answer, such as whether to replace a file.
constexpr std::chrono::seconds inFrontTime { 5 };
constexpr int cascade = 28;

// No minimise button: a minimised question would be forgotten while files wait for its answer.
constexpr auto frameOfModalWindow = Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint
    | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint | Qt::WindowStaysOnTopHint;

QScreen& screenOfUser()
{
    QScreen* under = QGuiApplication::screenAt(QCursor::pos());
    return under ? *under : *QGuiApplication::primaryScreen();
}

} // namespace

int ModalWindows::run(QDialog& window)
{
    if (isStopped)
        return 0;
    window.setWindowFlags(frameOfModalWindow);
    if (isInFront())
        windows::bringToFront(window);
    else
        windows::showWithoutKeyboard(window);
    new AnswerGuard(window, quiet);
    place(window);
    open.push_back(&window);
    const int result = window.exec();
    open.pop_back(); // Later windows are already closed, because their loops ran inside this one.
    stayInFront();
    return result;
}

void ModalWindows::activate()
{
    stayInFront();
    if (!open.empty())
        windows::bringToFront(*open.back());
}

void ModalWindows::stop()
{
    isStopped = true;
    std::ranges::for_each(open.rbegin(), open.rend(), [](QDialog* window) { window->done(0); });
}

bool ModalWindows::isInFront() const
{
    return QGuiApplication::focusWindow() || !inFrontUntil.hasExpired();
}

void ModalWindows::stayInFront()
{
    inFrontUntil.setRemainingTime(inFrontTime);
}

// Places the first window a third of the way down the screen that holds the pointer. A later window
// is offset from the one below, and the window manager is told to keep it above that one.
void ModalWindows::place(QDialog& window) const
{
    const QRect area = screenOfUser().availableGeometry();
    const QSize size = window.sizeHint();
    QPoint corner(area.left() + (area.width() - size.width()) / 2,
        area.top() + (area.height() - size.height()) / 3);
    if (!open.empty()) {
        corner = open.back()->geometry().topLeft() + QPoint(cascade, cascade);
        window.windowHandle()->setTransientParent(open.back()->windowHandle());
    }
    window.move(std::clamp(corner.x(), area.left(), qMax(area.left(), area.right() - size.width())),
        std::clamp(corner.y(), area.top(), qMax(area.top(), area.bottom() - size.height())));
}

} // namespace stemvault::application
