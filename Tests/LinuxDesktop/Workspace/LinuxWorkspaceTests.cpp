#include "LinuxDesktop/Processes/FakeProcesses.h"
#include "LinuxDesktop/Workspace/LinuxWorkspace.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QProcess>
#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace stemvault {
namespace {

using namespace std::literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto deadline = 10s;

bool waitUntil(const std::function<bool()>& isSo)
{
    const auto end = std::chrono::steady_clock::now() + deadline;
    QTimer waker;
    waker.start(10ms);
    while (!isSo() && std::chrono::steady_clock::now() < end)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return isSo();
}

class Queues : public Dispatch {
public:
    ~Queues() override
    {
        for (std::thread& thread : threads)
            thread.join();
    }
    [[nodiscard]] WallTime now() const override { return {}; }
    void mainAsync(Work work) override
    {
        QMetaObject::invokeMethod(&context, std::move(work), Qt::QueuedConnection);
    }
    void mainAsyncAfter(std::chrono::milliseconds /*delay*/, Work /*work*/) override { }
    void utilityAsync(Work work) override { threads.emplace_back(std::move(work)); }
    [[nodiscard]] std::unique_ptr<Timer> scheduledTimer(
        std::chrono::milliseconds /*interval*/, Work /*work*/) override
    {
        return nullptr;
    }

private:
    QObject context;
    std::vector<std::thread> threads;
};

/// A server of the test's own, which says on its standard output where it is.
class Server : public QProcess {
public:
    Server(const QString& name, const QStringList& options)
    {
        start(name, options);
        waitUntil([this] { return canReadLine(); });
        address = readLine().trimmed();
    }
    ~Server() override { end(); }
    void end()
    {
        kill();
        waitForFinished();
    }

    QByteArray address;
};

class LinuxWorkspaceTests : public testing::Test {
protected:
    LinuxWorkspaceTests()
    {
        sources.processRoot = processes.root();
        sources.interval = 1h;
    }

    /// As the session tracker does it: asks first, listens then.
    void makeWorkspace()
    {
        workspace.emplace(queues, sources);
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
            waitUntil([&] { return std::ranges::find(notices, notice) != notices.end(); });
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
    Queues queues;
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
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (names().size() != 2 && std::chrono::steady_clock::now() < end) { }
    EXPECT_THAT(names(), ElementsAre("REAPER", "Pro Tools"));
    EXPECT_THAT(notices, IsEmpty()) << "Nobody is told inside a question.";
    EXPECT_TRUE(waitFor("launch"));
    workspace->removeObserver(this);
    processes.end(noRealProcess);
    EXPECT_TRUE(waitUntil([this] { return names() == std::vector { "Pro Tools"s }; }));
    while (QCoreApplication::eventDispatcher()->processEvents(QEventLoop::AllEvents)) { }
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(LinuxWorkspaceTests, HearsOfUnitsAndReadsTheMenuInTheBackground)
{
    const Server bus("dbus-daemon", { "--session", "--nofork", "--print-address" });
    const TemporaryFolder menu;
    menu.write("app.desktop", "[Desktop Entry]\nType=Application\nName=Logic 2\nExec=/opt/Logic");
    sources.entries.folders = { menu.path() };
    sources.unitBus = QDBusConnection::connectToBus(bus.address, "listener");
    makeWorkspace();
    // The first DAW makes it read the menu.
    processes.start(noRealProcess, reaper);
    EXPECT_TRUE(waitUntil([this] { return names() == std::vector { "REAPER"s }; }));
    EXPECT_TRUE(waitFor("launch"));

    processes.start(
        noRealProcess + 1, { "/opt/Logic\0"s, "Logic", 1, 200, "app-gnome-app-1.scope" });
    auto speaker = QDBusConnection::connectToBus(bus.address, "speaker");
    EXPECT_TRUE(waitUntil([&] {
        auto signal = QDBusMessage::createSignal(
            "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager", "UnitNew");
        signal << "app-gnome-app-1.scope" << QVariant::fromValue(QDBusObjectPath("/unit"));
        return speaker.send(signal) && !notices.empty();
    }));
    EXPECT_THAT(notices, Contains("launch"));
    EXPECT_TRUE(waitUntil([this] { return names() == std::vector { "REAPER"s, "Logic 2"s }; }));
}

TEST_F(LinuxWorkspaceTests, FollowsWindowsAndProcessesOnX11)
{
    Server display("Xvfb", { "-displayfd", "1", "-nolisten", "tcp", "-noreset" });
    const std::string number = ":" + display.address.toStdString();
    qputenv("DISPLAY", number.c_str());
    QProcess windowManager;
    windowManager.start("openbox", { "--sm-disable" });

    sources.display = number;
    sources.interval.reset();
    makeWorkspace();
    const TemporaryFolder folder;
    const auto start = [&](QProcess& standIn, const std::string& name) {
        std::filesystem::copy_file(STAND_IN, folder.path(name));
        standIn.start(QString::fromStdString(folder.path(name)), {});
        ASSERT_TRUE(standIn.waitForStarted());
        const auto process = "/" + std::to_string(standIn.processId());
        std::filesystem::create_symlink("/proc" + process, processes.root() + process);
        standIn.write("open\n");
    };
    QProcess first;
    start(first, "first");
    EXPECT_TRUE(waitFor("launch"));
    EXPECT_TRUE(waitUntil([this] { return names() == std::vector { "first"s }; }));

    QProcess second;
    start(second, "reaper");
    EXPECT_TRUE(waitFor("activate"));
    EXPECT_TRUE(waitUntil([this] { return names() == std::vector { "first"s, "REAPER"s }; }));
    first.write("close\nopen\n");
    EXPECT_TRUE(waitFor("activate"));
    EXPECT_THAT(names(), ElementsAre("first", "REAPER")) << "It stays one without its window.";
    second.closeWriteChannel();
    EXPECT_TRUE(waitFor("terminate"));
    EXPECT_THAT(names(), ElementsAre("first"));

    display.end();
    EXPECT_TRUE(waitUntil([] {
        return !QCoreApplication::eventDispatcher()->processEvents(QEventLoop::AllEvents);
    })) << "It keeps asking a server that has gone.";
    first.kill();
    EXPECT_TRUE(waitUntil([this] { return names().empty(); }));
    windowManager.waitForFinished();
    first.waitForFinished();
}

} // namespace
} // namespace stemvault
