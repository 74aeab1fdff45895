#include "Foundation/NotificationCenter.h"
#include "StemvaultConnect/MenuBarManager.h"
#include "StemvaultConnect/SessionTracker.h"
#include "StemvaultConnect/SessionTrackerObservable.h"
#include "Support/FakePlatform.h"

#include <gmock/gmock.h>

namespace stemvault {
namespace {

class MenuBarManagerTests : public testing::Test {
protected:
    void openSession(const std::string& file)
    {
        platform.processRunner.openFiles["5"] = "n" + file + "\n";
        platform.workspace.launch(5, "com.cockos.reaper", "REAPER");
        SessionTracker::shared().refresh();
        platform.dispatch.settle();
    }

    /// The second row: its title, or empty while it is hidden.
    std::string lastAdded()
    {
        platform.dispatch.settle();
        const MenuItem& row = platform.statusBar.open().items.at(1);
        return row.isHidden ? "" : row.title;
    }

    FakePlatform platform;
    MenuBarManager manager;
};

TEST_F(MenuBarManagerTests, TheMenuAsItIsBuilt)
{
    const Action action([] {});
    const std::vector<MenuItem> expected = {
        { "No session detected", {}, "", {}, false, false, false },
        { "", {}, "", {}, false, true, false },
        MenuItem::separatorItem(),
        { "Preferences…", {}, ",", action, true, false, false },
        { "Check for Updates…", {}, "", action, true, false, false },
        MenuItem::separatorItem(),
        { "Quit Stemvault Connect", {}, "q", action, true, false, false },
    };
    EXPECT_EQ(platform.statusBar.menu.items, expected);
    EXPECT_EQ(platform.statusBar.length, StatusBar::squareLength);
    EXPECT_EQ(
        platform.statusBar.image, (Image { "symbol:waveform.circle", "Stemvault Connect", true }));
    EXPECT_FALSE(SessionTracker::isMade() || SessionTrackerObservable::isMade());
}

TEST_F(MenuBarManagerTests, WithoutASymbolTheItemHasItsMenuAlone)
{
    FakePlatform bare;
    bare.bundle.hasSymbols = false;
    const MenuBarManager other;
    EXPECT_FALSE(bare.statusBar.image);
    EXPECT_EQ(bare.statusBar.menu.items.size(), 7U);
    Platform::install(nullptr);
}

TEST_F(MenuBarManagerTests, TheFirstLineIsTheSessionAsOfTheOpening)
{
    const AttributedString none { "○ No session detected",
        ForegroundColor { Color::SecondaryLabel, 0, 2 } };
    EXPECT_EQ(platform.statusBar.open().items[0].attributedTitle, none);
    openSession("/u/Sessions/Big Song/Big Song.rpp");
    EXPECT_EQ(platform.statusBar.menu.items[0].attributedTitle, none) << "not open since";
    const MenuItem& row = platform.statusBar.open().items[0];
    EXPECT_EQ(row.title, "● Big Song");
    EXPECT_EQ(row.attributedTitle,
        (AttributedString { "● Big Song", ForegroundColor { Color::SystemGreen, 0, 2 } }));
    EXPECT_FALSE(row.isEnabled);
    platform.workspace.quit(5);
    SessionTracker::shared().refresh();
    platform.dispatch.settle();
    EXPECT_EQ(platform.statusBar.open().items[0].attributedTitle, none);
}

TEST_F(MenuBarManagerTests, TheSecondLineIsTheLatestSingleCopy)
{
    NotificationCenter& center = NotificationCenter::defaultCenter();
    EXPECT_EQ(lastAdded(), "");
    center.post({ "bounceAdded", { { "destination", "Client Mixes" } } });
    EXPECT_EQ(lastAdded(), "") << "a batch names no file";
    center.post({ "bounceAdded", { { "file", "Mix 3.wav" }, { "destination", "Client Mixes" } } });
    EXPECT_EQ(lastAdded(), "Last added: Mix 3.wav → Client Mixes");
    EXPECT_EQ(platform.statusBar.updates, 1);
    center.post({ "bounceAdded", {} });
    center.post({ "bounceAdded", { { "file", "a.wav" } } });
    EXPECT_EQ(lastAdded(), "Last added: Mix 3.wav → Client Mixes");
    center.post({ "bounceAdded", { { "file", "" }, { "destination", "" } } });
    EXPECT_EQ(lastAdded(), "Last added:  → ");
}

TEST_F(MenuBarManagerTests, TheRowsDoWhatTheySay)
{
    platform.statusBar.choose("Quit Stemvault Connect");
    EXPECT_EQ(platform.application.terminations, 1);
    platform.statusBar.choose("Check for Updates…");
    platform.dialogs.answer("OK");
    platform.urlSession.finish(Failure { "" });
    platform.dispatch.settle();
    EXPECT_EQ(platform.dialogs.alerts.at(0).messageText, "Couldn't Check for Updates");
}

TEST_F(MenuBarManagerTests, PreferencesAreOneWindowMadeAtFirstUse)
{
    EXPECT_TRUE(platform.windows.windows.empty());
    platform.statusBar.choose("Preferences…");
    NotificationCenter::defaultCenter().post({ "openPreferences", {} });
    ASSERT_EQ(platform.windows.windows.size(), 1U);
    const auto& window = *platform.windows.windows[0];
    EXPECT_EQ(window.title, "Stemvault Connect");
    EXPECT_EQ(window.styleMask, 3U);
    EXPECT_EQ(window.history, "centered shown shown ");
    EXPECT_EQ(platform.application.activations, 2);
}

} // namespace
} // namespace stemvault
