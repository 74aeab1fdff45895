#include "LinuxDesktop/Application/SingleInstance.h"
#include "LinuxDesktop/PrivateBus.h"
#include "LinuxDesktop/QtTest.h"

#include <QDBusPendingCall>

#include <atomic>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace stemvault::application {
namespace {

using Claim = SingleInstance::Claim;

TEST(SingleInstanceTest, ASecondStartActivatesTheFirst)
{
    PrivateBus bus;
    int activations = 0;
    SingleInstance first(bus.connect());
    first.onActivate([&] { ++activations; });
    ASSERT_EQ(first.claim(), Claim::Granted);

    // In a thread, because it blocks until the first instance answers.
    const QDBusConnection connection = bus.connect();
    std::atomic<bool> ended = false;
    const std::jthread start([&] {
        SingleInstance second(connection);
        EXPECT_EQ(second.claim(), Claim::OtherInstance);
        ended = true;
    });
    EXPECT_TRUE(happens([&] { return ended && activations == 1; }));

    first.release();
    EXPECT_EQ(SingleInstance(bus.connect()).claim(), Claim::Granted)
        << "kept by one that is ending";
}

TEST(SingleInstanceTest, WhateverALauncherCallsActivatesIt)
{
    PrivateBus bus;
    int activations = 0;
    const QDBusConnection connection = bus.connect();
    SingleInstance first(connection);
    first.onActivate([&] { ++activations; });
    ASSERT_EQ(first.claim(), Claim::Granted);
    const QDBusConnection launcher = bus.connect();
    const std::pair<const char*, QVariantList> calls[] = {
        { "Activate", { QVariantMap() } },
        { "Open", { QStringList { "file:///Mix.wav" }, QVariantMap() } },
        { "ActivateAction", { "preferences", QVariantList(), QVariantMap() } },
    };
    for (const auto& [method, arguments] : calls) {
        auto call = QDBusMessage::createMethodCall(connection.baseService(),
            "/net/stemvault/Connect", "org.freedesktop.Application", method);
        call.setArguments(arguments);
        const int before = activations;
        const auto reply = launcher.asyncCall(call);
        EXPECT_TRUE(happens([&] { return reply.isFinished(); }));
        EXPECT_FALSE(reply.isError()) << method;
        EXPECT_EQ(activations, before + 1) << method;
    }
}

TEST(SingleInstanceTest, AForeignProgramWithTheNameIsSeen)
{
    PrivateBus bus;
    QDBusConnection stranger = bus.connect();
    ASSERT_TRUE(stranger.registerService("net.stemvault.Connect"));
    EXPECT_EQ(SingleInstance(bus.connect()).claim(), Claim::ForeignProgram);
}

/// Without a bus, the instance locks a file in the runtime folder.
struct SingleInstanceWithoutBusTest : testing::Test {
    SingleInstanceWithoutBusTest() { qputenv("XDG_RUNTIME_DIR", runtime.path().c_str()); }
    ~SingleInstanceWithoutBusTest() override { qputenv("XDG_RUNTIME_DIR", usual); }

    /// The result of `claim` while another program holds a lock on this file.
    [[nodiscard]] Claim claimWhileLocked(const std::string& file) const
    {
        const FileDescriptor held(::open(file.c_str(), O_RDWR | O_CLOEXEC));
        EXPECT_EQ(::flock(held.get(), LOCK_EX | LOCK_NB), 0);
        return SingleInstance(noBus).claim();
    }

    const TemporaryFolder runtime;
    const std::string lock = runtime.path("stemvault-connect.lock");
    const QByteArray usual = qgetenv("XDG_RUNTIME_DIR");
    const QDBusConnection noBus = QDBusConnection::connectToBus("unix:path=/nowhere", "no bus");
};

TEST_F(SingleInstanceWithoutBusTest, TheLockGoesWithItsOwner)
{
    {
        SingleInstance first(noBus);
        SingleInstance second(noBus);
        EXPECT_EQ(first.claim(), Claim::Granted);
        EXPECT_EQ(second.claim(), Claim::OtherInstance);
    }
    EXPECT_EQ(SingleInstance(noBus).claim(), Claim::Granted);
}

TEST_F(SingleInstanceWithoutBusTest, WithoutARuntimeFolderThereIsNoLock)
{
    qunsetenv("XDG_RUNTIME_DIR");
    SingleInstance first(noBus);
    SingleInstance second(noBus);
    EXPECT_EQ(first.claim(), Claim::Granted);
    EXPECT_EQ(second.claim(), Claim::Granted);
}

TEST_F(SingleInstanceWithoutBusTest, ALinkToALockedFileDoesNotCount)
{
    const std::string victim = runtime.write("victim", "");
    std::filesystem::create_symlink(victim, lock);
    EXPECT_EQ(claimWhileLocked(victim), Claim::Granted);
}

TEST_F(SingleInstanceWithoutBusTest, TheLockOfAnotherUserDoesNotCount)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root may give a file away";
    runtime.write("stemvault-connect.lock", "");
    ASSERT_EQ(::chown(lock.c_str(), 65534, 65534), 0);
    EXPECT_EQ(claimWhileLocked(lock), Claim::Granted);
}

} // namespace
} // namespace stemvault::application
