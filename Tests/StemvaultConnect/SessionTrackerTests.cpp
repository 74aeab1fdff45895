#include "StemvaultConnect/SessionTracker.h"
#include "StemvaultConnect/SessionTrackerObservable.h"
#include "Support/FakePlatform.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace stemvault {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

struct SessionTrackerTests : testing::Test {
    void start()
    {
        SessionTracker::shared().observers.emplace_back(
            [this](const auto& folder) { told.push_back(folder ? folder->path() : "absent"); });
        SessionTracker::shared().start();
        platform.dispatch.settle();
    }

    std::size_t scans() { return std::exchange(platform.openFiles.calls, {}).size(); }

    FakePlatform platform;
    std::vector<std::string> told;
};

TEST_F(SessionTrackerTests, ChoosesWhatToScanAndWhatToPollFor)
{
    using enum ActivationPolicy;
    const struct {
        const char* what;
        RunningApplication application;
        bool isScanned;
        bool isPolled;
    } rows[] = {
        { "a DAW", { "com.cockos.reaper", Regular, "REAPER", 7 }, true, true },
        { "a prefix", { "com.avid.ProTools.Beta", Regular, "x", 7 }, true, true },
        { "Cubase", { "com.steinberg.cubase12", Regular, "x", 7 }, true, true },
        { "an older Studio One", { "com.presonus.studioone5", Regular, "x", 7 }, true, true },
        { "Logic by its identifier", { "com.apple.logic10", Regular, "x", 7 }, true, true },
        { "the case of an identifier", { "com.avid.protools", Regular, "x", 7 }, false, false },
        { "in the background", { "com.ableton.live", Accessory, "Live", 7 }, false, true },
        { "a DAW without a name", { "com.presonus.studioone6", Regular, {}, 7 }, true, true },
        { "by name", { "org.x", Regular, "my LOGIC thing", 7 }, true, false },
        { "by the other name", { "org.x", Regular, "Pro Tools Intro", 7 }, true, false },
        { "by name in the background", { "org.x", Prohibited, "Logic", 7 }, false, false },
        { "by name without identifier", { {}, Regular, "Logic", 7 }, false, false },
        { "neither DAW nor name", { "org.x", Regular, {}, 7 }, false, false },
        { "something else", { "org.gnome.Maps", Regular, "Maps", 7 }, false, false },
    };
    for (const auto& row : rows) {
        FakePlatform desktop;
        desktop.workspace.applications = { row.application };
        SessionTracker::shared().start();
        desktop.dispatch.settle();
        EXPECT_EQ(desktop.openFiles.calls.size(), row.isScanned ? 1U : 0U) << row.what;
        EXPECT_EQ(desktop.dispatch.timerCount(), row.isPolled ? 1U : 0U) << row.what;
    }
}

TEST_F(SessionTrackerTests, TheFirstApplicationThatYieldsAFolderWins)
{
    platform.workspace.launch(30, "com.cockos.reaper", "REAPER");
    platform.workspace.launch(20, "com.ableton.live", "Live");
    platform.workspace.launch(10, "com.avid.ProTools", "Pro Tools");
    platform.openFiles.listings = { { 30, std::nullopt }, { 20, "n/live/S.als\n" },
        { 10, "n/pt/WaveCache.wfm\n" } };
    start();
    EXPECT_THAT(told, ElementsAre("/live"));
    EXPECT_THAT(platform.openFiles.calls, ElementsAre(30, 20));
}

// In capitals, because the rule for packages already finds .logicx in lower case.
TEST_F(SessionTrackerTests, KnowsTheSessionFilesOfEveryDAW)
{
    for (const std::string extension : { "PTX", "LOGICX", "ALS", "SONG", "CPR", "RPP" }) {
        FakePlatform desktop;
        SessionTracker::shared().start();
        desktop.openSession("/s/Song." + extension);
        EXPECT_EQ(SessionTracker::shared().currentSessionFolder(), FileURL("/s")) << extension;
    }
}

