#include "Support/FakeDispatch.h"

#include <algorithm>
#include <functional>

namespace stemvault {

class FakeDispatch::FakeTimer : public Timer {
public:
    FakeTimer(FakeDispatch& owner, std::chrono::milliseconds time, Work repeated)
        : dispatch(owner), interval(time), work(std::move(repeated))
    {
        dispatch.timers.insert(this);
        arm();
    }
    ~FakeTimer() override { dispatch.timers.erase(this); }

private:
    void arm()
    {
        dispatch.schedule(interval, [this, alive = std::weak_ptr<char>(life)] {
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

namespace {

Work takeFront(std::deque<Work>& queue)
{
    Work work = std::move(queue.front());
    queue.pop_front();
    return work;
}

} // namespace

WallTime FakeDispatch::now() const
{
    return WallTime(std::chrono::hours(24 * 365 * 50)) + clock + wallOffset;
}

void FakeDispatch::mainAsync(Work work)
{
    mainQueue.push_back(std::move(work));
}

void FakeDispatch::mainAsyncAfter(std::chrono::milliseconds delay, Work work)
{
    schedule(delay, std::move(work));
}

void FakeDispatch::utilityAsync(Work work, AtEnd /*atEnd*/)
{
    utilityQueue.push_back(std::move(work));
}

std::unique_ptr<Timer> FakeDispatch::scheduledTimer(std::chrono::milliseconds interval, Work work)
{
    return std::make_unique<FakeTimer>(*this, interval, std::move(work));
}

void FakeDispatch::schedule(std::chrono::milliseconds delay, Work work)
{
    delayed.emplace(Key(clock + delay, sequence++), std::move(work));
}

void FakeDispatch::settleMainQueue()
{
    while (!mainQueue.empty())
        takeFront(mainQueue)();
}

void FakeDispatch::settle()
{
    while (!mainQueue.empty() || !utilityQueue.empty())
        takeFront(mainQueue.empty() ? utilityQueue : mainQueue)();
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

void FakeDispatch::runOldestUtilityWork()
{
    takeFront(utilityQueue)();
}

Work FakeDispatch::holdOldestUtilityWork()
{
    return takeFront(utilityQueue);
}

void FakeDispatch::runNewestUtilityWork()
{
    Work work = std::move(utilityQueue.back());
    utilityQueue.pop_back();
    work();
}

} // namespace stemvault
