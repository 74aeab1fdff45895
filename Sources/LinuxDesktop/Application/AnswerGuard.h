#pragma once

#include <QDeadlineTimer>
#include <QObject>

#include <chrono>

class QWidget;

namespace stemvault {

/// Keeps a window that comes up unasked from being answered by what was meant for another program:
/// somebody typing or clicking in the DAW. Keys count once the keyboard has been quiet for
/// `quietTime` since the window got it, so that a held key or a flow of typing never answers;
/// clicks count once the window has been on the screen that long. Accessibility actions are always
/// deliberate and pass.
class AnswerGuard final : public QObject {
    Q_OBJECT
public:
    /// Belongs to the window, which must be a top-level one.
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

} // namespace stemvault