TEST_F(SessionTrackerTests, OfSeveralSessionFilesTheOneChangedLastCounts)
{
    const TemporaryFolder disk;
    const std::string old = disk.write("Old/Old.rpp", "");
    const std::string song = disk.write("Song/Song.rpp", "");
    std::filesystem::last_write_time(old, std::filesystem::last_write_time(song) - 1h);
    for (const std::int32_t whoHasThemOpen : { 5, 1 }) {
        FakePlatform desktop;
        desktop.workspace.applications = { { "com.cockos.reaper", ActivationPolicy::Regular,
            "REAPER", 5, 1 } };
        desktop.openFiles.listings[whoHasThemOpen] = "n" + old + "\nn" + song + "\n";
        SessionTracker::shared().start();
        desktop.dispatch.settle();
        EXPECT_EQ(SessionTracker::shared().currentSessionFolder(), FileURL(disk.path("Song")))
            << "process " << whoHasThemOpen;
    }
}

TEST_F(SessionTrackerTests, AsksTheServerOfWindowsProgramsWhereNothingElseDecides)
{
    const RunningApplication live { "com.ableton.live", ActivationPolicy::Regular, "Live", 5, 1 };
    const RunningApplication cubase { "com.steinberg.cubase12", ActivationPolicy::Regular, "C", 6,
        1 };
    const RunningApplication reaper { "com.cockos.reaper", ActivationPolicy::Regular, "R", 7 };
    const struct {
        const char* what;
        std::vector<RunningApplication> applications;
        std::map<std::int32_t, std::optional<std::string>> openFiles;
        std::optional<FileURL> folder;
        std::size_t scans;
    } rows[] = {
        { "a session file not yet read", { live }, { { 5, "n/x.asd\n" }, { 1, "n/s/S.als\n" } },
            FileURL("/s"), 2 },
        { "what the DAW itself has open decides", { live },
            { { 5, "n/a/A.als\n" }, { 1, "n/s/S.als\n" } }, FileURL("/a"), 1 },
        { "another DAW's own files decide", { live, reaper },
            { { 7, "n/r/R.rpp\n" }, { 1, "n/s/S.als\n" } }, FileURL("/r"), 2 },
        { "the session of another DAW of that server", { live, cubase },
            { { 1, "n/c/C.cpr\nn/c/Audio Files/a.wav\nn/c/WaveCache.wfm\n" } }, FileURL("/c"), 4 },
        { "the session of a DAW that does not run", { live }, { { 1, "n/c/C.cpr\n" } }, {}, 2 },
        { "no lsof for the server", { live }, { { 1, std::nullopt } }, {}, 2 },
        { "no server", { reaper }, { { 0, "n/r/R.rpp\n" } }, {}, 1 },
    };
    for (const auto& row : rows) {
        FakePlatform desktop;
        desktop.workspace.applications = row.applications;
        desktop.openFiles.listings = row.openFiles;
        SessionTracker::shared().start();
        desktop.dispatch.settle();
        EXPECT_EQ(SessionTracker::shared().currentSessionFolder(), row.folder) << row.what;
        EXPECT_EQ(desktop.openFiles.calls.size(), row.scans) << row.what;
    }
}

TEST_F(SessionTrackerTests, KeepsWhatAServerToldWhileTheDAWRuns)
{
    platform.workspace.applications = { { "com.ableton.live", ActivationPolicy::Regular, "Live", 5,
        1 } };
    platform.openFiles.listings = { { 1, "n/s/S.als\n" } };
    start();
    EXPECT_THAT(told, ElementsAre("/s"));
    const std::vector<std::string> leftOut = SessionTracker::shared().workingFolders();
    EXPECT_THAT(leftOut, testing::Contains("/s/Samples"));
    platform.openFiles.listings.clear();
    platform.dispatch.advance(30s);
    EXPECT_THAT(told, ElementsAre("/s")) << "the DAW has read its session file and closed it";
    EXPECT_EQ(SessionTracker::shared().workingFolders(), leftOut);
    platform.openFiles.listings = { { 5, "n/next/N.als\n" } };
    platform.dispatch.advance(30s);
    EXPECT_THAT(told, ElementsAre("/s", "/next"));
    EXPECT_THAT(SessionTracker::shared().workingFolders(), IsEmpty())
        << "the DAW itself has the session file open";
    platform.openFiles.listings = { { 1, "n/s/S.als\n" } };
    platform.dispatch.advance(30s);
    platform.quitDAW();
    EXPECT_THAT(told, ElementsAre("/s", "/next", "/s", "absent"));
}

