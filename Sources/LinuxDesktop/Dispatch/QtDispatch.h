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

namespace stemvault::dispatch {

/// The innermost running event loop serves the main queue, so the work behind a piece that opens a
/// modal window continues in that window's loop. Construct it on the main thread, after the
/// application object.
class QtDispatch final : public QObject, public Dispatch {
public:
    QtDispatch();

    /// Drops work that has not started. Does not wait for background work; see `finish`.
    ~QtDispatch() override;

    [[nodiscard]] WallTime now() const override;
    void mainAsync(Work work) override;
    void mainAsyncAfter(std::chrono::milliseconds delay, Work work) override;
    void utilityAsync(Work work, AtEnd atEnd = AtEnd::Dropped) override;
    [[nodiscard]] std::unique_ptr<Timer> scheduledTimer(
        std::chrono::milliseconds interval, Work work) override;

    /// Waits up to `limit` for AtEnd::Finished work. Drops queued AtEnd::Dropped work and waits up
    /// to 200 ms for what is running. False if some work is still running; then nothing that it may
    /// use can be destroyed any more.
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

    std::mutex mutex; ///< Guards the next three members.
    std::deque<Work> mainQueue;
    std::uint64_t taken = 0; ///< How many pieces have ever left the main queue.
    bool isWoken = false; ///< An event has been posted that will run the main queue.

    std::multimap<SteadyTime, Work> delayed; ///< Equal keys keep the order of insertion.
    QBasicTimer delayTimer;

    std::unique_ptr<QThreadPool> droppedPool;
    std::unique_ptr<QThreadPool> finishedPool;
};

} // namespace stemvault::dispatch
