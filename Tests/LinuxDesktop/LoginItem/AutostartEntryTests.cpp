#include "LinuxDesktop/LoginItem/AutostartEntry.h"
#include "Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace stemvault::login_item {
namespace {

const std::string file = "autostart/net.stemvault.Connect.desktop";

TEST(AutostartEntryTests, ComesAndGoesAsAValidEntry)
{
    const std::pair<std::string, std::string> rows[] = {
        { "/usr/bin/stemvault-connect", "Exec=\"/usr/bin/stemvault-connect\"\n" },
        { "/a b/100%/$x", "Exec=\"/a b/100%%/\\\\$x\"\n" },
        { "/ends with a blank ", "TryExec=/ends with a blank\\s\n" },
        { "/q\"u`o\\te", "Exec=\"/q\\\\\"u\\\\`o\\\\\\\\te\"\n" },
    };
    for (const auto& [executable, line] : rows) {
        const TemporaryFolder folder;
        AutostartEntry entry(folder.path("autostart"), executable);
        EXPECT_EQ(entry.status(), LoginItemStatus::NotRegistered);
        EXPECT_TRUE(entry.registerItem());
        EXPECT_TRUE(entry.registerItem()) << "twice does no harm";
        EXPECT_EQ(entry.status(), LoginItemStatus::Enabled);
        EXPECT_NE(folder.read(file).find(line), std::string::npos) << folder.read(file);
        const std::string check = "desktop-file-validate '" + folder.path(file) + "'";
        EXPECT_EQ(std::system(check.c_str()), 0) << executable;
        EXPECT_TRUE(entry.unregisterItem());
        EXPECT_FALSE(std::filesystem::exists(folder.path(file)));
        EXPECT_TRUE(entry.unregisterItem()) << "an entry that is gone already is no failure";
    }
}

TEST(AutostartEntryTests, TheFileAloneSaysWhetherItIsOn)
{
    const std::pair<std::string, bool> rows[] = {
        { "[Desktop Entry]\nType=Application\n", true },
        { "[Desktop Entry]\nHidden=false\nX-GNOME-Autostart-enabled=true\n", true },
        { "[Desktop Entry]\nHidden=true\n", false },
        { "[Desktop Entry]\nX-GNOME-Autostart-enabled = false\n", false },
        { "[Desktop Entry]\r\nX-MATE-Autostart-enabled=false\r\n", false },
        { " [Desktop Entry]\n Hidden=true\n[Desktop Entry]\n", false },
        { "[Desktop Entry]\n[Desktop Action x]\nHidden=true\n", true },
        { "", false },
    };
    for (const auto& [content, isOn] : rows) {
        const TemporaryFolder folder;
        folder.write(file, content);
        EXPECT_EQ(AutostartEntry(folder.path("autostart"), "/x").status(),
            isOn ? LoginItemStatus::Enabled : LoginItemStatus::NotRegistered)
            << content;
    }
}

TEST(AutostartEntryTests, SwitchingOnKeepsWhatTheUserHasWritten)
{
    const TemporaryFolder folder;
    const std::string action = "Name=Stems\nX-Delay=9\n[Desktop Action x]\nExec=y\n";
    folder.write(file,
        "# mine\n[Desktop Entry]\nExec = /old --hidden\nHidden = true\r\n"
        "X-MATE-Autostart-enabled=false\n"
            + action);
    AutostartEntry entry(folder.path("autostart"), "/x");
    EXPECT_TRUE(entry.registerItem());
    EXPECT_EQ(entry.status(), LoginItemStatus::Enabled);
    const std::string text = folder.read(file);
    EXPECT_TRUE(text.starts_with("# mine\n[Desktop Entry]\nType=Application\nComment=")) << text;
    EXPECT_TRUE(text.ends_with("\nX-GNOME-Autostart-enabled=true\n" + action)) << text;
}

TEST(AutostartEntryTests, WhatIsInTheWayIsAFailure)
{
    const TemporaryFolder folder;
    folder.write("autostart", "a file");
    AutostartEntry entry(folder.path("autostart"), "/x");
    const auto registered = entry.registerItem();
    ASSERT_FALSE(registered);
    EXPECT_FALSE(registered.error().empty());
    EXPECT_FALSE(entry.unregisterItem());
    EXPECT_EQ(entry.status(), LoginItemStatus::NotRegistered);
    EXPECT_FALSE(AutostartEntry(folder.path("other"), "").registerItem()) << "no program";
    folder.makeFolder("draft/net.stemvault.Connect.desktop.new");
    EXPECT_FALSE(AutostartEntry(folder.path("draft"), "/x").registerItem());
    folder.makeFolder("taken/net.stemvault.Connect.desktop/inner");
    EXPECT_FALSE(AutostartEntry(folder.path("taken"), "/x").registerItem());
    EXPECT_EQ(folder.names("taken").size(), 1U) << "no draft is left";
}

TEST(AutostartEntryTests, AnAppImageStartsItself)
{
    ::setenv("APPIMAGE", "/home/a/Stemvault.AppImage", 1);
    const std::string started = AutostartEntry::standardExecutable();
    ::unsetenv("APPIMAGE");
    EXPECT_EQ(started, "/home/a/Stemvault.AppImage");
}

} // namespace
} // namespace stemvault::login_item
