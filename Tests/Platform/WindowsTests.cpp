#include "LinuxDesktop/QtTest.h"
#include "LinuxDesktop/Windows/QtWindows.h"
#include "Platform/Stages.h"
#include "Support/FakePlatform.h"

#include <QCoreApplication>

#include <functional>

namespace stemvault {
namespace {

// How a view looks and reacts to input is tested with the real adapter only: tests of the program
// read a view as a value and call the actions of its buttons.

struct FakeWindowsStage {
    static constexpr const char* name = "Fake";

    void runEventLoop() { dispatch.settle(); }

    FakeDispatch dispatch;
    FakeWindows windows { dispatch };
};

struct QtWindowsStage {
    static constexpr const char* name = "Qt";

    static void runEventLoop()
    {
        bool isOver = false;
        QMetaObject::invokeMethod(
            qApp, [&isOver] { isOver = true; }, Qt::QueuedConnection);
        EXPECT_TRUE(happens([&isOver] { return isOver; }));
    }

    windows::QtWindows windows { "", [](QWidget&) {} };
};

template <typename Stage> struct WindowsTests : testing::Test {
};
using WindowsStages = testing::Types<FakeWindowsStage, QtWindowsStage>;
TYPED_TEST_SUITE(WindowsTests, WindowsStages, StageNames);

TYPED_TEST(WindowsTests, TheBodyIsCalledOnceForEachDrawing)
{
    enum Step { Center, Show, NeedDisplay, RunEventLoop };
    const struct {
        const char* what;
        std::vector<Step> steps;
        int drawings;
    } rows[] = {
        { "only made", { RunEventLoop }, 0 },
        { "shown", { Show }, 1 },
        { "shown while it is shown", { Show, Show }, 1 },
        { "centred, to know its size", { Center }, 1 },
        { "centred and shown", { Center, Show }, 2 },
        { "out of date while it is hidden", { NeedDisplay, RunEventLoop }, 0 },
        { "out of date, inside the call", { Show, NeedDisplay }, 1 },
        { "out of date", { Show, NeedDisplay, RunEventLoop }, 2 },
        { "out of date three times in a row",
            { Show, NeedDisplay, NeedDisplay, NeedDisplay, RunEventLoop }, 2 },
        { "out of date twice", { Show, NeedDisplay, RunEventLoop, NeedDisplay, RunEventLoop }, 3 },
    };
    for (const auto& row : rows) {
        TypeParam stage;
        int drawings = 0;
        const auto window = stage.windows.window([&drawings]() -> View {
            ++drawings;
            return Stack {};
        });
        for (const Step step : row.steps)
            switch (step) {
            case Center:
                window->center();
                break;
            case Show:
                window->makeKeyAndOrderFront();
                break;
            case NeedDisplay:
                window->setNeedsDisplay();
                break;
            case RunEventLoop:
                stage.runEventLoop();
                break;
            }
        EXPECT_EQ(drawings, row.drawings) << row.what;
    }
}

TYPED_TEST(WindowsTests, AWindowThatIsGoneIsNotDrawn)
{
    TypeParam stage;
    int drawings = 0;
    auto window = stage.windows.window([&drawings]() -> View {
        ++drawings;
        return Stack {};
    });
    window->makeKeyAndOrderFront();
    window->setNeedsDisplay();
    window.reset();
    stage.runEventLoop();
    EXPECT_EQ(drawings, 1);
}

} // namespace
} // namespace stemvault
