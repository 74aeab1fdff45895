#include "LinuxDesktop/Dispatch/QtDispatch.h"
#include "LinuxDesktop/PrivateBus.h"
#include "LinuxDesktop/QtTest.h"
#include "LinuxDesktop/UserNotificationCenter/DBusUserNotificationCenter.h"

#include <QDBusArgument>
#include <QWindow>

#include <thread>

namespace stemvault::notification_center {
namespace {

const UserNotification added { "id", "Added & done",
    "A<b> & C.wav → Client\x1B"
    "A",
    UserNotificationSound::Default };

struct NotificationTest : testing::Test, UserNotificationCenterDelegate {
    PrivateBus bus;
    QDBusConnection serverBus = bus.connect();
    BusObject server;
    QStringList capabilities;
    int asked = 0;
    std::vector<QVariantList> shown;
    dispatch::QtDispatch dispatch;
    DBusUserNotificationCenter center { dispatch, bus.connect(), "/r/icon.png" };
    std::uint32_t presentation = 0;

    void startServer()
    {
        server.handle = [this](const QDBusMessage& call, const QDBusConnection& connection) {
            asked += call.member() == "GetCapabilities";
            if (call.member() == "Notify")
                shown.push_back(call.arguments());
            return connection.send(
                call.member() == "Notify" ? call.createReply(1U) : call.createReply(capabilities));
        };
        serverBus.registerVirtualObject("/org/freedesktop/Notifications", &server);
        ASSERT_TRUE(serverBus.registerService("org.freedesktop.Notifications"));
    }
    bool isGranted()
    {
        std::optional<bool> answer;
        center.requestAuthorization(AuthorizationOption::Alert, [&](bool yes) { answer = yes; });
        EXPECT_TRUE(happens([&] { return answer.has_value(); }));
        return answer.value_or(false);
    }
    void willPresent(const UserNotification& /*notification*/,
        const std::function<void(std::uint32_t)>& completionHandler) override
    {
        completionHandler(presentation);
    }
};

TEST_F(NotificationTest, TheBodyIsMarkupOnlyToAServerThatReadsIt)
{
    capabilities = { "body", "body-markup" };
    startServer();
    std::thread([this] { center.add(added); }).join();
    center.add(added);
    ASSERT_TRUE(happens([this] { return shown.size() == 2; }));
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(shown[0][2], "file:///r/icon.png");
    EXPECT_EQ(shown[0][3], "Added & done");
    EXPECT_EQ(shown[0][4], "A&lt;b&gt; &amp; C.wav → Client\u241BA");
    const auto hints = qdbus_cast<QVariantMap>(shown[0][6]);
    EXPECT_EQ(hints["desktop-entry"], "net.stemvault.Connect");
    EXPECT_EQ(hints["urgency"].typeId(), QMetaType::UChar);
    EXPECT_TRUE(hints.contains("sound-name"));

    // Another server with fewer capabilities takes over.
    ASSERT_TRUE(serverBus.unregisterService("org.freedesktop.Notifications"));
    capabilities = { "body" };
    startServer();
    ASSERT_TRUE(happens([this] {
        center.add(added);
        return shown.back()[4] == "A<b> & C.wav → Client\u241BA";
    }));
    EXPECT_EQ(asked, 2);
}

TEST_F(NotificationTest, WithoutAServerNothingIsShownThenOrLater)
{
    EXPECT_FALSE(isGranted());
    center.add(added);
    EXPECT_FALSE(isGranted()); // The bus replies in order, so the post has failed by now.
    startServer();
    EXPECT_TRUE(isGranted());
    center.add({ "later", "Later", "", UserNotificationSound::None });
    ASSERT_TRUE(happens([this] { return !shown.empty(); }));
    EXPECT_EQ(shown[0][3], "Later");
    EXPECT_TRUE(qdbus_cast<QVariantMap>(shown[0][6]).contains("suppress-sound"));
}

TEST_F(NotificationTest, InFrontTheDelegateDecides)
{
    startServer();
    center.setDelegate(this);
    QWindow window;
    window.show();
    window.requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    center.add(added); // Without Banner it is not shown at all.
    dispatch.mainAsync([this] { presentation = PresentationOption::Banner; });
    center.add({ "2", "Second", "", UserNotificationSound::Default });
    ASSERT_TRUE(happens([this] { return !shown.empty(); }));
    EXPECT_EQ(shown[0][3], "Second");
    EXPECT_FALSE(qdbus_cast<QVariantMap>(shown[0][6]).contains("sound-name"));
}

} // namespace
} // namespace stemvault::notification_center
