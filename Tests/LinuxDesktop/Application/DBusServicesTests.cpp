#include "LinuxDesktop/Application/DBusServices.h"
#include "LinuxDesktop/PrivateBus.h"
#include "LinuxDesktop/QtTest.h"
#include "Platform/Application.h"

#include <QDBusConnectionInterface>
#include <QDBusPendingReply>
#include <QTimer>

#include <functional>
#include <optional>
#include <utility>

namespace stemvault::application {
namespace {

/// Records each call. A "slow" one runs `meanwhile`.
struct Provider : ServicesProvider {
    bool perform(const std::string& message, const Pasteboard& pasteboard,
        const std::string& /*userData*/, std::string& error) override
    {
        asked.push_back(pasteboard.filenames);
        if (message == "slow")
            meanwhile();
        if (message == "failing")
            error = "a reason — for the user";
        return message != "unknown";
    }

    std::vector<std::optional<std::vector<std::string>>> asked;
    std::function<void()> meanwhile;
};

struct DBusServicesTest : testing::Test {
    [[nodiscard]] QDBusMessage message(const QString& service, const QStringList& uris = {}) const
    {
        auto call = QDBusMessage::createMethodCall(programBus.baseService(),
            "/net/stemvault/Connect/Services1", "net.stemvault.Connect.Services1", "Perform");
        return call << service << uris;
    }
    [[nodiscard]] QDBusPendingReply<QString> call(
        const QString& service, const QStringList& uris = {}) const
    {
        return callerBus.asyncCall(message(service, uris), 1'000'000);
    }

    PrivateBus bus;
    QDBusConnection programBus = bus.connect();
    QDBusConnection callerBus = bus.connect();
    DBusServices services { programBus };
    Provider provider;
};

TEST_F(DBusServicesTest, HandsOverTheFilesOfASelectionByteForByte)
{
    services.setProvider(&provider);
    const std::pair<QStringList, std::optional<std::vector<std::string>>> rows[] = {
        { { "file:///a%20b/%FF%0A%25%E2%9C%93.wav", "file://localhost/c", "file:/d" },
            { { "/a b/\xff\n%✓.wav", "/c", "/d" } } },
        { { "file:///a%2", "file:///a%zz", "file://host/a", "/a", "file:///a?b", "file:///kept" },
            { { "/kept" } } },
        { { "smb://h/a.wav" }, std::nullopt },
        { {}, std::nullopt },
    };
    for (const auto& [uris, paths] : rows) {
        auto reply = call("any", uris);
        ASSERT_TRUE(happens([&] { return reply.isFinished(); }));
        EXPECT_EQ(reply.value(), "");
        EXPECT_EQ(provider.asked.back(), paths) << uris.join(' ').toStdString();
    }
}

TEST_F(DBusServicesTest, AnswersWhenTheServiceIsDoneWhicheverWayItEnds)
{
    auto early = call("failing");
    auto unknown = call("unknown");
    services.setProvider(&provider);
    ASSERT_TRUE(happens([&] { return early.isFinished() && unknown.isFinished(); }));
    EXPECT_EQ(early.value(), "a reason — for the user");
    EXPECT_EQ(unknown.error().type(), QDBusError::InvalidArgs);

    QDBusPendingReply<QString> slow;
    provider.meanwhile = [&] {
        auto quick = call("quick");
        EXPECT_TRUE(happens([&] { return quick.isFinished(); }));
        EXPECT_FALSE(slow.isFinished());
    };
    slow = call("slow");
    ASSERT_TRUE(happens([&] { return slow.isFinished(); }));
    EXPECT_EQ(slow.value(), "");
}

TEST_F(DBusServicesTest, ManyCallsAndACallerThatGoesAwayDoNoHarm)
{
    bool isLetGo = false;
    provider.meanwhile = [&] { EXPECT_TRUE(happens([&] { return isLetGo; })); };
    services.setProvider(&provider);
    for (int i = 0; i < 500; ++i)
        EXPECT_TRUE(callerBus.send(message("slow")));

    // The event loops of all running calls are nested, so only a timer can run code meanwhile.
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        if (provider.asked.size() < 8 || std::exchange(isLetGo, true))
            return;
        EXPECT_EQ(provider.asked.size(), 8U) << "the rest wait";
        QDBusConnection::disconnectFromBus(callerBus.name());
    });
    timer.start(100ms);
    ASSERT_TRUE(happens([&] { return provider.asked.size() == 500; }));
    callerBus = bus.connect();
    auto after = call("quick");
    EXPECT_TRUE(happens([&] { return after.isFinished() && after.isValid(); }));
}

} // namespace
} // namespace stemvault::application
