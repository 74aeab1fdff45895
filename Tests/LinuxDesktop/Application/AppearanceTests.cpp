#include "LinuxDesktop/Application/Appearance.h"
#include "LinuxDesktop/PrivateBus.h"
#include "LinuxDesktop/QtTest.h"

#include <QApplication>
#include <QPalette>

namespace stemvault::application {
namespace {

bool isDark()
{
    return QApplication::palette().color(QPalette::Window).value() < 128;
}

TEST(AppearanceTest, FollowsPlasmaWithoutAPortal)
{
    const TemporaryFolder settings;
    const QByteArray before = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", settings.path().c_str());
    PrivateBus bus;
    const Appearance follower(bus.connect());
    QDBusConnection plasma = bus.connect();
    // The sizes differ, because QSettings reads a file again only if its size or time has changed.
    const struct {
        const char* colors;
        bool isDark;
    } changes[] = {
        { "BackgroundNormal=42,46,50\nForegroundNormal=252,252,252\n", true },
        { "BackgroundNormal=239,240,241\nForegroundNormal=0,0,0\n", false },
    };
    for (const auto& change : changes) {
        settings.write("kdeglobals", std::string("[Colors:Window]\n") + change.colors);
        QDBusMessage news = QDBusMessage::createSignal(
            "/KGlobalSettings", "org.kde.KGlobalSettings", "notifyChange");
        plasma.send(news << 0 << 0);
        EXPECT_TRUE(happens([&] { return isDark() == change.isDark; })) << change.colors;
    }
    qputenv("XDG_CONFIG_HOME", before);
}

} // namespace
} // namespace stemvault::application
