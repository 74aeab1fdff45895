#pragma once

#include "Platform/Dispatch.h"

#include <QBasicTimer>
#include <QObject>
#include <QThreadPool>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>

namespace stemvault {

/// The main queue is served by the event loop, whichever one is running: work behind a piece that
/// opens a modal window goes on in that window's loop. Made on the main thread once the application
/// object stands.
class QtDispatch final : public QObject, public Dispatch {
public:
    QtDispatch();

    /// What has not run by then is dropped. Background work is not waited for; see `finish`.
    ~QtDispatch() override;

    [[nodiscard]] WallTime now() const override;
    void mainAsync(Work work) override;
    void mainAsyncAfter(std::chrono::milliseconds delay, Work work) override;
    void utilityAsync(Work work, AtEnd atEnd = AtEnd::Dropped) override;
    [[nodiscard]] std::unique_ptr<Timer> scheduledTimer(
        std::chrono::milliseconds interval, Work work) override;

    /// Gives what is to be finished until `limit` from now, and drops the rest but for what is
    /// about to end. False when some is still running: then nothing that it may use can be
    /// destroyed any more.
    [[nodiscard]] bool finish(std::chrono::milliseconds limit);

protected:
    bool event(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    using SteadyTime = std::chrono::steady_clock::time_point;

    void runMainQueue();
    [[nodiscard]] Work takeMainWork(std::uint64_t end);
    void wakeLocked();
    void runDueWork();
    void armDelayTimer();

    std::mutex mutex; ///< Guards the three below.
    std::deque<Work> mainQueue;
    std::uint64_t taken = 0; ///< How many pieces have ever left the main queue.
    bool isWoken = false; ///< An event is on its way that will empty the main queue.

    std::multimap<SteadyTime, Work> delayed; ///< Equal keys keep the order of insertion.
    QBasicTimer delayTimer;

    std::unique_ptr<QThreadPool> droppedPool;
    std::unique_ptr<QThreadPool> finishedPool;
};

} // namespace stemvault
