#pragma once

#include <QDeadlineTimer>

#include <chrono>
#include <vector>

class QDialog;

namespace stemvault::application {

/// The open modal windows, the latest on top. The program counts as in front while one of its
/// windows has the keyboard focus, and for a few seconds after the user answered a window or the
/// program asked to be in front. A window that opens then takes the focus; any other window is only
/// shown above all others. Main thread only.
class ModalWindows {
public:
    /// How long keys and clicks do not answer a window at first; see AnswerGuard. Longer than the
    /// gaps in typing, shorter than it takes to read the question.
    static constexpr std::chrono::milliseconds usualQuietTime { 400 };

    explicit ModalWindows(std::chrono::milliseconds quietTime = usualQuietTime) : quiet(quietTime)
    {
    }

    /// Runs an event loop until the window is done or the program ends. Returns the result of the
    /// window, or 0 if it was closed without one.
    [[nodiscard]] int run(QDialog& window);

    /// Brings the topmost window to the front, and also a window that opens soon after.
    void activate();

    /// Closes every open window, the latest first. No window is shown after that.
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

} // namespace stemvault::application
