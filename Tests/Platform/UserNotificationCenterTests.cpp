#include "LinuxDesktop/Dispatch/QtDispatch.h"
#include "LinuxDesktop/PrivateBus.h"
#include "LinuxDesktop/QtTest.h"
#include "LinuxDesktop/UserNotificationCenter/DBusUserNotificationCenter.h"
#include "Platform/Stages.h"
#include "Support/FakePlatform.h"

#include <QDBusArgument>
#include <QWindow>

#include <functional>
#include <optional>
#include <utility>

namespace stemvault {
namespace {

/// The title of each notification, and whether it had a sound.
using Shown = std::vector<std::pair<std::string, bool>>;

struct FakeNotificationStage {
    static constexpr const char* name = "Fake";

    void comeToFront() { center.isInFront = true; }
    [[nodiscard]] Shown shown() const
    {
        Shown all;
        for (const UserNotification& each : center.posted)
            all.emplace_back(each.title, each.sound == UserNotificationSound::Default);
        return all;
    }
    bool happens(const std::function<bool()>& condition)
    {
        dispatch.settle();
        return condition();
    }

    FakeDispatch dispatch;
    FakeUserNotificationCenter center { dispatch };
};

struct DBusNotificationStage {
    static constexpr const char* name = "DBus";

    DBusNotificationStage()
    {
        server.handle = [this](const QDBusMessage& call, const QDBusConnection& connection) {
            if (call.member() != "Notify")
                return connection.send(call.createReply(QStringList {}));
            const auto hints = qdbus_cast<QVariantMap>(call.arguments().at(6));
            received.emplace_back(
                call.arguments().at(3).toString().toStdString(), hints.contains("sound-name"));
            return connection.send(call.createReply(1U));
        };
        serverBus.registerVirtualObject("/org/freedesktop/Notifications", &server);
        EXPECT_TRUE(serverBus.registerService("org.freedesktop.Notifications"));
    }

    void comeToFront()
    {
        window.show();
        window.requestActivate();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    [[nodiscard]] Shown shown() const { return received; }
    bool happens(const std::function<bool()>& condition) { return stemvault::happens(condition); }

    PrivateBus bus;
    QDBusConnection serverBus = bus.connect();
    BusObject server;
    Shown received;
    QWindow window;
    dispatch::QtDispatch dispatch;
    notification_center::DBusUserNotificationCenter center { dispatch, bus.connect(), "icon" };
};

template <typename Stage> struct UserNotificationCenterTests : testing::Test {
};
using UserNotificationCenterStages = testing::Types<FakeNotificationStage, DBusNotificationStage>;
TYPED_TEST_SUITE(UserNotificationCenterTests, UserNotificationCenterStages, StageNames);

/// Answers each call with these options, and counts the calls.
struct Decider : UserNotificationCenterDelegate {
    void willPresent(const UserNotification& /*notification*/,
        const std::function<void(std::uint32_t options)>& completionHandler) override
    {
        ++asked;
        completionHandler(options);
    }

    std::uint32_t options = 0;
    int asked = 0;
};

TYPED_TEST(UserNotificationCenterTests, InFrontTheDelegateDecidesAndOtherwiseAllAreShown)
{
    constexpr auto banner = PresentationOption::Banner;
    constexpr auto sound = PresentationOption::Sound;
    const struct {
        const char* what;
        bool isInFront, hasDelegate;
        std::uint32_t options;
        int asked;
        Shown shown;
    } rows[] = {
        { "behind other programs", false, true, 0, 0, { { "mix", true } } },
        { "in front without a delegate", true, false, 0, 0, { { "mix", true } } },
        { "in front, allowed whole", true, true, banner | sound, 1, { { "mix", true } } },
        { "in front, allowed without a sound", true, true, banner, 1, { { "mix", false } } },
        { "in front, no banner", true, true, sound, 1, {} },
    };
    for (const auto& row : rows) {
        TypeParam stage;
        Decider decider;
        decider.options = row.options;
        stage.center.setDelegate(row.hasDelegate ? &decider : nullptr);
        if (row.isInFront)
            stage.comeToFront();
        stage.center.add({ "1", "mix", "", UserNotificationSound::Default });
        EXPECT_TRUE(stage.happens([&] { return decider.asked == row.asked; })) << row.what;
        // Always shown, after everything that was posted before.
        stage.dispatch.mainAsync([&stage] {
            stage.center.setDelegate(nullptr);
            stage.center.add({ "2", "last", "", UserNotificationSound::None });
        });
        EXPECT_TRUE(stage.happens([&stage] {
            return !stage.shown().empty() && stage.shown().back().first == "last";
        })) << row.what;
        Shown expected = row.shown;
        expected.emplace_back("last", false);
        EXPECT_EQ(stage.shown(), expected) << row.what;
        EXPECT_EQ(decider.asked, row.asked) << row.what;
    }
}

TYPED_TEST(UserNotificationCenterTests, PermissionIsAnsweredOnceAndNotInsideTheCall)
{
    TypeParam stage;
    std::vector<bool> answers;
    stage.center.requestAuthorization(
        AuthorizationOption::Alert, [&answers](bool isGranted) { answers.push_back(isGranted); });
    EXPECT_TRUE(answers.empty());
    EXPECT_TRUE(stage.happens([&answers] { return !answers.empty(); }));
    EXPECT_THAT(answers, ElementsAre(true));
}

} // namespace
} // namespace stemvault
