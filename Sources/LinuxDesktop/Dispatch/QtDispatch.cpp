#include "LinuxDesktop/Dispatch/QtDispatch.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimerEvent>

#include <algorithm>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace stemvault::dispatch {

namespace {

using namespace std::chrono_literals;

// Far more than are normally busy, because a stuck tool or an unresponsive drive keeps its thread.
constexpr int utilityThreads = 16;
constexpr auto utilityThreadExpiry = 5s;
// Most droppable work takes less; work that takes longer may be stuck.
constexpr auto droppedWorkGrace = 200ms;
constexpr int utilityNiceness = 5;

const QEvent::Type wakeUp = static_cast<QEvent::Type>(QEvent::registerEventType());

// On Linux, the only priority of a thread in the default scheduling class is its niceness, which
// the tools that it starts inherit.
void becomeUtilityThread()
{
    thread_local bool done = false;
    if (std::exchange(done, true))
        return;
    const int ofMainThread = ::getpriority(PRIO_PROCESS, static_cast<id_t>(::getpid()));
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), ofMainThread + utilityNiceness);
}

std::unique_ptr<QThreadPool> makePool()
{
    auto pool = std::make_unique<QThreadPool>();
    pool->setMaxThreadCount(utilityThreads);
    pool->setExpiryTimeout(
        static_cast<int>(std::chrono::milliseconds(utilityThreadExpiry).count()));
    return pool;
}

class RepeatingTimer final : public QObject, public Timer {
public:
    RepeatingTimer(std::chrono::milliseconds interval, Work repeated)
        : work(std::make_shared<const Work>(std::move(repeated)))
    {
        startTimer(interval, Qt::PreciseTimer);
    }

protected:
    void timerEvent(QTimerEvent* /*event*/) override
    {
        const auto kept = work; // The work may destroy this timer.
        (*kept)();
    }

private:
    std::shared_ptr<const Work> work;
};

} // namespace

QtDispatch::QtDispatch() : droppedPool(makePool()), finishedPool(makePool()) { }

QtDispatch::~QtDispatch()
{
    // Destroying a busy pool would block, so if work is stuck, the pools are leaked.
    if (finish(0ms))
        return;
    static_cast<void>(droppedPool.release());
    static_cast<void>(finishedPool.release());
}

WallTime QtDispatch::now() const
{
    return std::chrono::system_clock::now();
}

void QtDispatch::mainAsync(Work work)
{
    const std::scoped_lock lock(mutex);
    mainQueue.push_back(std::move(work));
    wakeLocked();
}

void QtDispatch::wakeLocked()
{
    if (!std::exchange(isWoken, true))
        QCoreApplication::postEvent(this, new QEvent(wakeUp));
}

bool QtDispatch::event(QEvent* event)
{
    if (event->type() != wakeUp)
        return QObject::event(event);
    runMainQueue();
    return true;
}

// Runs the work that is queued now. Work that is queued meanwhile waits for the next event, so that
// windows are served in between.
void QtDispatch::runMainQueue()
{
    std::uint64_t end = 0;
    {
        const std::scoped_lock lock(mutex);
        isWoken = false;
        end = taken + mainQueue.size();
    }
    while (const Work work = takeMainWork(end))
        work();
}

// If more work is queued behind the piece taken, posts another event first, so that a nested event
// loop run by the piece continues with the queue.
Work QtDispatch::takeMainWork(std::uint64_t end)
{
    const std::scoped_lock lock(mutex);
    if (taken >= end || mainQueue.empty())
        return {};
    Work work = std::move(mainQueue.front());
    mainQueue.pop_front();
    ++taken;
    if (!mainQueue.empty())
        wakeLocked();
    return work;
}

void QtDispatch::mainAsyncAfter(std::chrono::milliseconds delay, Work work)
{
    const auto added = delayed.emplace(std::chrono::steady_clock::now() + delay, std::move(work));
    if (added == delayed.begin())
        armDelayTimer();
}

// Always starts a new timer, because one whose event is being handled does not fire in an event
// loop that the work runs.
void QtDispatch::armDelayTimer()
{
    if (delayed.empty())
        return delayTimer.stop();
    const auto left = delayed.begin()->first - std::chrono::steady_clock::now();
    const auto wait = std::clamp<std::chrono::milliseconds>(
        std::chrono::ceil<std::chrono::milliseconds>(left), 0ms, 24h);
    delayTimer.start(static_cast<int>(wait.count()), Qt::PreciseTimer, this);
}

void QtDispatch::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == delayTimer.timerId())
        runDueWork();
}

void QtDispatch::runDueWork()
{
    const auto turn = std::chrono::steady_clock::now();
    while (!delayed.empty() && delayed.begin()->first <= turn) {
        const Work work = std::move(delayed.begin()->second);
        delayed.erase(delayed.begin());
        armDelayTimer();
        work();
    }
    armDelayTimer();
}

void QtDispatch::utilityAsync(Work work, AtEnd atEnd)
{
    (atEnd == AtEnd::Finished ? finishedPool : droppedPool)->start([work = std::move(work)] {
        becomeUtilityThread();
        work();
    });
}

std::unique_ptr<Timer> QtDispatch::scheduledTimer(std::chrono::milliseconds interval, Work work)
{
    return std::make_unique<RepeatingTimer>(interval, std::move(work));
}

bool QtDispatch::finish(std::chrono::milliseconds limit)
{
    droppedPool->clear();
    const bool isFinished = finishedPool->waitForDone(static_cast<int>(limit.count()));
    const auto rest = std::min<std::chrono::milliseconds>(limit, droppedWorkGrace);
    return droppedPool->waitForDone(static_cast<int>(rest.count())) && isFinished;
}

} // namespace stemvault::dispatch
