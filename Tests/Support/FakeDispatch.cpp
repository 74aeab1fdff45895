#include "Support/FakeDispatch.h"

#include <algorithm>
#include <functional>

namespace stemvault {

class FakeDispatch::FakeTimer : public Timer {
public:
    FakeTimer(FakeDispatch& owner, std::chrono::milliseconds time, Work repeated)
        : dispatch(owner), interval(time), work(std::move(repeated))
    {
        ++dispatch.timers;
        arm();
    }
    ~FakeTimer() override { --dispatch.timers; }

private:
    void arm()
    {
        dispatch.mainAsyncAfter(interval, [this, alive = std::weak_ptr<char>(life)] {
            if (alive.expired())
                return;
            arm();
            // A copy: the work may destroy its own timer.
            const Work due = work;
            due();
        });
    }

    FakeDispatch& dispatch;
    std::chrono::milliseconds interval;
    Work work;
    std::shared_ptr<char> life = std::make_shared<char>();
};

std::unique_ptr<Timer> FakeDispatch::scheduledTimer(std::chrono::milliseconds interval, Work work)
{
    return std::make_unique<FakeTimer>(*this, interval, std::move(work));
}

Work FakeDispatch::holdOldestUtilityWork()
{
    return [this, work = takeFront(utilityQueue).work] {
        const bool before = std::exchange(isRunningUtilityWork, true);
        work();
        isRunningUtilityWork = before;
    };
}

void FakeDispatch::settleMainQueue()
{
    while (!mainQueue.empty())
        takeFront(mainQueue)();
}

void FakeDispatch::settle()
{
    while (!mainQueue.empty() || !utilityQueue.empty())
        mainQueue.empty() ? runOldestUtilityWork() : takeFront(mainQueue)();
}

void FakeDispatch::endProgram()
{
    while (!utilityQueue.empty()) {
        const UtilityWork next = takeFront(utilityQueue);
        if (next.atEnd == AtEnd::Finished)
            next.work();
    }
    mainQueue.clear();
    delayed.clear();
}

void FakeDispatch::advance(std::chrono::milliseconds duration)
{
    const auto end = clock + duration;
    settle();
    while (!delayed.empty() && delayed.begin()->first.first <= end) {
        auto due = delayed.extract(delayed.begin());
        clock = due.key().first;
        due.mapped()();
        settle();
    }
    clock = std::max(clock, end);
}

} // namespace stemvault
