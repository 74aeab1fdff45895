#include "LinuxDesktop/Application/SingleInstance.h"
#include "LinuxDesktop/PrivateBus.h"
#include "LinuxDesktop/QtTest.h"

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

    // In a thread, as it waits for the first one's answer.
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

TEST(SingleInstanceTest, AForeignProgramWithTheNameIsSeen)
{
    PrivateBus bus;
    QDBusConnection stranger = bus.connect();
    ASSERT_TRUE(stranger.registerService("net.stemvault.Connect"));
    EXPECT_EQ(SingleInstance(bus.connect()).claim(), Claim::ForeignProgram);
}

TEST(SingleInstanceTest, WithoutABusTheRuntimeFolderHoldsOne)
{
    const TemporaryFolder runtime;
    const QByteArray usual = qgetenv("XDG_RUNTIME_DIR");
    qputenv("XDG_RUNTIME_DIR", runtime.path().c_str());
    const auto noBus = QDBusConnection::connectToBus("unix:path=/nowhere", "no bus");
    {
        SingleInstance first(noBus);
        SingleInstance second(noBus);
        EXPECT_EQ(first.claim(), Claim::Granted);
        EXPECT_EQ(second.claim(), Claim::OtherInstance);
    }
    EXPECT_EQ(SingleInstance(noBus).claim(), Claim::Granted) << "the lock outlived its owner";

    const std::string victim = runtime.write("victim", "");
    std::filesystem::remove(runtime.path("stemvault-connect.lock"));
    std::filesystem::create_symlink(victim, runtime.path("stemvault-connect.lock"));
    const FileDescriptor held(::open(victim.c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(::flock(held.get(), LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(SingleInstance(noBus).claim(), Claim::Granted) << "a link to what another has locked";
    std::filesystem::remove(runtime.path("stemvault-connect.lock"));
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(runtime.write("stemvault-connect.lock", "").c_str(), 65534, 65534), 0);
        const FileDescriptor strangers(
            ::open(runtime.path("stemvault-connect.lock").c_str(), O_RDWR | O_CLOEXEC));
        ASSERT_EQ(::flock(strangers.get(), LOCK_EX | LOCK_NB), 0);
        EXPECT_EQ(SingleInstance(noBus).claim(), Claim::Granted) << "the lock of another user";
    }
    qputenv("XDG_RUNTIME_DIR", usual);
}

} // namespace
} // namespace stemvault::application
