#include "Foundation/NotificationCenter.h"
#include "StemvaultConnect/MenuBarManager.h"
#include "StemvaultConnect/SessionTracker.h"
#include "StemvaultConnect/SessionTrackerObservable.h"
#include "StemvaultConnect/SettingsStore.h"
#include "Support/FakePlatform.h"

#include <gmock/gmock.h>

#include <functional>

namespace stemvault {
namespace {

using namespace std::chrono_literals;

struct MenuBarManagerTests : testing::Test {
    FakePlatform platform;
    FakeStatusBar& bar = platform.statusBar;
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
    EXPECT_EQ(bar.menu.items, expected);
    EXPECT_EQ(bar.length, StatusBar::squareLength);
    EXPECT_EQ(bar.image, (Image { "symbol:waveform.circle", "Stemvault Connect", true }));
    EXPECT_FALSE(SessionTracker::isMade() || SessionTrackerObservable::isMade());

    FakePlatform bare;
    bare.bundle.missing = { "waveform.circle" };
    const MenuBarManager other;
    EXPECT_FALSE(bare.statusBar.image);
    EXPECT_EQ(bare.statusBar.menu.items, expected) << "without a symbol";
}

TEST_F(MenuBarManagerTests, TheFirstLineIsTheSessionAsOfTheOpening)
{
    const AttributedString none { "○ No session detected",
        ForegroundColor { Color::SecondaryLabel, 0, 2 } };
    const AttributedString song { "● Big Song", ForegroundColor { Color::SystemGreen, 0, 2 } };
    EXPECT_EQ(bar.open().items[0].attributedTitle, none);
    SessionTracker::shared().start();
    platform.openSession("/u/Sessions/Big Song/Big Song.rpp");
    EXPECT_EQ(bar.menu.items[0].attributedTitle, none) << "the menu was not opened since";
    const MenuItem expected { song.string, song, "", {}, false, false, false };
    EXPECT_EQ(bar.open().items[0], expected);
    platform.quitDAW();
    EXPECT_EQ(bar.open().items[0].attributedTitle, none);
}

TEST_F(MenuBarManagerTests, TheSecondLineIsTheLatestSingleCopy)
{
    const std::string latest = "Last added: Mix 3.wav → Client Mixes";
    const struct {
        std::map<std::string, std::string> added;
        std::string expected;
    } rows[] = {
        { { { "destination", "A" } }, "hidden" }, // A batch does not name a file.
        { { { "file", "Mix 3.wav" }, { "destination", "Client Mixes" } }, latest },
        { {}, latest },
        { { { "file", "a.wav" } }, latest },
        { { { "file", "" }, { "destination", "" } }, "Last added:  → " },
    };
    for (const auto& row : rows) {
        const int updates = bar.updates;
        NotificationCenter::defaultCenter().post({ "bounceAdded", row.added });
        EXPECT_EQ(bar.updates, updates) << "the notice is handled on the main thread only";
        platform.dispatch.settle();
        const MenuItem& line = bar.open().items.at(1);
        EXPECT_EQ(line.isHidden ? "hidden" : line.title, row.expected);
    }
    EXPECT_EQ(bar.updates, 2);
}

TEST_F(MenuBarManagerTests, TheRowsDoWhatTheySay)
{
    bar.choose("Quit Stemvault Connect");
    EXPECT_EQ(platform.application.terminations, 1);
    bar.choose("Check for Updates…");
    platform.dialogs.answer("OK");
    platform.urlSession.finish(Failure { "" });
    platform.dispatch.settle();
    EXPECT_EQ(platform.dialogs.alerts.at(0).messageText, "Couldn't Check for Updates");
}

TEST_F(MenuBarManagerTests, PreferencesAreOneWindowMadeAtFirstUseAndDrawnWhenASessionIsFound)
{
    EXPECT_TRUE(platform.windows.windows.empty());
    platform.openSession("/s/S.rpp");
    bar.choose("Preferences…");
    NotificationCenter::defaultCenter().post({ "openPreferences", {} });
    platform.dispatch.settle();
    EXPECT_THAT(platform.windows.windows,
        testing::ElementsAre(
            "made, titled Stemvault Connect, style 3, centered, shown, shown, drawn"));
    EXPECT_EQ(platform.application.activations, 2);
}

TEST_F(MenuBarManagerTests, WithoutAStatusBarAFirstStartOpensThePreferences)
{
    const struct {
        const char* what;
        bool isBarThere;
        std::function<void(SettingsStore&)> setUp;
        std::size_t windows;
    } rows[] = {
        { "nothing set up, no status bar", false, [](SettingsStore&) {}, 1 },
        { "a status bar", true, [](SettingsStore&) {}, 0 },
        { "a folder", false,
            [](SettingsStore& store) {
                store.addFolder({ {}, "A", "/A" });
            },
            0 },
        { "a projects root", false, [](SettingsStore& store) { store.setProjectsRootPath("/P"); },
            0 },
        { "an always-watch folder", false,
            [](SettingsStore& store) { store.setAlwaysWatchPath("/W"); }, 0 },
    };
    for (const auto& row : rows) {
        FakePlatform desktop;
        const MenuBarManager fresh;
        row.setUp(SettingsStore::shared());
        desktop.dispatch.advance(9s);
        EXPECT_TRUE(desktop.windows.windows.empty()) << "a status bar may still come";
        desktop.statusBar.isThere = row.isBarThere;
        desktop.dispatch.advance(1s);
        EXPECT_EQ(desktop.windows.windows.size(), row.windows) << row.what;
    }
}

TEST_F(MenuBarManagerTests, PreferencesThatAreOpenAlreadyAreLeftInPeace)
{
    bar.isThere = false;
    bar.choose("Preferences…");
    const auto shown = platform.windows.windows;
    platform.dispatch.advance(10s);
    EXPECT_EQ(platform.windows.windows, shown);
}

} // namespace
} // namespace stemvault
