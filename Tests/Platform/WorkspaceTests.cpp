#include "LinuxDesktop/Dispatch/QtDispatch.h"
#include "LinuxDesktop/QtTest.h"
#include "LinuxDesktop/Workspace/FakeProcesses.h"
#include "LinuxDesktop/Workspace/LinuxWorkspace.h"
#include "Platform/Stages.h"
#include "Support/FakePlatform.h"

#include <filesystem>
#include <functional>

namespace stemvault {
namespace {

using namespace std::string_literals;

// How applications are recognised is tested with the real adapter only: the fake lists the
// applications that a test adds.

constexpr int reaper = 5'000'001; // Larger than any process ID.
constexpr int proTools = 5'000'002;

struct FakeWorkspaceStage {
    static constexpr const char* name = "Fake";

    void start(int process)
    {
        if (process == reaper)
            workspace.launch(process, "com.cockos.reaper", "REAPER");
        else
            workspace.launch(process, "com.avid.ProTools", "Pro Tools");
    }
    void end(int process) { workspace.quit(process); }
    [[nodiscard]] std::vector<std::string> opened() const { return workspace.opened; }
    bool happens(const std::function<bool()>& condition) { return condition(); }

    FakeWorkspace workspace;
};

struct LinuxWorkspaceStage {
    static constexpr const char* name = "Linux";

    LinuxWorkspaceStage()
    {
        folder.write("xdg-open", "#!/bin/sh\necho \"$*\" >> \"${0%/*}/opened\"\n");
        std::filesystem::permissions(folder.path("xdg-open"), std::filesystem::perms::owner_all);
        qputenv("PATH", folder.path().c_str());
    }
    ~LinuxWorkspaceStage()
    {
        qputenv("PATH", path);
        EXPECT_TRUE(happens([this] { return dispatch.finish(1ms); }));
    }
    LinuxWorkspaceStage(const LinuxWorkspaceStage&) = delete;
    LinuxWorkspaceStage& operator=(const LinuxWorkspaceStage&) = delete;

    void start(int process) const
    {
        if (process == reaper)
            processes.start(process, { "/opt/reaper\0"s, "reaper" });
        else
            processes.start(process, { "C:\\ProTools.exe\0"s, "ProTools.exe", 1, 200 });
    }
    void end(int process) const { processes.end(process); }
    [[nodiscard]] std::vector<std::string> opened() const
    {
        std::vector<std::string> urls;
        const QStringList lines =
            QString::fromStdString(folder.read("opened")).split('\n', Qt::SkipEmptyParts);
        for (const QString& line : lines)
            urls.push_back(line.toStdString());
        return urls;
    }
    bool happens(const std::function<bool()>& condition) { return stemvault::happens(condition); }

    [[nodiscard]] workspace::WorkspaceSources sources() const
    {
        workspace::WorkspaceSources all;
        all.processRoot = processes.root();
        all.interval = 10ms;
        return all;
    }

    TemporaryFolder folder;
    const QByteArray path = qgetenv("PATH");
    workspace::FakeProcesses processes;
    dispatch::QtDispatch dispatch;
    workspace::LinuxWorkspace workspace { dispatch, sources(), [] { return false; } };
};

template <typename Stage> struct WorkspaceTests : testing::Test {
};
using WorkspaceStages = testing::Types<FakeWorkspaceStage, LinuxWorkspaceStage>;
TYPED_TEST_SUITE(WorkspaceTests, WorkspaceStages, StageNames);

std::vector<std::string> namesOf(const Workspace& workspace)
{
    std::vector<std::string> names;
    for (const RunningApplication& application : workspace.runningApplications())
        names.push_back(application.localizedName.value_or("-"));
    return names;
}

TYPED_TEST(WorkspaceTests, TellsOfEachLaunchAndEndAndListsTheOldestFirst)
{
    TypeParam stage;
    EXPECT_EQ(namesOf(stage.workspace), std::vector<std::string>());
    std::vector<std::string> notices;
    const auto observe = [&](WorkspaceNotification notification, const char* name) {
        stage.workspace.addObserver(
            &notices, notification, [&notices, name] { notices.emplace_back(name); });
    };
    observe(WorkspaceNotification::DidLaunchApplication, "launch");
    observe(WorkspaceNotification::DidTerminateApplication, "end");
    const struct {
        const char* what;
        std::function<void()> step;
        std::vector<std::string> notices, running;
    } rows[] = {
        { "one starts", [&] { stage.start(reaper); }, { "launch" }, { "REAPER" } },
        { "another starts", [&] { stage.start(proTools); }, { "launch" },
            { "REAPER", "Pro Tools" } },
        { "the first ends", [&] { stage.end(reaper); }, { "end" }, { "Pro Tools" } },
    };
    for (const auto& row : rows) {
        notices.clear();
        row.step();
        EXPECT_TRUE(stage.happens([&notices] { return !notices.empty(); })) << row.what;
        EXPECT_EQ(notices, row.notices) << row.what;
        EXPECT_EQ(namesOf(stage.workspace), row.running) << row.what;
    }
}

TYPED_TEST(WorkspaceTests, ARemovedObserverHearsNothingNotEvenOfTheEventAtHand)
{
    constexpr auto launched = WorkspaceNotification::DidLaunchApplication;
    TypeParam stage;
    static_cast<void>(stage.workspace.runningApplications());
    std::vector<std::string> told;
    const char handles[] = "0123"; // The address of each character is a handle.
    stage.workspace.addObserver(&handles[0], launched, [&] { told.emplace_back("before"); });
    stage.workspace.addObserver(&handles[1], launched, [&] {
        told.emplace_back("remover");
        stage.workspace.removeObserver(&handles[2]);
    });
    stage.workspace.addObserver(&handles[2], launched, [&] { told.emplace_back("removed"); });
    stage.workspace.addObserver(&handles[3], launched, [&] { told.emplace_back("last"); });
    stage.workspace.removeObserver(&handles[0]);
    stage.workspace.removeObserver(&handles[0]); // Removing it again does nothing.
    stage.start(reaper);
    EXPECT_TRUE(stage.happens([&told] { return !told.empty() && told.back() == "last"; }));
    EXPECT_THAT(told, ElementsAre("remover", "last"));
}

TYPED_TEST(WorkspaceTests, OnlyWebPagesReachTheBrowser)
{
    const struct {
        std::string url;
        bool isOpened;
    } rows[] = {
        { "https://stemvault.example/?title=x", true },
        { "HTTP://localhost:8000", true },
        { "https:", false },
        { "file:///usr/bin/true", false },
        { "javascript:alert(1)", false },
        { "/usr/bin/true", false },
        { "--help", false },
        { "", false },
    };
    for (const auto& row : rows) {
        TypeParam stage;
        EXPECT_EQ(stage.workspace.open(row.url), row.isOpened) << row.url;
        const auto expected = row.isOpened ? std::vector { row.url } : std::vector<std::string>();
        EXPECT_EQ(stage.opened(), expected) << row.url;
    }
}

} // namespace
} // namespace stemvault
