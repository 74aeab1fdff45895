#include "LinuxDesktop/Qt/Appearance.h"
#include "LinuxDesktop/Qt/PrivateBus.h"
#include "LinuxDesktop/Qt/QtTest.h"

#include <QApplication>
#include <QPalette>

namespace stemvault {
namespace {

TEST(AppearanceTest, FollowsThePortalAlsoOneThatComesLater)
{
    const auto isDark = [] {
        return QApplication::palette().color(QPalette::Window).value() < 128;
    };
    const auto isLight = [&] { return !isDark(); };
    const QString appearance = "org.freedesktop.appearance";
    const QString path = "/org/freedesktop/portal/desktop";
    PrivateBus bus;
    const Appearance follower(bus.connect());
    QDBusConnection portalBus = bus.connect();
    BusObject portal;
    portal.handle = [&](const QDBusMessage& call, const QDBusConnection& connection) {
        const QVariant wrapped = QVariant::fromValue(QDBusVariant(1U));
        return connection.send(call.createReply(QVariant::fromValue(QDBusVariant(wrapped))));
    };
    portalBus.registerVirtualObject(path, &portal);
    ASSERT_TRUE(isLight());
    ASSERT_TRUE(portalBus.registerService("org.freedesktop.portal.Desktop"));
    ASSERT_TRUE(happens(isDark));
    for (const uint preference : { 2U, 1U, 0U }) {
        QDBusMessage change =
            QDBusMessage::createSignal(path, "org.freedesktop.portal.Settings", "SettingChanged");
        change << appearance << "color-scheme" << QVariant::fromValue(QDBusVariant(preference));
        portalBus.send(change);
        EXPECT_TRUE(preference == 1U ? happens(isDark) : happens(isLight));
    }
}

} // namespace
} // namespace stemvault
