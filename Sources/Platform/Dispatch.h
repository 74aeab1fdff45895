#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace stemvault {

using Work = std::function<void()>;
using WallTime = std::chrono::system_clock::time_point;

/// What the end of the program makes of background work: nobody misses a look; a copy was promised,
/// and is given a while.
enum class AtEnd { Dropped, Finished };

/// A repeating timer. Destroying it cancels it: its work does not run afterwards.
class Timer {
public:
    Timer() = default;
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    virtual ~Timer() = default;
};

/// When and where work runs.
class Dispatch {
public:
    virtual ~Dispatch() = default;

    /// The wall clock, which the user may set forward and back. From any thread.
    [[nodiscard]] virtual WallTime now() const = 0;

    /// Runs `work` on the main thread, after all main-queue work asked for earlier, never inside
    /// this call. From any thread.
    virtual void mainAsync(Work work) = 0;

    /// Runs `work` on the main thread no earlier than `delay` from now, by a clock that nobody
    /// sets. Equal due times run in the order asked for. Main thread only.
    virtual void mainAsyncAfter(std::chrono::milliseconds delay, Work work) = 0;

    /// Runs `work` on a background thread of utility priority; pieces may run side by side. From
    /// any thread. Work that is to be finished never waits for work that is not.
    virtual void utilityAsync(Work work, AtEnd atEnd = AtEnd::Dropped) = 0;

    /// Runs `work` on the main thread every `interval`, the first time one interval from now, for
    /// as long as the timer lives. The work may destroy its own timer. Main thread only.
    [[nodiscard]] virtual std::unique_ptr<Timer> scheduledTimer(
        std::chrono::milliseconds interval, Work work) = 0;
};

} // namespace stemvault
