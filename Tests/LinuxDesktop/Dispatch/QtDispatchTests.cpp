#include "LinuxDesktop/Dispatch/QtDispatch.h"
#include "LinuxDesktop/QtTest.h"

#include <atomic>
#include <latch>
#include <sys/resource.h>
#include <thread>

namespace stemvault::dispatch {
namespace {

struct QtDispatchTest : testing::Test {
    QtDispatch dispatch;
    std::vector<std::string> done;

    void expect(const std::vector<std::string>& all) const
    {
        EXPECT_TRUE(happens([&] { return done.size() >= all.size(); }));
        EXPECT_EQ(done, all);
    }
    Work note(const std::string& what)
    {
        return [this, what] { done.push_back(what); };
    }
    /// Imitates work that opens a modal window and closes it after `last` was done.
    Work modalUntil(const std::string& last)
    {
        return [this, last] {
            done.emplace_back("open");
            EXPECT_TRUE(happens([this, last] { return done.back() == last; }));
            done.emplace_back("closed");
        };
    }
};

TEST_F(QtDispatchTest, WorkGoesOnInOrderWithinAModalLoopThatWorkOpened)
{
    dispatch.mainAsync(note("1"));
    dispatch.mainAsync(modalUntil("4"));
    dispatch.mainAsync(note("2"));
    dispatch.mainAsync(modalUntil("3"));
    dispatch.mainAsync(note("3"));
    dispatch.mainAsync([this] { dispatch.mainAsync(note("4")); });
    EXPECT_TRUE(done.empty()); // Work never runs inside the call.
    expect({ "1", "open", "2", "open", "3", "closed", "4", "closed" });
}

TEST_F(QtDispatchTest, DelayedWorkRunsInOrderOfItsTimeAlsoWithinAModalLoop)
{
    const auto begin = std::chrono::steady_clock::now();
    dispatch.mainAsyncAfter(300ms, note("late"));
    dispatch.mainAsyncAfter(20ms, modalUntil("second"));
    dispatch.mainAsyncAfter(20ms, note("first"));
    dispatch.mainAsyncAfter(20ms, note("second"));
    expect({ "open", "first", "second", "closed", "late" });
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 300ms);
}

TEST_F(QtDispatchTest, WorkFromManyThreadsRunsOnceEachAndInEachThreadsOrder)
{
    constexpr int threads = 4;
    constexpr int pieces = 500;
    std::vector<int> next(threads);
    int ran = 0;
    std::vector<std::jthread> posting;
    for (int thread = 0; thread < threads; ++thread)
        posting.emplace_back([&, thread] {
            for (int piece = 0; piece < pieces; ++piece)
                dispatch.mainAsync([&, thread, piece] {
                    EXPECT_EQ(next[static_cast<std::size_t>(thread)]++, piece);
                    ++ran;
                });
        });
    EXPECT_TRUE(happens([&] { return ran == threads * pieces; }));
}

TEST_F(QtDispatchTest, ATimerRepeatsUntilItIsDestroyedWhichItsWorkMayDo)
{
    std::unique_ptr<Timer> timer = dispatch.scheduledTimer(2ms, [this, &timer] {
        done.emplace_back("tick");
        if (done.size() == 3)
            timer.reset();
    });
    const auto never = dispatch.scheduledTimer(1h, note("never"));
    dispatch.mainAsyncAfter(50ms, note("end"));
    expect({ "tick", "tick", "tick", "end" });
}

TEST_F(QtDispatchTest, UtilityWorkRunsSideBySideBehindTheRest)
{
    std::latch together(2);
    std::atomic<int> nicer = 0;
    const int ownNiceness = getpriority(PRIO_PROCESS, 0);
    for (int piece = 0; piece < 2; ++piece)
        dispatch.utilityAsync([&] {
            together.arrive_and_wait();
            nicer += getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())) > ownNiceness;
        });
    EXPECT_TRUE(happens([&] { return nicer == 2; }));
}

TEST_F(QtDispatchTest, TheEndWaitsForCopiesAndNotForLooks)
{
    for (const AtEnd atEnd : { AtEnd::Dropped, AtEnd::Finished }) {
        std::latch begun(1);
        std::latch stuck(1);
        dispatch.utilityAsync(
            [&] {
                begun.count_down();
                stuck.wait();
            },
            atEnd);
        begun.wait();
        const auto before = std::chrono::steady_clock::now();
        EXPECT_FALSE(dispatch.finish(1s));
        EXPECT_EQ(std::chrono::steady_clock::now() - before >= 1s, atEnd == AtEnd::Finished);
        stuck.count_down();
        EXPECT_TRUE(dispatch.finish(10s));
    }
}

} // namespace
} // namespace stemvault::dispatch
