#include "LinuxDesktop/Dispatch/QtDispatch.h"
#include "LinuxDesktop/QtTest.h"
#include "Platform/Stages.h"
#include "Support/FakeDispatch.h"

#include <atomic>
#include <functional>
#include <thread>

namespace stemvault {
namespace {

// Only the real adapter runs background work on other threads and side by side. The fake runs
// everything on the test's thread, so that tests are repeatable.

struct FakeDispatchStage {
    static constexpr const char* name = "Fake";

    bool happens(const std::function<bool()>& condition)
    {
        for (int step = 0; step < 1000 && !condition(); ++step)
            dispatch.advance(1ms);
        return condition();
    }
    void end() { dispatch.endProgram(); }

    FakeDispatch dispatch;
};

struct QtDispatchStage {
    static constexpr const char* name = "Qt";

    bool happens(const std::function<bool()>& condition) { return stemvault::happens(condition); }
    void end() { EXPECT_TRUE(dispatch.finish(10s)); }

    dispatch::QtDispatch dispatch;
};

template <typename Stage> struct DispatchTests : testing::Test {
};
using DispatchStages = testing::Types<FakeDispatchStage, QtDispatchStage>;
TYPED_TEST_SUITE(DispatchTests, DispatchStages, StageNames);

using Notes = std::vector<std::string>;

/// What the steps of a row use.
struct Desk {
    Dispatch& dispatch;
    Notes& notes;
    std::unique_ptr<Timer>& timer;

    [[nodiscard]] Work note(const std::string& text) const
    {
        return [this, text, main = std::this_thread::get_id()] {
            EXPECT_EQ(std::this_thread::get_id(), main) << text << " on another thread";
            notes.push_back(text);
        };
    }
};

TYPED_TEST(DispatchTests, WorkRunsInOrderAndNeverInsideTheCallThatAsksForIt)
{
    const struct {
        const char* what;
        std::function<void(const Desk&)> steps;
        Notes expected;
    } rows[] = {
        { "the main queue in the order of the calls",
            [](const Desk& desk) {
                desk.dispatch.mainAsync(desk.note("first"));
                desk.dispatch.mainAsync(desk.note("second"));
                desk.note("returned")();
            },
            { "returned", "first", "second" } },
        { "work that work asks for behind what waits already",
            [](const Desk& desk) {
                desk.dispatch.mainAsync([&desk] {
                    desk.dispatch.mainAsync(desk.note("asked for by the first"));
                    desk.note("first")();
                });
                desk.dispatch.mainAsync(desk.note("second"));
            },
            { "first", "second", "asked for by the first" } },
        { "delayed work in the order of its due times",
            [](const Desk& desk) {
                desk.dispatch.mainAsyncAfter(30ms, desk.note("late"));
                desk.dispatch.mainAsyncAfter(5ms, desk.note("early"));
            },
            { "early", "late" } },
        { "equal due times in the order of the calls",
            [](const Desk& desk) {
                desk.dispatch.mainAsyncAfter(5ms, desk.note("first"));
                desk.dispatch.mainAsyncAfter(5ms, desk.note("second"));
            },
            { "first", "second" } },
        { "no delay at all",
            [](const Desk& desk) {
                desk.dispatch.mainAsyncAfter(0ms, desk.note("work"));
                desk.note("returned")();
            },
            { "returned", "work" } },
        { "background work that brings back a result",
            [](const Desk& desk) {
                desk.dispatch.utilityAsync(
                    [&queues = desk.dispatch, result = desk.note("result")] {
                        queues.mainAsync(result);
                    },
                    AtEnd::Dropped);
                desk.note("returned")();
            },
            { "returned", "result" } },
        { "a timer until its own work destroys it",
            [](const Desk& desk) {
                desk.timer = desk.dispatch.scheduledTimer(5ms, [&desk] {
                    desk.note("tick")();
                    if (desk.notes.size() == 3)
                        desk.timer.reset();
                });
                desk.note("returned")();
            },
            { "returned", "tick", "tick" } },
        { "a timer that is destroyed before its time",
            [](const Desk& desk) {
                desk.timer = desk.dispatch.scheduledTimer(20ms, desk.note("tick"));
                desk.dispatch.mainAsyncAfter(5ms, [&desk] { desk.timer.reset(); });
            },
            {} },
    };
    for (const auto& row : rows) {
        TypeParam stage;
        Notes notes;
        std::unique_ptr<Timer> timer;
        const Desk desk { stage.dispatch, notes, timer };
        row.steps(desk);
        bool isOver = false;
        stage.dispatch.mainAsyncAfter(60ms, [&isOver] { isOver = true; });
        EXPECT_TRUE(stage.happens([&isOver] { return isOver; })) << row.what;
        EXPECT_EQ(notes, row.expected) << row.what;
    }
}

TYPED_TEST(DispatchTests, DelayedWorkIsNeverEarlyByTheWallClockEither)
{
    TypeParam stage;
    const WallTime begin = stage.dispatch.now();
    std::optional<WallTime> ran;
    stage.dispatch.mainAsyncAfter(30ms, [&] { ran = stage.dispatch.now(); });
    ASSERT_TRUE(stage.happens([&ran] { return ran.has_value(); }));
    EXPECT_GE(*ran - begin, 29ms);
}

TYPED_TEST(DispatchTests, TheEndOfTheProgramWaitsForWorkThatIsToBeFinished)
{
    TypeParam stage;
    std::atomic<bool> isCopied = false;
    stage.dispatch.utilityAsync([&isCopied] { isCopied = true; }, AtEnd::Finished);
    stage.end();
    EXPECT_TRUE(isCopied);
}

} // namespace
} // namespace stemvault
