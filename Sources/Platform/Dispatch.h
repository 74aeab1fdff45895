#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace stemvault {

using Work = std::function<void()>;
using WallTime = std::chrono::system_clock::time_point;

/// What happens to background work when the program ends.
enum class AtEnd {
    Dropped, ///< Not started any more, and abandoned if it is running. For scans.
    Finished, ///< The program waits some seconds for it. For copies that the user asked for.
};

/// A repeating timer, owned by the caller that created it. Destroying it cancels it: its work does
/// not run afterwards, not even if it was already due. Main thread only.
class Timer {
public:
    Timer() = default;
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    virtual ~Timer() = default;
};

/// Schedules work in the event loop of the main thread or on background threads. `work` is never
/// empty, must not throw, and is destroyed after it ran or was dropped. Work has no owner: guard
/// work that may outlive what it uses with `WeakGuard`. Work for the main thread that has not run
/// when the event loop ends is dropped.
class Dispatch {
public:
    virtual ~Dispatch() = default;

    /// The wall clock. It is not monotonic: the user may set it forward and back. From any thread.
    [[nodiscard]] virtual WallTime now() const = 0;

    /// Queues `work` for the main thread. Work runs in the order of these calls, never inside one.
    /// A nested event loop, such as an alert's, continues with the queue. From any thread.
    virtual void mainAsync(Work work) = 0;

    /// Runs `work` on the main thread no earlier than `delay` from now, by the monotonic clock, and
    /// never inside this call. Work runs in the order of its due times, and for equal times in the
    /// order of these calls. It cannot be cancelled: guard it. Main thread only.
    virtual void mainAsyncAfter(std::chrono::milliseconds delay, Work work) = 0;

    /// Runs `work` on a background thread with a lower priority than the main thread. Several may
    /// run at once and finish in any order. Work may block, on a dead drive perhaps forever, and
    /// then occupies one of a limited number of threads. `Finished` work never waits for `Dropped`
    /// work. From any thread.
    virtual void utilityAsync(Work work, AtEnd atEnd = AtEnd::Dropped) = 0;

    /// Runs `work` on the main thread every `interval`, which must be above zero; the first time is
    /// one interval from now. Runs missed while the main thread was busy are skipped. The work may
    /// destroy its own timer. Main thread only.
    [[nodiscard]] virtual std::unique_ptr<Timer> scheduledTimer(
        std::chrono::milliseconds interval, Work work) = 0;
};

} // namespace stemvault