TEST_F(SessionTrackerTests, FollowsTheSessionAndTellsOnlyChanges)
{
    start();
    EXPECT_THAT(told, IsEmpty());

    platform.openSession("/a/S.rpp");
    platform.openSession("/a/Other.rpp");
    EXPECT_THAT(told, ElementsAre("/a"));

    platform.openFiles.listings[5] = "n/b/S.rpp\n";
    platform.dispatch.advance(30s);
    EXPECT_THAT(told, ElementsAre("/a", "/b"));
    EXPECT_EQ(SessionTracker::shared().currentSessionFolder(), FileURL("/b"));

    platform.quitDAW();
    EXPECT_THAT(told, ElementsAre("/a", "/b", "absent"));
    EXPECT_EQ(platform.dispatch.timerCount(), 0U);
}

struct SessionByMediaTests : SessionTrackerTests {
    SessionByMediaTests()
    {
        platform.workspace.launch(5, "com.cockos.reaper", "REAPER");
        start();
    }

    /// Lets a process open these files, and returns what observers are then told.
    std::vector<std::string> openedBy(std::int32_t process, const std::string& output)
    {
        platform.openFiles.listings[process] = output;
        platform.dispatch.advance(30s);
        return std::exchange(told, {});
    }

    /// Makes a session and returns what lsof prints for a take in it.
    std::string takeIn(const std::string& session)
    {
        folder.write(session + "/" + session + ".rpp", "");
        return "n" + folder.path(session + "/Media/Take 1.wav") + "\n";
    }

    static std::vector<std::string> workingFolders()
    {
        return SessionTracker::shared().workingFolders();
    }

    TemporaryFolder folder;
    const std::string song = folder.path("Song");
    const std::string takeOfSong = takeIn("Song");
};

TEST_F(SessionByMediaTests, IsKeptWhileItsDAWRunsAndNothingElseIsFound)
{
    EXPECT_THAT(openedBy(5, takeOfSong), ElementsAre(song));
    EXPECT_THAT(workingFolders(), ElementsAre(song + "/Media"));
    EXPECT_THAT(openedBy(5, ""), IsEmpty()) << "the DAW has closed its media";
    EXPECT_THAT(workingFolders(), ElementsAre(song + "/Media"));
    EXPECT_THAT(openedBy(5, takeIn("Next")), ElementsAre(folder.path("Next")));
    openedBy(5, "");
    platform.quitDAW();
    EXPECT_THAT(told, ElementsAre("absent"));
    EXPECT_THAT(workingFolders(), IsEmpty());
}

TEST_F(SessionByMediaTests, CountsOnlyWhereNoFileOfASessionTells)
{
    openedBy(5, takeOfSong);
    platform.workspace.launch(6, "com.ableton.live", "Live");
    EXPECT_THAT(openedBy(6, "n/live/S.als\n"), ElementsAre("/live"));
    EXPECT_THAT(workingFolders(), IsEmpty());
    EXPECT_THAT(openedBy(6, ""), ElementsAre(song));

    EXPECT_THAT(openedBy(5, "n" + song + "/Song.rpp\n"), IsEmpty()) << "the same folder";
    EXPECT_THAT(workingFolders(), IsEmpty());
    EXPECT_THAT(openedBy(5, ""), ElementsAre("absent"))
        << "a folder known by its session file is not kept";
}

TEST_F(SessionByMediaTests, IsNotKeptForAnotherProcessOfTheSameNumber)
{
    openedBy(5, takeOfSong);
    platform.openFiles.listings.clear();
    platform.workspace.applications.clear();
    platform.workspace.launch(5, "org.ardour.Ardour", "Ardour");
    platform.dispatch.settle();
    EXPECT_THAT(told, ElementsAre("absent"));
}

