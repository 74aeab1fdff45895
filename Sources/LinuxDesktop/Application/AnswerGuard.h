#pragma once

#include <QDeadlineTimer>
#include <QObject>

#include <chrono>

class QWidget;

namespace stemvault::application {

/// Keeps a window that opens unexpectedly from being answered by input that was meant for another
/// program, such as typing or clicking in the DAW. Keys count once the keyboard has been quiet for
/// `quietTime` while the window has the focus, so that a held key or continuous typing never
/// answers. Clicks count once the window has been on the screen that long. Accessibility actions
/// are always deliberate and pass.
class AnswerGuard final : public QObject {
    Q_OBJECT
public:
    /// The window must be a top-level one; it owns the guard.
    AnswerGuard(QWidget& guarded, std::chrono::milliseconds quiet);

    [[nodiscard]] bool takesKeys() const { return keysFrom.hasExpired(); }
    [[nodiscard]] bool takesClicks() const { return clicksFrom.hasExpired(); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] bool swallowsKey();

    const std::chrono::milliseconds quietTime;
    QDeadlineTimer keysFrom { QDeadlineTimer::Forever };
    QDeadlineTimer clicksFrom { QDeadlineTimer::Forever };
};

} // namespace stemvault::application
