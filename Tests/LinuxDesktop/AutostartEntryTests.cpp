#include "LinuxDesktop/Login/AutostartEntry.h"
#include "Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace stemvault {
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
        EXPECT_TRUE(entry.unregisterItem()) << "as it was wanted";
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
    const std::string entry = "# mine\n[Desktop Entry]\nName=Stems\nX-Delay=9\n";
    const std::string action = "[Desktop Action x]\nExec=y\n";
    const std::string rows[] = {
        entry + action,
        entry + "Exec = /old --hidden\nTryExec=/old\n Hidden = true\n" + action,
        entry + "X-GNOME-Autostart-enabled=false\r\nX-MATE-Autostart-enabled=false\r\n" + action,
    };
    const std::string expected = "# mine\n[Desktop Entry]\n"
                                 "Type=Application\n"
                                 "Comment=Puts each bounce of the open session into its Stemvault "
                                 "folder\n"
                                 "Icon=net.stemvault.Connect\nExec=\"/x\"\nTryExec=/x\n"
                                 "Terminal=false\nStartupNotify=false\n"
                                 "X-GNOME-Autostart-enabled=true\nName=Stems\nX-Delay=9\n"
        + action;
    for (const std::string& before : rows) {
        const TemporaryFolder folder;
        folder.write(file, before);
        AutostartEntry item(folder.path("autostart"), "/x");
        EXPECT_TRUE(item.registerItem());
        EXPECT_EQ(folder.read(file), expected);
        EXPECT_EQ(item.status(), LoginItemStatus::Enabled);
    }
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
}

} // namespace
} // namespace stemvault
