#include "LinuxDesktop/Application/Appearance.h"
#include "LinuxDesktop/PrivateBus.h"
#include "LinuxDesktop/QtTest.h"

#include <QApplication>
#include <QFile>
#include <QPalette>
#include <QTemporaryDir>

namespace stemvault::application {
namespace {

bool isDark()
{
    return QApplication::palette().color(QPalette::Window).value() < 128;
}

bool isLight()
{
    return !isDark();
}

TEST(AppearanceTest, FollowsThePortalAlsoOneThatComesLater)
{
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

TEST(AppearanceTest, FollowsPlasmaWithoutAPortal)
{
    const QTemporaryDir settings;
    const QByteArray before = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", settings.path().toLocal8Bit());
    PrivateBus bus;
    const Appearance follower(bus.connect());
    QDBusConnection plasma = bus.connect();
    struct Change {
        const char* colors;
        bool (*outcome)();
    };
    // Of different sizes: QSettings reads a file again when its size or its time has changed.
    const Change changes[] = {
        { "BackgroundNormal=42,46,50\nForegroundNormal=252,252,252\n", &isDark },
        { "BackgroundNormal=239,240,241\nForegroundNormal=0,0,0\n", &isLight },
    };
    for (const Change& change : changes) {
        SCOPED_TRACE(change.colors);
        QFile file(settings.filePath("kdeglobals"));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(QByteArray("[Colors:Window]\n") + change.colors);
        file.close();
        QDBusMessage news = QDBusMessage::createSignal(
            "/KGlobalSettings", "org.kde.KGlobalSettings", "notifyChange");
        plasma.send(news << 0 << 0);
        EXPECT_TRUE(happens(change.outcome));
    }
    qputenv("XDG_CONFIG_HOME", before);
}

} // namespace
} // namespace stemvault::application
