#include "LinuxDesktop/QtTest.h"
#include "LinuxDesktop/Workspace/FakeProcesses.h"
#include "LinuxDesktop/Workspace/LinuxWorkspace.h"
#include "Support/FakeDispatch.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QProcess>
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <list>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace stemvault::workspace {
namespace {

using namespace std::literals;
using testing::Contains;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// Another program, which runs during the lifetime of this object.
class OtherProgram : private QProcess {
public:
    explicit OtherProgram(const char* executable, const QStringList& arguments = {})
    {
        start(executable, arguments);
    }
    ~OtherProgram() override { end(); }

    void end()
    {
        kill();
        waitForFinished();
    }

    /// The first line of its output, in which a server prints its address.
    std::string firstLine()
    {
        EXPECT_TRUE(hasSaid("\n"));
        return said.left(said.indexOf('\n')).toStdString();
    }

    /// Waits until its output contains this text.
    bool hasSaid(const char* text)
    {
        return happens([&] { return (said += readAllStandardOutput()).contains(text); });
    }

private:
    QByteArray said;
};

/// The stand-in application under any name, listed in the folder `processRoot`.
class StandIn {
public:
    StandIn(const std::string& name, const std::string& processRoot)
    {
        EXPECT_EQ(::mkfifo(commands.c_str(), 0600), 0);
        std::filesystem::copy_file(STAND_IN, folder.path(name));
        program.emplace(
            folder.path(name).c_str(), QStringList { QString::fromStdString(commands) });
        const std::string process = "/" + program->firstLine();
        std::filesystem::create_symlink("/proc" + process, processRoot + process);
    }

    void say(const std::string& command) const { std::ofstream(commands) << command << std::endl; }
    bool hasOpened() { return program->hasSaid("opened\n"); }

private:
    TemporaryFolder folder;
    std::string commands = folder.path("commands");
    std::optional<OtherProgram> program;
};

const FakeProcesses::Description reaper { "/opt/reaper\0"s, "reaper" };
constexpr int noRealProcess = 5'000'000;

/// The desktop's events arrive through the toolkit's event loop; the workspace's timers use the
/// virtual clock.
class LinuxWorkspaceTests : public testing::Test {
protected:
    LinuxWorkspaceTests() { sources.processRoot = processes.root(); }

    /// Does what the session tracker does: lists the applications, then adds observers.
    void makeWorkspace()
    {
        workspace.emplace(dispatch, sources, [this] {
            ++shown;
            return false;
        });
        [[maybe_unused]] const auto first = workspace->runningApplications();
        const auto listen = [this](WorkspaceNotification notification, const char* name) {
            workspace->addObserver(
                this, notification, [this, name] { notices.emplace_back(name); });
        };
        listen(WorkspaceNotification::DidLaunchApplication, "launch");
        listen(WorkspaceNotification::DidTerminateApplication, "terminate");
        listen(WorkspaceNotification::DidActivateApplication, "activate");
    }

    bool waitFor(const std::string& notice)
    {
        const bool came = happens([&] {
            dispatch.settle();
            return std::ranges::find(notices, notice) != notices.end();
        });
        notices.clear();
        return came;
    }

    /// Waits until the workspace lists exactly these applications.
    bool waitUntilListed(const std::vector<std::string>& expected)
    {
        return happens([&] { return names() == expected; });
    }

    /// Waits until the workspace polls by a timer.
    bool waitUntilPolling()
    {
        return happens([this] { return dispatch.timerCount() == 1; });
    }

    /// Starts a DAW without any event; the workspace must find it within five seconds.
    void expectFindsByTimer()
    {
        notices.clear();
        processes.start(noRealProcess, reaper);
        dispatch.advance(5s);
        EXPECT_THAT(notices, ElementsAre("launch"));
    }

    [[nodiscard]] std::vector<std::string> names() const
    {
        std::vector<std::string> names;
        for (const RunningApplication& application : workspace->runningApplications())
            if (application.activationPolicy == ActivationPolicy::Regular)
                names.push_back(application.localizedName.value_or("-"));
        return names;
    }

    int argumentCount = 1;
    std::string program = "tests";
    char* arguments = program.data();
    QCoreApplication loop { argumentCount, &arguments };
    FakeProcesses processes;
    WorkspaceSources sources;
    FakeDispatch dispatch;
    std::vector<std::string> notices;
    int shown = 0; ///< How often the keyboard shortcuts were shown.
    std::optional<LinuxWorkspace> workspace;
};

TEST_F(LinuxWorkspaceTests, LooksByTimerWhereNothingTells)
{
    makeWorkspace();
    processes.start(noRealProcess, reaper);
    dispatch.advance(4999ms);
    EXPECT_THAT(notices, IsEmpty());
    dispatch.advance(1ms);
    EXPECT_THAT(notices, ElementsAre("launch"));
    EXPECT_THAT(names(), ElementsAre("REAPER"));
    processes.end(noRealProcess);
    dispatch.advance(5s);
    EXPECT_THAT(notices, ElementsAre("launch", "terminate"));
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(LinuxWorkspaceTests, IsRightWhenAskedAndTellsOnceAfterwards)
{
    processes.start(noRealProcess, reaper);
    makeWorkspace();
    processes.start(noRealProcess + 1, { "C:\\ProTools.exe\0"s, "ProTools.exe" });
    EXPECT_TRUE(waitUntilListed({ "REAPER", "Pro Tools" }));
    EXPECT_THAT(notices, IsEmpty()) << "Nobody is told inside a question.";
    dispatch.settle();
    EXPECT_THAT(notices, ElementsAre("launch"));
    workspace->removeObserver(this);
    processes.end(noRealProcess);
    EXPECT_TRUE(waitUntilListed({ "Pro Tools" }));
    dispatch.settle();
    EXPECT_THAT(notices, ElementsAre("launch"));
}

TEST_F(LinuxWorkspaceTests, HearsOfUnitsAndReadsTheMenuInTheBackground)
{
    OtherProgram bus("/usr/bin/dbus-daemon", { "--session", "--nofork", "--print-address" });
    const auto address = QString::fromStdString(bus.firstLine());
    const TemporaryFolder menu;
    menu.write("app.desktop", "[Desktop Entry]\nType=Application\nName=Logic 2\nExec=/opt/Logic");
    sources.entries.folders = { menu.path() };
    sources.unitBus = QDBusConnection::connectToBus(address, "listener");
    makeWorkspace();
    // Finding the first DAW makes the workspace read the menu.
    processes.start(noRealProcess, reaper);
    EXPECT_TRUE(waitUntilListed({ "REAPER" }));
    EXPECT_TRUE(waitFor("launch"));

    processes.start(
        noRealProcess + 1, { "/opt/Logic\0"s, "Logic", 1, 200, "app-gnome-app-1.scope" });
    auto speaker = QDBusConnection::connectToBus(address, "speaker");
    EXPECT_TRUE(happens([&] {
        auto signal = QDBusMessage::createSignal(
            "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager", "UnitNew");
        signal << "app-gnome-app-1.scope" << QVariant::fromValue(QDBusObjectPath("/unit"));
        return speaker.send(signal) && !notices.empty();
    }));
    EXPECT_THAT(notices, Contains("launch"));
    dispatch.settle();
    EXPECT_TRUE(waitUntilListed({ "REAPER", "Logic 2" }));
}

/// An X11 display for a workspace, at first without a window manager.
class Display {
public:
    explicit Display(WorkspaceSources& sources, const QStringList& options = {})
        : server("/usr/bin/Xvfb",
            QStringList { "-displayfd", "1", "-nolisten", "tcp", "-noreset" } + options)
    {
        sources.display = ":" + server.firstLine();
        qputenv("DISPLAY", sources.display.c_str());
    }

    void startWindowManager()
    {
        // A window manager can miss windows that are mapped while it starts.
        windowManager.emplace(
            "/usr/bin/openbox", QStringList { "--sm-disable", "--startup", "echo ready" });
        ASSERT_TRUE(windowManager->hasSaid("ready\n"));
    }
    void end() { server.end(); }

private:
    OtherProgram server;
    std::optional<OtherProgram> windowManager;
};

TEST_F(LinuxWorkspaceTests, FollowsWindowsAndProcessesOnX11)
{
    Display display(sources);
    display.startWindowManager();
    makeWorkspace();

    const StandIn first("first", processes.root());
    first.say("open");
    EXPECT_TRUE(waitFor("launch"));
    EXPECT_TRUE(waitUntilListed({ "first" }));
    std::optional<StandIn> second(std::in_place, "reaper", processes.root());
    second->say("open");
    EXPECT_TRUE(waitFor("activate"));
    EXPECT_TRUE(waitUntilListed({ "first", "REAPER" }));
    first.say("close");
    first.say("open");
    EXPECT_TRUE(waitFor("activate"));
    EXPECT_THAT(names(), ElementsAre("first", "REAPER")) << "It stays one without its window.";
    second.reset();
    EXPECT_TRUE(waitFor("terminate"));
    EXPECT_THAT(names(), ElementsAre("first"));

    EXPECT_EQ(dispatch.timerCount(), 0U);
    display.end();
    EXPECT_TRUE(waitUntilPolling()) << "Processes are compared once the server has gone.";
    expectFindsByTimer();
    EXPECT_THAT(names(), UnorderedElementsAre("first", "REAPER"));
}

TEST_F(LinuxWorkspaceTests, OnlyAnOrdinaryWindowMakesAnApplication)
{
    const std::string type = "_NET_WM_WINDOW_TYPE _NET_WM_WINDOW_TYPE_";
    const struct {
        std::string name, properties;
        bool isKnownByServer, isListed;
    } rows[] = {
        { "editor", type + "NORMAL", true, true },
        { "panel", type + "DOCK", true, false },
        { "splash", type + "SPLASH", true, false },
        { "applet", "_NET_WM_STATE _NET_WM_STATE_SKIP_TASKBAR", true, false },
        { "sandboxed", "_NET_WM_PID 2", true, true },
        { "last", "", true, true },
        // Where the server does not know a window's process, the window names it.
        { "silent", "", false, false },
        { "remote", "_NET_WM_PID own WM_CLIENT_MACHINE elsewhere", false, false },
        { "own", "_NET_WM_PID own", false, true },
    };
    for (const bool isKnownByServer : { true, false }) {
        Display display(
            sources, isKnownByServer ? QStringList {} : QStringList { "-extension", "X-Resource" });
        display.startWindowManager();
        makeWorkspace();
        std::list<StandIn> programs;
        std::vector<std::string> expected;
        for (const auto& row : rows) {
            if (row.isKnownByServer != isKnownByServer)
                continue;
            programs.emplace_back(row.name, processes.root()).say("open " + row.properties);
            EXPECT_TRUE(programs.back().hasOpened()) << row.name;
            if (row.isListed)
                expected.push_back(row.name);
        }
        EXPECT_TRUE(waitUntilListed(expected)) << testing::PrintToString(names());
        workspace.reset();
    }
}

TEST_F(LinuxWorkspaceTests, AsksAServerThatHasGoneNoMore)
{
    Display display(sources);
    makeWorkspace();
    display.end();
    EXPECT_TRUE(happens(
        [] { return !QCoreApplication::eventDispatcher()->processEvents(QEventLoop::AllEvents); }));
}

TEST_F(LinuxWorkspaceTests, LooksByTimerOnX11OnlyWithoutAWindowManager)
{
    Display display(sources);
    makeWorkspace();
    EXPECT_TRUE(waitUntilPolling());
    expectFindsByTimer();

    display.startWindowManager();
    EXPECT_TRUE(happens([this] { return dispatch.timerCount() == 0; }))
        << "The window manager tells of windows now.";
    processes.start(noRealProcess + 1, reaper);
    dispatch.advance(1min);
    EXPECT_THAT(notices, ElementsAre("launch"));
}

TEST_F(LinuxWorkspaceTests, LooksByTimerOnWaylandBesideX11)
{
    Display display(sources);
    display.startWindowManager();
    sources.isWayland = true;
    makeWorkspace();
    expectFindsByTimer();
}

TEST_F(LinuxWorkspaceTests, KnowsTheKindOfSession)
{
    const struct {
        const char *what, *waylandDisplay, *sessionType;
        bool isWayland;
    } rows[] = {
        { "X11", "", "x11", false },
        { "a compositor", "wayland-0", "", true },
        { "a login of that kind", "", "wayland", true },
    };
    // Neither the machine's bus nor one that the library would start.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    for (const auto& row : rows) {
        qputenv("DISPLAY", ":77");
        qputenv("WAYLAND_DISPLAY", row.waylandDisplay);
        qputenv("XDG_SESSION_TYPE", row.sessionType);
        const auto found = WorkspaceSources::ofThisSession();
        EXPECT_EQ(found.isWayland, row.isWayland) << row.what;
        EXPECT_EQ(found.unitBus.has_value(), row.isWayland) << row.what;
        EXPECT_EQ(found.interval, 5s);
        EXPECT_EQ(found.titlePause, 2s);
        EXPECT_EQ(found.display, ":77");
    }
    for (const char* name : { "DBUS_SESSION_BUS_ADDRESS", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE" })
        qunsetenv(name);
}

TEST_F(LinuxWorkspaceTests, ANewTitleOfADAWCountsAsAnActivation)
{
    Display display(sources);
    display.startWindowManager();
    makeWorkspace();
    const StandIn other("other", processes.root());
    const StandIn daw("reaper", processes.root());
    other.say("open");
    EXPECT_TRUE(waitFor("activate"));
    daw.say("open");
    EXPECT_TRUE(waitFor("activate"));
    const auto told = [this] { return std::ranges::count(notices, "activate"); };
    // A program's changes arrive in order, so once its new window has arrived, earlier ones have.
    const auto takeAllOf = [this](const StandIn& standIn) {
        notices.clear();
        standIn.say("open");
        EXPECT_TRUE(waitFor("activate"));
    };
    int song = 0;
    EXPECT_TRUE(happens([&] {
        daw.say("title Song " + std::to_string(++song));
        return told() > 0;
    })) << "Its title is followed.";
    takeAllOf(daw);
    dispatch.advance(1min);
    notices.clear();

    daw.say("title Song B");
    EXPECT_TRUE(happens([&] { return told() == 1; })) << "At once.";
    dispatch.advance(1999ms);
    EXPECT_EQ(told(), 1);
    dispatch.advance(1min);
    EXPECT_EQ(told(), 2) << "And a little later.";

    notices.clear();
    for (int take = 0; take < 100; ++take)
        daw.say("title Take " + std::to_string(take));
    EXPECT_TRUE(happens([&] { return told() == 1; }));
    takeAllOf(daw);
    dispatch.advance(1999ms);
    EXPECT_THAT(notices, IsEmpty()) << "However often titles change.";
    dispatch.advance(1min);
    EXPECT_LE(told(), 2) << "Some of them were never read.";

    notices.clear();
    daw.say("title Take 99");
    other.say("title Song C");
    takeAllOf(daw);
    takeAllOf(other);
    dispatch.advance(1min);
    EXPECT_THAT(notices, IsEmpty()) << "The same title, and that of no DAW.";
}

TEST_F(LinuxWorkspaceTests, OpensWebPagesAlone)
{
    const struct {
        std::string url;
        bool isOpened;
    } rows[] = {
        { "https://stemvault.example/?title=x", true },
        { "HTTPS://stemvault.example", true },
        { "http://localhost:8000/?autoscan=1", true },
        { "https:", false },
        { "file:///usr/bin/true", false },
        { "ssh://-oProxyCommand=true/", false },
        { "--help", false },
        { "", false },
    };
    const TemporaryFolder folder;
    folder.write("xdg-open", "#!/bin/sh\necho \"$*\" >> \"${0%/*}/opened\"\n");
    std::filesystem::permissions(folder.path("xdg-open"), std::filesystem::perms::owner_all);
    makeWorkspace();
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", folder.path().c_str());
    std::string opened;
    for (const auto& row : rows) {
        EXPECT_EQ(workspace->open(row.url), row.isOpened) << row.url;
        opened += row.isOpened ? row.url + "\n" : "";
        EXPECT_EQ(folder.read("opened"), opened) << row.url;
    }
    std::filesystem::remove(folder.path("xdg-open"));
    EXPECT_FALSE(workspace->open(rows[0].url)) << "no program opens web pages";
    qputenv("PATH", path);
}

TEST_F(LinuxWorkspaceTests, TheKeyboardsShortcutsAreShownByTheDesktop)
{
    makeWorkspace();
    const std::string url = "x-apple.systempreferences:com.apple.preference.keyboard?x";
    EXPECT_FALSE(workspace->open(url));
    EXPECT_EQ(shown, 1);
}

} // namespace
} // namespace stemvault::workspace
