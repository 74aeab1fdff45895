#pragma once

#include "Platform/Dispatch.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <utility>

namespace stemvault {

/// Queues on a virtual clock: everything runs on the test's own thread, in the order asked for.
class FakeDispatch : public Dispatch {
public:
    // The seam.
    [[nodiscard]] WallTime now() const override
    {
        return WallTime(std::chrono::hours(24 * 365 * 50)) + clock + wallOffset;
    }
    void mainAsync(Work work) override { mainQueue.push_back(std::move(work)); }
    void mainAsyncAfter(std::chrono::milliseconds delay, Work work) override
    {
        delayed.emplace(Key(clock + delay, sequence++), std::move(work));
    }
    void utilityAsync(Work work, AtEnd atEnd) override
    {
        utilityQueue.push_back({ std::move(work), atEnd });
    }
    [[nodiscard]] std::unique_ptr<Timer> scheduledTimer(
        std::chrono::milliseconds interval, Work work) override;

    // What a test may do.

    /// Runs all that is due now, and what that asks for, until nothing is left.
    void settle();

    /// Moves the clock, and runs everything due on the way, each at its own time.
    void advance(std::chrono::milliseconds duration);

    /// Sets the wall clock alone, as a user may.
    void jumpWallClock(std::chrono::milliseconds distance) { wallOffset += distance; }

    /// Runs the main queue alone: background work stays as if it took long.
    void settleMainQueue();

    /// Takes the oldest piece of background work out, to be run when the test likes, or runs it.
    [[nodiscard]] Work holdOldestUtilityWork();
    void runOldestUtilityWork() { holdOldestUtilityWork()(); }

    /// Whether what runs just now would be on a background thread.
    [[nodiscard]] bool isInBackground() const { return isRunningUtilityWork; }

    [[nodiscard]] std::size_t utilityWorkCount() const { return utilityQueue.size(); }

    /// As at the end of the program: background work that is to be finished is, all else is
    /// dropped.
    void endProgram();

    [[nodiscard]] std::size_t timerCount() const { return timers; }

private:
    using Key = std::pair<std::chrono::milliseconds, std::uint64_t>;
    class FakeTimer;

    struct UtilityWork {
        Work work;
        AtEnd atEnd;
    };

    template <typename Item> static Item takeFront(std::deque<Item>& queue)
    {
        Item item = std::move(queue.front());
        queue.pop_front();
        return item;
    }

    std::chrono::milliseconds clock { 0 };
    std::chrono::milliseconds wallOffset { 0 };
    std::uint64_t sequence = 0;
    std::deque<Work> mainQueue;
    std::deque<UtilityWork> utilityQueue;
    std::map<Key, Work> delayed;
    std::size_t timers = 0;
    bool isRunningUtilityWork = false;
};

} // namespace stemvault
