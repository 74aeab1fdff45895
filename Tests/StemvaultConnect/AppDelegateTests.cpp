#include "StemvaultConnect/AppDelegate.h"
#include "StemvaultConnect/BounceAlertController.h"
#include "StemvaultConnect/BounceWatcher.h"
#include "StemvaultConnect/SessionTracker.h"
#include "StemvaultConnect/SessionTrackerObservable.h"
#include "StemvaultConnect/SettingsStore.h"
#include "Support/FakePlatform.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace stemvault {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

struct AppDelegateTests : testing::Test {
    [[nodiscard]] std::vector<std::string> watched() const
    {
        const auto& stream = platform.fileEvents.streams.back();
        return stream->state == "made started" ? stream->paths : std::vector<std::string>();
    }

    FakePlatform platform;
    AppDelegate delegate;
};

TEST_F(AppDelegateTests, LaunchMakesWhatItNeedsAndNoMore)
{
    EXPECT_FALSE(SessionTracker::isMade() || BounceWatcher::isMade() || SettingsStore::isMade());
    platform.workspace.launch(5, "com.cockos.reaper", "REAPER");
    delegate.applicationDidFinishLaunching();
    platform.dispatch.settle();
    EXPECT_TRUE(SessionTracker::isMade() && BounceWatcher::isMade() && SettingsStore::isMade());
    EXPECT_FALSE(BounceAlertController::isMade() || SessionTrackerObservable::isMade());
    EXPECT_EQ(platform.statusBar.menu.items.size(), 7U);
    EXPECT_EQ(platform.urlSession.urls.size(), 1U) << "the daily look for an update";
    EXPECT_EQ(platform.openFiles.calls.size(), 1U) << "a DAW that was already running";
    EXPECT_TRUE(platform.fileEvents.streams.empty()) << "nothing to watch";
    EXPECT_EQ(platform.application.icon, Image { "/resources/AppIcon.icns" });
    EXPECT_NE(platform.application.servicesProvider, nullptr);
}

TEST_F(AppDelegateTests, AMissingIconIsLeftAlone)
{
    platform.bundle.missing = { "/resources/AppIcon.icns" };
    delegate.applicationDidFinishLaunching();
    EXPECT_FALSE(platform.application.icon);
}

TEST_F(AppDelegateTests, WatchingFollowsTheSessionAndTheSetting)
{
    SettingsStore::shared().setAlwaysWatchPath("/w");
    delegate.applicationDidFinishLaunching();
    EXPECT_THAT(watched(), ElementsAre("/w")) << "before the first scan has ended";
    platform.openSession("/a/S.rpp");
    EXPECT_THAT(watched(), ElementsAre("/a", "/w"));
    SettingsStore::shared().setAlwaysWatchPath("/other");
    platform.openSession("/b/S.rpp");
    EXPECT_THAT(watched(), ElementsAre("/b", "/other")) << "the current setting";
    platform.quitDAW();
    EXPECT_THAT(watched(), ElementsAre("/other"));
    EXPECT_EQ(platform.statusBar.updates, 3) << "each change of the session changes the menu";
}

TEST_F(AppDelegateTests, BouncesAreAskedAboutInTheOrderOfTheirDetection)
{
    TemporaryFolder folder;
    SettingsStore::shared().setProjectsRootPath("/p");
    delegate.applicationDidFinishLaunching();
    platform.openSession(folder.path("S.rpp"));
    constexpr auto created = FileEventFlag::ItemIsFile | FileEventFlag::ItemCreated;
    platform.fileEvents.deliver({ folder.write("Song/1.wav", "1"), folder.write("2.wav", "2"),
                                    folder.write("Song/3.wav", "3") },
        { created, created, created });
    platform.dialogs.answer("Skip", 0, [this] { platform.dispatch.advance(5s); });
    platform.dialogs.answer("Skip");
    platform.dialogs.answer("Skip");
    platform.dispatch.advance(2s);
    EXPECT_THAT(platform.dialogs.texts(),
        ElementsAre("1.wav\nfrom Song",
            "2.wav\nfrom " + lastPathComponent(folder.path()) + "\n\n+ 1 more waiting",
            "3.wav\nfrom Song"));
}

TEST_F(AppDelegateTests, ABounceThatBecomesALinkIsNotCopied)
{
    TemporaryFolder folder;
    const std::string mix = folder.write("Song/Mix.wav", "mix");
    const std::string secret = folder.write("private", "secret");
    SettingsStore::shared().addFolder({ UUID(), "Client A", folder.makeFolder("Client A") });
    delegate.applicationDidFinishLaunching();
    platform.openSession(folder.path("Song/S.rpp"));
    platform.fileEvents.deliver(
        { mix }, { FileEventFlag::ItemIsFile | FileEventFlag::ItemCreated });
    platform.dialogs.answer("Add", 0, [&] {
        std::filesystem::remove(mix);
        std::filesystem::create_symlink(secret, mix);
    });
    platform.dialogs.answer("OK");
    platform.dispatch.advance(5s);
    EXPECT_THAT(platform.dialogs.alerts.back().informativeText,
        testing::HasSubstr("“Mix.wav” couldn’t be copied because it is a link"));
    EXPECT_THAT(folder.names("Client A"), testing::IsEmpty());
}

TEST_F(AppDelegateTests, ASecondStartOpensThePreferences)
{
    delegate.applicationDidFinishLaunching();
    EXPECT_TRUE(platform.windows.windows.empty());
    delegate.applicationShouldHandleReopen();
    EXPECT_THAT(platform.windows.windows, ElementsAre(testing::EndsWith("shown")));
}

TEST_F(AppDelegateTests, TerminatingStopsWhatRunsByItself)
{
    delegate.applicationDidFinishLaunching();
    platform.openSession("/a/S.rpp");
    platform.openFiles.listings[5] = "n/b/S.rpp\n";
    SessionTracker::shared().refresh();
    delegate.applicationWillTerminate();
    platform.dispatch.settle();
    EXPECT_THAT(platform.fileEvents.streams, testing::SizeIs(1))
        << "a scan that ends late starts no stream";
    EXPECT_EQ(
        platform.fileEvents.streams.back()->state, "made started stopped invalidated released");
    EXPECT_EQ(platform.dispatch.timerCount(), 0U);
    platform.openFiles.calls.clear();
    platform.openSession("/c/S.rpp");
    platform.dispatch.advance(60s);
    EXPECT_TRUE(platform.openFiles.calls.empty());
}

} // namespace
} // namespace stemvault
