#include "LinuxDesktop/Hotkey/HotkeySetup.h"
#include "LinuxDesktop/PrivateBus.h"
#include "LinuxDesktop/QtTest.h"
#include "Support/FakePlatform.h"

#include <algorithm>
#include <map>

namespace stemvault::hotkey {
namespace {

const Shortcut addSelection { "Add to Stemvault", "/opt/courier", "add-selection" };

/// A folder of stand-in tools, which comes first in PATH, and the settings that they store.
class Tools {
public:
    Tools()
    {
        qputenv("PATH", (folder.path() + ":").c_str() + path);
        add("gsettings",
            "file=\"${0%/*}/$(printf %s \"$2 $3\" | tr /: ..)\"\n"
            "[ $1 = get ] || [ ! -e \"${0%/*}/locked\" ] || exit 1\n"
            "if [ $1 = set ]; then echo \"$2 $3 $4\" >> \"${0%/*}/log\"; printf %s \"$4\" > "
            "\"$file\"\n"
            "elif [ -e \"$file\" ]; then cat \"$file\"\n"
            "else case $3 in custom-*) echo '@as []';; *) echo \"''\";; esac; fi");
        add("xfconf-query",
            "case $3 in -lv) cat \"${0%/*}/xfconf\";; *) echo \"$*\" >> \"${0%/*}/log\";; esac");
    }
    ~Tools() { qputenv("PATH", path); }
    Tools(const Tools&) = delete;
    Tools& operator=(const Tools&) = delete;

