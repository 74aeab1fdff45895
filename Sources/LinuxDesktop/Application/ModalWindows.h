#pragma once

#include <QDeadlineTimer>

#include <chrono>
#include <vector>

class QDialog;

namespace stemvault {

/// The modal windows that are open, the latest on top, and whether the program is in front of the
/// others: while one of its windows has the keyboard, and for a moment after the user answered one
/// or the program asked to be in front. A window that opens then takes the keyboard; any other one
/// only shows itself above all windows. Main thread only.
class ModalWindows {
public:
    /// How long the keyboard and the mouse must be quiet before they answer; see AnswerGuard.
    /// Longer than the gaps in typing, shorter than it takes to read the question.
    static constexpr std::chrono::milliseconds usualQuietTime { 400 };

    explicit ModalWindows(std::chrono::milliseconds quietTime = usualQuietTime) : quiet(quietTime)
    {
    }

    /// Runs an event loop until the window is done or the program ends; the window's result, or 0
    /// when it was closed without one.
    [[nodiscard]] int run(QDialog& window);

    /// Brings the open window to the front, and the next to open.
    void activate();

    /// Ends every open window, the latest first; later ones are never shown.
    void stop();

private:
    [[nodiscard]] bool isInFront() const;
    void place(QDialog& window) const;
    void stayInFront();

    const std::chrono::milliseconds quiet;
    std::vector<QDialog*> open;
    QDeadlineTimer inFrontUntil;
    bool isStopped = false;
};

} // namespace stemvault
