#include "LinuxDesktop/Qt/PrivateBus.h"
#include "LinuxDesktop/Qt/QtTest.h"
#include "LinuxDesktop/Qt/SingleInstance.h"

#include <atomic>
#include <thread>

namespace stemvault {
namespace {

TEST(SingleInstanceTest, ASecondStartActivatesTheFirst)
{
    PrivateBus bus;
    int activations = 0;
    SingleInstance first(bus.connect());
    first.onActivate([&] { ++activations; });
    ASSERT_TRUE(first.claim());

    // In a thread, as it waits for the first one's answer.
    const QDBusConnection connection = bus.connect();
    std::atomic<bool> ended = false;
    const std::jthread start([&] {
        SingleInstance second(connection);
        EXPECT_FALSE(second.claim());
        ended = true;
    });
    EXPECT_TRUE(happens([&] { return ended && activations == 1; }));

    first.release();
    EXPECT_TRUE(SingleInstance(bus.connect()).claim()) << "kept by one that is ending";
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
        EXPECT_TRUE(first.claim());
        EXPECT_FALSE(second.claim());
    }
    EXPECT_TRUE(SingleInstance(noBus).claim()) << "the lock outlived its owner";
    qputenv("XDG_RUNTIME_DIR", usual);
}

} // namespace
} // namespace stemvault