    void add(const std::string& name, const std::string& script) const
    {
        folder.write(name, "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(folder.path(name), std::filesystem::perms::owner_all);
    }

    TemporaryFolder folder;

private:
    QByteArray path = qgetenv("PATH");
};

const std::string gnome = "org.gnome.settings-daemon.plugins.media-keys";
const std::string gnomePath =
    "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/stemvault-connect/";
const std::string gnomeEntry = gnome + ".custom-keybinding:" + gnomePath;
const std::string cinnamon = "org.cinnamon.desktop.keybindings";
const std::string cinnamonEntry = cinnamon
    + ".custom-keybinding:/org/cinnamon/desktop/keybindings/custom-keybindings/custom7836/";
const std::string mateEntry =
    "org.mate.control-center.keybinding:/org/mate/desktop/keybindings/stemvault-connect/";

std::string asFileName(std::string place)
{
    std::ranges::replace(place, '/', '.');
    std::ranges::replace(place, ':', '.');
    return place;
}

TEST(HotkeySetupTests, TheEntryIsListedOnceAndOneWithAKeyIsNotChanged)
{
    const auto named = [](const std::string& entry, const std::string& command) {
        return entry + " name 'Add to Stemvault'\n" + entry + " " + command
            + " '/opt/courier add-selection'\n";
    };
    const std::string xfce =
        "-c xfce4-keyboard-shortcuts -p /commands/custom/VoidSymbol -n -t string "
        "-s /opt/courier add-selection\n";
    const struct {
        const char* what;
        std::string desktop;
        std::map<std::string, std::string> before;
        std::string changes;
        bool isListed = true;
    } rows[] = {
        { "GNOME, as new", "ubuntu:GNOME", {},
            named(gnomeEntry, "command") + gnome + " custom-keybindings ['" + gnomePath + "']\n" },
        { "beside others", "GNOME", { { gnome + " custom-keybindings", "['/a/', '/b/']" } },
            named(gnomeEntry, "command") + gnome + " custom-keybindings ['/a/', '/b/', '"
                + gnomePath + "']\n" },
        { "listed, with a key", "GNOME",
            { { gnome + " custom-keybindings", "['" + gnomePath + "']" },
                { gnomeEntry + " binding", "'<Super>y'" } },
            "" },
        { "a list that is none", "GNOME", { { gnome + " custom-keybindings", "'/a/'" } },
            named(gnomeEntry, "command"), false },
        { "locked by an administrator", "GNOME", { { "locked", "" } }, "", false },
        { "Cinnamon, as new", "X-Cinnamon", {},
            named(cinnamonEntry, "command") + cinnamon + " custom-list ['custom7836']\n" },
        { "Cinnamon, with a key", "X-Cinnamon",
            { { cinnamon + " custom-list", "['custom7836', '__dummy__']" },
                { cinnamonEntry + " binding", "['<Super>y']" } },
            "" },
        { "MATE, as new", "MATE", {}, named(mateEntry, "action") },
        { "MATE, with a key", "MATE", { { mateEntry + " binding", "'<Mod4>y'" } }, "" },
        { "XFCE, as new", "XFCE", { { "xfconf", "/commands/custom/F5  thunar" } }, xfce },
        { "XFCE, with a key", "XFCE",
            { { "xfconf", "/commands/custom/<Super>y  /opt/courier add-selection\n" } }, "" },
        { "XFCE, its place taken by another command", "XFCE",
            { { "xfconf", "/commands/custom/VoidSymbol  thunar\n" } }, "", false },
        { "no list that is known", "sway", {}, "", false },
    };
    for (const auto& row : rows) {
        const Tools tools;
        for (const auto& [place, value] : row.before)
            tools.folder.write(asFileName(place), value);
        const auto noBus = QDBusConnection("no bus");
        EXPECT_EQ(addToShortcutList(row.desktop, addSelection, noBus), row.isListed) << row.what;
        EXPECT_EQ(tools.folder.read("log"), row.changes) << row.what;
    }
}

TEST(HotkeySetupTests, WithoutTheDesktopsToolsThereIsNoList)
{
    PrivateBus bus;
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/nowhere");
    for (const char* desktop : { "GNOME", "X-Cinnamon", "MATE", "XFCE", "LXQt", "KDE" })
        EXPECT_FALSE(addToShortcutList(desktop, addSelection, bus.connect())) << desktop;
    qputenv("PATH", path);
}

TEST(HotkeySetupTests, OnLxqtItsDaemonListsIt)
{
    PrivateBus bus;
    QDBusConnection daemon = bus.connect();
    QVariantList added;
    BusObject object;
    object.handle = [&](const QDBusMessage& call, const QDBusConnection& connection) {
        if (call.member() == "addCommandAction") {
            added = call.arguments();
            return connection.send(call.createReply({ "XF86Launch9", qulonglong { 7 } }));
        }
        if (call.member() == "getAllActionIds")
            return connection.send(call.createReply(QVariant::fromValue(
                added.isEmpty() ? QList<qulonglong>() : QList<qulonglong> { 7 })));
        return connection.send(call.createReply({ true, "XF86Launch9", "Add to Stemvault", true,
            "command", "/opt/courier add-selection" }));
    };
    ASSERT_TRUE(daemon.registerVirtualObject("/daemon", &object));
    ASSERT_TRUE(daemon.registerService("org.lxqt.global_key_shortcuts"));
    const QDBusConnection client = bus.connect();
    EXPECT_TRUE(addToShortcutList("LXQt", addSelection, client));
    EXPECT_EQ(added,
        QVariantList({ "XF86Launch9", "/opt/courier", QStringList { "add-selection" },
            "Add to Stemvault" }));
    added = { "listed" };
    EXPECT_TRUE(addToShortcutList("LXQt", addSelection, client));
    EXPECT_EQ(added, QVariantList { "listed" }) << "a second time";
}

TEST(HotkeySetupTests, OnPlasmaWhatIsInstalledIsNamed)
{
    const TemporaryFolder data;
    const QByteArray usual = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", data.path().c_str());
    PrivateBus bus;
    QDBusConnection daemon = bus.connect();
    QVariantList registered;
    BusObject object;
    object.handle = [&](const QDBusMessage& call, const QDBusConnection& connection) {
        registered = call.arguments();
        return connection.send(call.createReply());
    };
    ASSERT_TRUE(daemon.registerVirtualObject("/kglobalaccel", &object));
    ASSERT_TRUE(daemon.registerService("org.kde.kglobalaccel"));
    const QDBusConnection client = bus.connect();
    data.write("kglobalaccel/net.stemvault.Connect.AddSelection.desktop", "");
    EXPECT_TRUE(addToShortcutList("KDE", addSelection, client));
    EXPECT_EQ(registered,
        QVariantList { QStringList({ "net.stemvault.Connect.AddSelection.desktop", "_launch",
            "Add to Stemvault", "Add to Stemvault" }) });
    qputenv("XDG_DATA_HOME", usual);
}

TEST(HotkeySetupTests, OpensTheShortcutsOfTheDesktopAndShowsTheCommandWhereThereAreNone)
{
    using Programs = std::vector<std::string>;
    const Programs several { "cinnamon-settings", "gnome-control-center", "kcmshell6",
        "kcmshell5" };
    const struct {
        const char* desktop;
        Programs installed;
        std::string expected;
    } rows[] = {
        { "ubuntu:GNOME", several, "gnome-control-center keyboard\n" },
        { "other:KDE", several, "kcmshell6 kcm_keys\n" },
        { "X-Cinnamon", several, "cinnamon-settings keyboard -t shortcuts\n" },
        { "KDE-like", { "mate-keybinding-properties" }, "mate-keybinding-properties \n" },
        { "sway", {}, "" },
    };
    const QByteArray path = qgetenv("PATH");
    for (const auto& row : rows) {
        const TemporaryFolder folder;
        for (const std::string& name : row.installed) {
            folder.write(name, "#!/bin/sh\necho \"${0##*/} $*\" >> \"${0%/*}/started\"\n");
            std::filesystem::permissions(folder.path(name), std::filesystem::perms::owner_all);
        }
        qputenv("PATH", folder.path().c_str());
        qputenv("XDG_CURRENT_DESKTOP", row.desktop);
        FakeDialogs dialogs;
        dialogs.answerNumber(ModalResponse::alertFirstButton);
        HotkeySetup setup(dialogs, "/opt/courier", QDBusConnection("no bus"));
        EXPECT_EQ(setup.show(), !row.expected.empty()) << row.desktop;
        EXPECT_TRUE(happens([&] { return folder.read("started") == row.expected; }));
        ASSERT_EQ(dialogs.alerts.size(), 1U) << "the tools for its list are missing";
        EXPECT_THAT(dialogs.alerts[0].informativeText,
            testing::HasSubstr("\n\n/opt/courier add-selection"));
    }
    qputenv("PATH", path);
}

} // namespace
} // namespace stemvault::hotkey
