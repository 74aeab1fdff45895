#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace stemvault {

using Work = std::function<void()>;
using WallTime = std::chrono::system_clock::time_point;

/// What happens to background work when the program ends.
enum class AtEnd {
    Dropped, ///< It is not started any more, and abandoned if it runs: a scan.
    Finished, ///< The end waits some seconds for it: a copy that the user asked for.
};

/// A repeating timer, owned by whoever asked for it. Destroying it cancels it: its work does not
/// run afterwards, not even if it was already due. Main thread only.
class Timer {
public:
    Timer() = default;
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    virtual ~Timer() = default;
};

/// When and where work runs: on the main thread in the event loop, or on threads in the background.
/// `work` is never empty, must not throw, and is destroyed after it ran or was dropped. Work has no
/// owner: work that may outlive what it uses is guarded with `WeakGuard`. Whatever has not run on
/// the main thread when the event loop ends is dropped.
class Dispatch {
public:
    virtual ~Dispatch() = default;

    /// The wall clock. It is not monotonic: the user may set it forward and back. From any thread.
    [[nodiscard]] virtual WallTime now() const = 0;

    /// Queues `work` for the main thread. Work runs in the order of these calls, never inside one.
    /// A nested event loop, such as that of an alert, goes on with the queue. From any thread.
    virtual void mainAsync(Work work) = 0;

    /// Runs `work` on the main thread no earlier than `delay` from now, by the monotonic clock, and
    /// never inside this call. Work is run in the order of its due times; equal ones in the order
    /// of these calls. It cannot be cancelled: guard it. Main thread only.
    virtual void mainAsyncAfter(std::chrono::milliseconds delay, Work work) = 0;

    /// Runs `work` on a background thread with a lower priority than the main thread. Pieces run
    /// side by side and end in any order. A piece may block: on a dead drive perhaps for ever, and
    /// then it occupies one of a limited number of threads. `Finished` work never waits for
    /// `Dropped` work. From any thread.
    virtual void utilityAsync(Work work, AtEnd atEnd = AtEnd::Dropped) = 0;

    /// Runs `work` on the main thread every `interval`, which is above zero; the first time is one
    /// interval from now. Times that passed while the main thread was busy are not made up for. The
    /// work may destroy its own timer. Main thread only.
    [[nodiscard]] virtual std::unique_ptr<Timer> scheduledTimer(
        std::chrono::milliseconds interval, Work work) = 0;
};

} // namespace stemvault
