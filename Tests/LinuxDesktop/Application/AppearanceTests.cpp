#include "LinuxDesktop/Application/Appearance.h"
#include "LinuxDesktop/PrivateBus.h"
#include "LinuxDesktop/QtTest.h"

#include <QApplication>
#include <QDBusPendingCall>
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
    const QDBusConnection program = bus.connect();
    const Appearance follower(program);
    QDBusConnection plasma = bus.connect();
    // The sizes differ, because QSettings reads a file again only if its size or time has changed.
    const struct {
        const char* colors;
        bool isDark;
        int what = 0; ///< Colours.
    } changes[] = {
        { "BackgroundNormal=42,46,50\nForegroundNormal=252,252,252\n", true },
        { "BackgroundNormal=39,40,41\n", true },
        { "BackgroundNormal=239,240,241\nForegroundNormal=10,10,10\n", true, 1 },
        { "BackgroundNormal=239,240,241\nForegroundNormal=0,0,0\n", false },
    };
    for (const auto& change : changes) {
        settings.write("kdeglobals", std::string("[Colors:Window]\n") + change.colors);
        QDBusMessage news = QDBusMessage::createSignal(
            "/KGlobalSettings", "org.kde.KGlobalSettings", "notifyChange");
        plasma.send(news << change.what << 0);
        // The signal arrives before the answer to a call that was made after it.
        const auto answer = program.asyncCall(QDBusMessage::createMethodCall(
            plasma.baseService(), "/", "org.freedesktop.DBus.Peer", "Ping"));
        EXPECT_TRUE(happens([&] { return answer.isFinished(); }));
        QCoreApplication::processEvents();
        EXPECT_EQ(isDark(), change.isDark) << change.colors;
    }
    qputenv("XDG_CONFIG_HOME", before);
}

} // namespace
} // namespace stemvault::application
