#include "LinuxDesktop/Processes/FakeProcesses.h"
#include "LinuxDesktop/Qt/QtDispatch.h"
#include "LinuxDesktop/Qt/QtTest.h"
#include "LinuxDesktop/Workspace/LinuxWorkspace.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDeadlineTimer>
#include <QProcess>
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace stemvault {
namespace {

using namespace std::literals;
using testing::Contains;
using testing::IsEmpty;

/// Another program for as long as this lives.
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

    /// The first that it says: a server says where it is.
    std::string firstLine()
    {
        EXPECT_TRUE(hasSaid("\n"));
        return said.left(said.indexOf('\n')).toStdString();
    }

    /// Waits for it.
    bool hasSaid(const char* text)
    {
        return happens([&] { return (said += readAllStandardOutput()).contains(text); });
    }

private:
    QByteArray said;
};

/// An application under a name of one's choice, among the processes of a folder.
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

private:
    TemporaryFolder folder;
    std::string commands = folder.path("commands");
    std::optional<OtherProgram> program;
};

class LinuxWorkspaceTests : public testing::Test {
protected:
    LinuxWorkspaceTests()
    {
        sources.processRoot = processes.root();
        sources.interval = 1h;
    }
    ~LinuxWorkspaceTests() override
    {
        EXPECT_TRUE(happens([this] { return dispatch.finish(1ms); }));
    }

    /// As the session tracker does it: asks first, listens then.
    void makeWorkspace()
    {
        workspace.emplace(dispatch, sources);
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
        const bool came =
            happens([&] { return std::ranges::find(notices, notice) != notices.end(); });
        notices.clear();
        return came;
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
    QtDispatch dispatch;
    std::vector<std::string> notices;
    std::optional<LinuxWorkspace> workspace;
};

const FakeProcesses::Description reaper { "/opt/reaper\0"s, "reaper" };
constexpr int noRealProcess = 5'000'000;

TEST_F(LinuxWorkspaceTests, LooksByTimerWhereNothingTells)
{
    sources.interval = 10ms;
    makeWorkspace();
    processes.start(noRealProcess, reaper);
    EXPECT_TRUE(waitFor("launch"));
    EXPECT_THAT(names(), ElementsAre("REAPER"));
    processes.end(noRealProcess);
    EXPECT_TRUE(waitFor("terminate"));
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(LinuxWorkspaceTests, IsRightWhenAskedAndTellsOnceAfterwards)
{
    processes.start(noRealProcess, reaper);
    makeWorkspace();
    processes.start(noRealProcess + 1, { "C:\\ProTools.exe\0"s, "ProTools.exe" });
    const QDeadlineTimer deadline(10s);
    while (names().size() != 2 && !deadline.hasExpired()) { }
    EXPECT_THAT(names(), ElementsAre("REAPER", "Pro Tools"));
    EXPECT_THAT(notices, IsEmpty()) << "Nobody is told inside a question.";
    EXPECT_TRUE(waitFor("launch"));
    workspace->removeObserver(this);
    processes.end(noRealProcess);
    EXPECT_TRUE(happens([this] { return names() == std::vector { "Pro Tools"s }; }));
    while (QCoreApplication::eventDispatcher()->processEvents(QEventLoop::AllEvents)) { }
    EXPECT_THAT(notices, IsEmpty());
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
    // The first DAW makes it read the menu.
    processes.start(noRealProcess, reaper);
    EXPECT_TRUE(happens([this] { return names() == std::vector { "REAPER"s }; }));
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
    EXPECT_TRUE(happens([this] { return names() == std::vector { "REAPER"s, "Logic 2"s }; }));
}

TEST_F(LinuxWorkspaceTests, FollowsWindowsAndProcessesOnX11)
{
    OtherProgram display("/usr/bin/Xvfb", { "-displayfd", "1", "-nolisten", "tcp", "-noreset" });
    const std::string number = ":" + display.firstLine();
    qputenv("DISPLAY", number.c_str());
    // A window that is mapped while it starts can be overlooked.
    OtherProgram windowManager("/usr/bin/openbox", { "--sm-disable", "--startup", "echo ready" });
    ASSERT_TRUE(windowManager.hasSaid("ready\n"));

    sources.display = number;
    sources.interval.reset();
    makeWorkspace();

    const StandIn first("first", processes.root());
    first.say("open");
    EXPECT_TRUE(waitFor("launch"));
    EXPECT_TRUE(happens([this] { return names() == std::vector { "first"s }; }));
    std::optional<StandIn> second(std::in_place, "reaper", processes.root());
    second->say("open");
    EXPECT_TRUE(waitFor("activate"));
    EXPECT_TRUE(happens([this] { return names() == std::vector { "first"s, "REAPER"s }; }));
    first.say("close");
    first.say("open");
    EXPECT_TRUE(waitFor("activate"));
    EXPECT_THAT(names(), ElementsAre("first", "REAPER")) << "It stays one without its window.";
    second.reset();
    EXPECT_TRUE(waitFor("terminate"));
    EXPECT_THAT(names(), ElementsAre("first"));

    display.end();
    EXPECT_TRUE(happens([] {
        return !QCoreApplication::eventDispatcher()->processEvents(QEventLoop::AllEvents);
    })) << "It keeps asking a server that has gone.";
    EXPECT_THAT(names(), ElementsAre("first"));
}

TEST_F(LinuxWorkspaceTests, OpensTheKeyboardSettingsOfTheDesktop)
{
    using Programs = std::vector<std::string>;
    const Programs several { "cinnamon-settings", "gnome-control-center", "kcmshell6",
        "kcmshell5" };
    const struct {
        const char* desktop;
        Programs installed;
        std::string expected;
    } rows[] = {
        { "ubuntu:GNOME", several, "gnome-control-center keyboard\n" },
        { "other:KDE", several, "kcmshell6 kcm_keys\n" },
        { "X-Cinnamon", several, "cinnamon-settings keyboard -t shortcuts\n" },
        { "KDE-like", { "mate-keybinding-properties" }, "mate-keybinding-properties \n" },
        { "KDE", {}, "" },
    };
    makeWorkspace();
    const QByteArray path = qgetenv("PATH");
    for (const auto& row : rows) {
        const TemporaryFolder folder;
        for (const std::string& name : row.installed) {
            folder.write(name, "#!/bin/sh\necho \"${0##*/} $*\" >> \"${0%/*}/started\"\n");
            std::filesystem::permissions(folder.path(name), std::filesystem::perms::owner_all);
        }
        qputenv("PATH", folder.path().c_str());
        qputenv("XDG_CURRENT_DESKTOP", row.desktop);
        EXPECT_EQ(workspace->open("x-apple.systempreferences:com.apple.preference.keyboard?x"),
            !row.expected.empty())
            << row.desktop;
        EXPECT_TRUE(happens([&] { return folder.read("started") == row.expected; }));
    }
    qputenv("PATH", path);
}

} // namespace
} // namespace stemvault
