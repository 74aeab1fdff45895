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

    /// Runs all work in the queues, including work that it adds, until they are empty.
    void settle();

    /// Advances the clock and runs all work that becomes due, each piece at its due time.
    void advance(std::chrono::milliseconds duration);

    /// Changes only the wall clock, as a user may.
    void jumpWallClock(std::chrono::milliseconds distance) { wallOffset += distance; }

    /// Runs only the main queue; background work stays queued, as if it took long.
    void settleMainQueue();

    /// Removes the oldest background work from the queue, so that the test can run it later.
    [[nodiscard]] Work holdOldestUtilityWork();
    void runOldestUtilityWork() { holdOldestUtilityWork()(); }

    /// Whether the work that is running now would run on a background thread.
    [[nodiscard]] bool isInBackground() const { return isRunningUtilityWork; }

    [[nodiscard]] std::size_t utilityWorkCount() const { return utilityQueue.size(); }

    /// Does what happens when the program ends: finishes the background work with
    /// AtEnd::Finished and drops all other work.
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