TEST_F(SessionByMediaTests, LooksThatHangDoNotPileUp)
{
    platform.openFiles.listings[5] = takeOfSong;
    std::vector<Work> hanging;
    for (int i = 0; i < 10; ++i) {
        SessionTracker::shared().refresh();
        platform.dispatch.runOldestUtilityWork();
        platform.dispatch.settleMainQueue();
        while (platform.dispatch.utilityWorkCount() > 0)
            hanging.push_back(platform.dispatch.holdOldestUtilityWork());
    }
    EXPECT_EQ(hanging.size(), 1U);
    EXPECT_THAT(openedBy(5, "n/a/S.rpp\n"), ElementsAre("/a")) << "scans by session file go on";
    hanging.front()();
    platform.dispatch.settle();
    EXPECT_THAT(told, IsEmpty()) << "what it found is out of date";
}

TEST_F(SessionTrackerTests, PollsThirtySecondsAfterTheLatestPass)
{
    platform.workspace.launch(5, "com.cockos.reaper", "REAPER");
    start();
    platform.dispatch.advance(29s);
    platform.workspace.notify(WorkspaceNotification::DidActivateApplication);
    platform.dispatch.settle();
    EXPECT_EQ(scans(), 2U);
    platform.dispatch.advance(29s + 999ms);
    EXPECT_EQ(scans(), 0U);
    platform.dispatch.advance(1ms);
    EXPECT_EQ(scans(), 1U);
    platform.dispatch.advance(90s);
    EXPECT_EQ(scans(), 3U);
    EXPECT_EQ(platform.dispatch.timerCount(), 1U);
}

TEST_F(SessionTrackerTests, AppliesResultsInTheOrderInWhichScansFinish)
{
    start();
    platform.openFiles.listings[5] = "n/a/S.rpp\n";
    platform.workspace.launch(5, "com.cockos.reaper", "REAPER");
    platform.workspace.quit(5);
    // The later pass, which saw no DAW, ends before the earlier one.
    const auto earlier = platform.dispatch.holdOldestUtilityWork();
    platform.dispatch.runOldestUtilityWork();
    earlier();
    EXPECT_THAT(told, IsEmpty()) << "observers are called from the main queue only";
    platform.dispatch.settle();
    EXPECT_THAT(told, ElementsAre("/a", "absent")) << "a new pass corrects the earlier one";
}

TEST_F(SessionTrackerTests, AScanThatOutlivesTheTrackerIsDropped)
{
    platform.openSession("/a/S.rpp");
    SessionTracker::shared().observers.emplace_back(
        [](const auto&) { ADD_FAILURE() << "a destroyed tracker called its observer"; });
    SessionTracker::shared().start();
    SessionTracker::shared().refresh();
    platform.dispatch.runOldestUtilityWork();
    SharedInstances::destroyAll();
    platform.dispatch.settle();
    EXPECT_EQ(platform.openFiles.calls.size(), 1U) << "the second scan had not begun";
}

TEST_F(SessionTrackerTests, WhatIsDrawnFollowsInATurnOfItsOwn)
{
    start();
    const SessionTrackerObservable& drawn = SessionTrackerObservable::shared();
    std::vector<std::optional<FileURL>> drawnBefore;
    const auto note = [&] { drawnBefore.push_back(drawn.currentSessionFolder()); };
    SessionTracker::shared().observers.emplace_back([&](const auto&) { note(); });
    SessionTrackerObservable::shared().onWillChange(note);
    platform.openSession("/a/S.rpp");
    EXPECT_THAT(drawnBefore, ElementsAre(std::nullopt, std::nullopt));
    EXPECT_EQ(drawn.currentSessionFolder(), FileURL("/a"));
}

TEST_F(SessionTrackerTests, TellsItsObserversInOrderAndLateOnesNextTime)
{
    SessionTracker::shared().observers.emplace_back([this](const auto&) {
        SessionTracker::shared().observers.emplace_back(
            [this](const auto&) { told.emplace_back("late"); });
        told.emplace_back("first");
    });
    start();
    platform.openSession("/a/S.rpp");
    platform.quitDAW();
    EXPECT_THAT(told, ElementsAre("first", "/a", "first", "absent", "late"));
}

} // namespace
} // namespace stemvault
