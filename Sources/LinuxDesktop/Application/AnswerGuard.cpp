#include "LinuxDesktop/Application/AnswerGuard.h"

#include <QEvent>
#include <QWidget>
#include <QWindow>

namespace stemvault::application {

AnswerGuard::AnswerGuard(QWidget& guarded, std::chrono::milliseconds quiet)
    : QObject(&guarded), quietTime(quiet)
{
    guarded.winId(); // Creates the native window, which receives all input.
    guarded.installEventFilter(this);
    guarded.windowHandle()->installEventFilter(this);
}

bool AnswerGuard::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::WindowActivate:
        keysFrom.setRemainingTime(quietTime);
        return false;
    case QEvent::Expose:
        if (clicksFrom.isForever())
            clicksFrom.setRemainingTime(quietTime);
        return false;
    case QEvent::KeyPress:
        return watched->isWindowType() && swallowsKey();
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::TouchBegin:
        return watched->isWindowType() && !takesClicks();
    default:
        return false;
    }
}

bool AnswerGuard::swallowsKey()
{
    if (takesKeys())
        return false;
    keysFrom.setRemainingTime(quietTime);
    return true;
}

} // namespace stemvault::application
