#include "StemvaultConnect/BounceWatcher.h"
#include "StemvaultConnect/SessionTracker.h"
#include "StemvaultConnect/SettingsStore.h"
#include "Support/FakePlatform.h"
#include "Support/TemporaryFolder.h"
#include "Support/WrittenFile.h"

#include <gmock/gmock.h>

#include <sstream>
#include <sys/stat.h>

namespace stemvault {
namespace {

using namespace std::chrono_literals;
using namespace FileEventFlag;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t writtenFile = ItemIsFile | ItemCreated;

struct BounceWatcherTests : testing::Test {
    BounceWatcherTests()
    {
        BounceWatcher::shared().onBounceDetected = [this](const FileURL& file, const auto& /*name*/,
                                                       const auto& itsFolder) {
            reported.push_back(file.path());
            reportedFolder = itsFolder;
        };
        watch();
    }

    static void watch() { BounceWatcher::shared().update(FileURL("/s"), std::nullopt); }

    void deliver(const std::string& path, std::uint32_t flags = writtenFile)
    {
        platform.fileEvents.deliver({ path }, { flags });
    }

    /// Writes the mix and delivers its event.
    void bounce(const std::string& content = "data") { deliver(folder.write("Mix.wav", content)); }

    /// Lets this time pass and returns what has been reported since the last call.
    std::vector<std::string> reportedAfter(std::chrono::milliseconds time)
    {
        platform.dispatch.advance(time);
        return std::exchange(reported, {});
    }

    FakePlatform platform;
    TemporaryFolder folder;
    const std::string mix = folder.path("Mix.wav");
    std::vector<std::string> reported;
    std::optional<FileIdentity> reportedFolder; ///< The folder in the latest report.
};

TEST_F(BounceWatcherTests, MakesOneStreamOverTheFoldersItIsGiven)
{
    const struct {
        const char* what;
        std::optional<FileURL> sessionFolder;
        std::optional<std::string> alwaysWatchPath;
        std::vector<std::string> expected;
    } rows[] = {
        { "nothing to watch", {}, {}, {} },
        { "an empty path is none", {}, "", {} },
        { "the session alone", FileURL("/s"), {}, { "/s" } },
        { "the other alone", {}, "/w", { "/w" } },
        { "the session first", FileURL("/s"), "/w", { "/s", "/w" } },
        { "the same twice", FileURL("/s"), "/s", { "/s", "/s" } },
    };
    for (const auto& row : rows) {
        FakePlatform desktop;
        const auto& streams = desktop.fileEvents.streams;
        BounceWatcher::shared().update(row.sessionFolder, row.alwaysWatchPath);
        ASSERT_EQ(streams.size(), row.expected.empty() ? 0U : 1U) << row.what;
        BounceWatcher::shared().update(std::nullopt, std::nullopt);
        if (row.expected.empty())
            continue;
        EXPECT_EQ(streams[0]->paths, row.expected) << row.what;
        EXPECT_EQ(streams[0]->latency, 500ms);
        EXPECT_EQ(streams[0]->flags, 0x13U);
        EXPECT_EQ(streams[0]->state, "made started stopped invalidated released");
    }
}

TEST_F(BounceWatcherTests, TakesAudioFilesThatAreWritten)
{
    SettingsStore::shared().setAlwaysWatchPath("/x/Bounces");
    const auto isTaken = [this](const std::string& path, std::uint32_t flags = writtenFile) {
        watch();
        deliver(path, flags);
        return reportedAfter(2s) == std::vector { path };
    };
    const struct {
        const char* what;
        std::string path;
        std::uint32_t flags;
        bool isTaken;
    } rows[] = {
        { "a file that changed", "/s/Mix.wav", ItemIsFile | ItemModified, true },
        { "neither new nor changed", "/s/Mix.wav", ItemIsFile | ItemRenamed | ItemRemoved, false },
        { "no file", "/s/Take.wav", ItemIsDir | ItemIsSymlink | ItemCreated, false },
        { "the extension in capitals", "/s/Mix.WAV", writtenFile, true },
        { "not yet under its name", "/s/Mix.wav.tmp", writtenFile, false },
        { "no extension", "/s/wav", writtenFile, false },
        { "the DAW's own folder in any case", "/s/AUDIO FILES/a.wav", writtenFile, false },
        { "deeper than the DAW's own", "/s/Audio Files/Mixes/a.wav", writtenFile, true },
        { "below the other folder", "/x/Bounces/Audio Files/a.wav", writtenFile, true },
        { "a sibling that begins alike", "/x/Bounces2/Audio Files/a.wav", writtenFile, true },
        { "a sibling that does not", "/x/Mixes/Audio Files/a.wav", writtenFile, false },
    };
    for (const auto& row : rows)
        EXPECT_EQ(isTaken(row.path, row.flags), row.isTaken) << row.what;
    for (const std::string extension : { "wav", "aiff", "aif", "mp3", "flac", "m4a", "mp4", "mov" })
        EXPECT_TRUE(isTaken("/s/a." + extension)) << extension;
    SettingsStore::shared().setAlwaysWatchPath(""); // Every path begins with it.
    for (const std::string internal : { "Audio Files", "Session File Backups", "WaveCache Files",
             "Fade Files", "Plug-In Settings", "Rendered Files", "Video Files", "Clip Groups" })
        EXPECT_FALSE(isTaken("/s/" + internal + "/a.wav")) << internal;
}

TEST_F(BounceWatcherTests, LeavesOutTheWorkingFoldersOfASessionFoundByItsMedia)
{
    const std::string song = folder.path("Song");
    folder.write("Song/Song.rpp", "");
    SettingsStore::shared().setAlwaysWatchPath(folder.path("Always"));
    SessionTracker::shared().start();
    const struct {
        const char* what;
        std::string openFile;
        std::string written;
        std::size_t reports;
    } rows[] = {
        { "a mix", "/Media/1.wav", song + "/Mix.wav", 1 },
        { "a take in another case", "/Media/1.wav", song + "/media/2.wav", 0 },
        { "deeper in a working folder", "/Media/1.wav", song + "/Media/Vocals/2.wav", 0 },
        { "a folder that only begins alike", "/Media/1.wav", song + "/Media Export/2.wav", 1 },
        { "a folder of that name deeper", "/Media/1.wav", song + "/Mixes/Media/2.wav", 1 },
        { "below the other folder", "/Media/1.wav", folder.path("Always/Media/2.wav"), 1 },
        { "the session is known by its file", "/Song.rpp", song + "/Media/2.wav", 1 },
    };
    platform.workspace.launch(5, "com.cockos.reaper", "REAPER");
    for (const auto& row : rows) {
        platform.openFiles.listings[5] = "n" + song + row.openFile + "\n";
        SessionTracker::shared().refresh();
        platform.dispatch.settle();
        watch();
        deliver(row.written);
        EXPECT_EQ(reportedAfter(2s).size(), row.reports) << row.what;
    }
}

TEST_F(BounceWatcherTests, PairsPathsAndFlagsUpToTheShorterOfTheTwo)
{
    platform.fileEvents.deliver({ "/s/a.wav", "/s/b.wav" }, { writtenFile });
    platform.fileEvents.deliver({ "/s/c.wav" }, { ItemIsDir, writtenFile });
    platform.fileEvents.deliver({}, { writtenFile });
    EXPECT_THAT(reportedAfter(2s), ElementsAre("/s/a.wav"));
}

TEST_F(BounceWatcherTests, ReportsAFileOnceAtTheFourthCheck)
{
    bounce();
    deliver(mix, ItemIsFile | ItemModified);
    EXPECT_THAT(reportedAfter(1499ms), IsEmpty());
    EXPECT_THAT(reportedAfter(1ms), ElementsAre(mix));
    EXPECT_THAT(reportedAfter(1h), IsEmpty());
}

TEST_F(BounceWatcherTests, WaitsForAsLongAsAFileGrows)
{
    for (std::size_t size = 1; size <= 25; ++size) {
        bounce(std::string(size, 'x'));
        platform.dispatch.advance(400ms);
    }
    EXPECT_THAT(reported, IsEmpty());
    EXPECT_THAT(reportedAfter(1499ms), IsEmpty())
        << "the last change was seen less than 1.5 seconds ago";
    EXPECT_THAT(reportedAfter(501ms), ElementsAre(mix));
}

TEST_F(BounceWatcherTests, ReportsAgainOnlyAtAnotherSize)
{
    const struct {
        const char* what;
        std::size_t size, reports;
    } rows[] = {
        { "first seen", 10'000, 1 },
        { "written again at the same size", 10'000, 0 },
        { "written again, larger", 12'000, 1 },
        { "the larger size is the one remembered", 12'000, 0 },
        { "back at the first size", 10'000, 1 },
        { "empty counts as a size", 0, 1 },
    };
    for (const auto& row : rows) {
        bounce(std::string(row.size, 'x'));
        EXPECT_EQ(reportedAfter(2s).size(), row.reports) << row.what;
    }
    std::filesystem::remove(mix);
    deliver(mix);
    EXPECT_THAT(reportedAfter(2s), IsEmpty())
        << "a missing file counts as empty, and that size was reported";
}

TEST_F(BounceWatcherTests, AFileThatGoesDuringItsWaitIsReported)
{
    bounce();
    platform.dispatch.advance(600ms);
    std::filesystem::remove(mix);
    EXPECT_THAT(reportedAfter(1400ms), IsEmpty()) << "its size has been 0 for less than a second";
    EXPECT_THAT(reportedAfter(500ms), ElementsAre(mix));
}

TEST_F(BounceWatcherTests, DropsWhatIsNoOrdinaryFileWhenItSettles)
{
    const std::string secret = folder.write("elsewhere/id", "secret");
    const struct {
        const char* what;
        std::function<void()> replace;
        std::size_t reports;
    } rows[] = {
        { "a link to a file", [&] { std::filesystem::create_symlink(secret, mix); }, 0 },
        { "a link to nothing", [&] { std::filesystem::create_symlink("nowhere", mix); }, 0 },
        { "a folder", [&] { std::filesystem::create_directory(mix); }, 0 },
        { "a pipe", [&] { ASSERT_EQ(mkfifo(mix.c_str(), S_IRWXU), 0); }, 0 },
        { "another file", [&] { folder.write("Mix.wav", "other"); }, 1 },
    };
    for (const auto& row : rows) {
        bounce();
        platform.dispatch.advance(100ms);
        std::filesystem::remove(mix);
        row.replace();
        EXPECT_EQ(reportedAfter(5s).size(), row.reports) << row.what;
        std::filesystem::remove(mix);
    }
}

TEST_F(BounceWatcherTests, ReportsAFileOfTwoSpellingsOnce)
{
    const std::string session = folder.makeFolder("disk/Music/Song");
    std::filesystem::create_symlink(folder.path("disk/Music"), folder.path("Music"));
    const auto write = [&](const std::string& name, const std::string& content) {
        folder.write("disk/Music/" + name, content);
        deliver(folder.path("disk/Music/" + name));
        deliver(folder.path("Music/" + name));
        return reportedAfter(3s).size();
    };
    EXPECT_EQ(write("Song/Mix.wav", "data"), 1U);
    EXPECT_EQ(reportedFolder, FileManager::identityOfFolder(session));
    EXPECT_EQ(write("Song/Mix.wav", "more data"), 1U) << "written again, larger";
    EXPECT_EQ(write("Song/Mix.wav", "less data"), 0U) << "written again at the same size";
    EXPECT_EQ(write("Mix.wav", "more data"), 1U) << "another folder";

    deliver(folder.path("Music/Song/Mix.wav"));
    EXPECT_THAT(reportedAfter(3s), IsEmpty()) << "an event under the second spelling only";

    std::filesystem::rename(session, folder.path("disk/Music/Renamed"));
    std::filesystem::last_write_time(folder.path("disk/Music/Renamed/Mix.wav"), {});
    deliver(folder.path("disk/Music/Renamed/Mix.wav"));
    EXPECT_EQ(reportedAfter(3s).size(), 1U) << "written again in a folder that has a new name";
}

TEST_F(BounceWatcherTests, ADriveThatDoesNotAnswerHoldsUpOnlyItsOwnFiles)
{
    const std::string drive = folder.makeFolder("drive");
    BounceWatcher::shared().update(FileURL(drive), folder.path());
    for (int i = 0; i < 100; ++i)
        deliver(
            folder.write("drive/" + std::to_string(i % 50) + "/" + std::to_string(i) + ".wav", ""));
    // Holds the checks of files on the drive, as if it did not respond.
    std::vector<Work> hanging;
    while (platform.dispatch.utilityWorkCount() > 0)
        hanging.push_back(platform.dispatch.holdOldestUtilityWork());
    EXPECT_EQ(hanging.size(), 4U) << "the background threads are not used up";

    bounce();
    EXPECT_THAT(reportedAfter(1500ms), ElementsAre(mix))
        << "on the other drive, at the fourth check";
    EXPECT_THAT(reportedAfter(1h), IsEmpty());

    for (const Work& look : hanging)
        look();
    EXPECT_THAT(reportedAfter(1499ms), IsEmpty()) << "the waits begin when the drive answers";
    EXPECT_EQ(reportedAfter(1ms).size(), 100U);
}

TEST_F(BounceWatcherTests, LooksThatHangDoNotPileUpOverUpdates)
{
    std::vector<Work> hanging;
    for (int i = 0; i < 10; ++i) {
        watch();
        bounce();
        platform.dispatch.settleMainQueue();
        while (platform.dispatch.utilityWorkCount() > 0)
            hanging.push_back(platform.dispatch.holdOldestUtilityWork());
    }
    EXPECT_EQ(hanging.size(), 1U);
    hanging.front()();
    EXPECT_THAT(reportedAfter(2s), ElementsAre(mix));
}

/// A program that exports the mix.
struct Exporter {
    FakePlatform& platform;
    std::string path;
    std::optional<WrittenFile> file {};
    off_t size = 0;

    void notify() const { platform.fileEvents.deliver({ path }, { ItemIsFile | ItemModified }); }
};
using Step = std::function<void(Exporter&)>;

const Step open = [](Exporter& exporter) {
    exporter.file.emplace(exporter.platform.dispatch, exporter.path);
    exporter.notify();
};
const Step overwrite = [](Exporter& exporter) {
    exporter.file->touch();
    exporter.notify();
};
const Step close = [](Exporter& exporter) {
    exporter.file.reset();
    exporter.notify();
};
Step grow(off_t bytes)
{
    return [bytes](Exporter& exporter) {
        exporter.file->resize(exporter.size += bytes);
        exporter.notify();
    };
}
Step wait(std::chrono::milliseconds time)
{
    return [time](Exporter& exporter) { exporter.platform.dispatch.advance(time); };
}
Step repeat(int times, const std::vector<Step>& steps)
{
    return [times, steps](Exporter& exporter) {
        for (int i = 0; i < times; ++i)
            for (const Step& step : steps)
                step(exporter);
    };
}

TEST_F(BounceWatcherTests, ReportsAnExportWhenItIsComplete)
{
    const struct {
        const char* what;
        std::vector<Step> steps;
        std::vector<std::string> reports;
    } rows[] = {
        { "written at once", { open, grow(9000), close }, { "9000 bytes at 1.5 s" } },
        { "a header, and the rest a minute and a half later",
            { open, grow(44), wait(90s), grow(9000), wait(100ms), close },
            { "9044 bytes at 92 s" } },
        { "pauses of three seconds", { open, repeat(5, { grow(9000), wait(3s) }), close },
            { "45000 bytes at 15.5 s" } },
        { "space reserved first and filled later",
            { open, grow(9000), wait(6s), overwrite, wait(100ms), close },
            { "9000 bytes at 8 s" } },
        { "filled slowly, for longer than an open file is waited for",
            { open, grow(9000), repeat(12, { wait(1min), overwrite }), wait(100ms), close },
            { "9000 bytes at 722 s" } },
        { "closed after a while without another write",
            { open, grow(9000), wait(20s + 200ms), close }, { "9000 bytes at 20.5 s" } },
        { "left open", { open, grow(4097) }, { "4097 bytes at 300.5 s" } },
        { "left open with a header alone", { open, grow(4096) }, {} },
        { "a header alone, closed in the end", { open, grow(4096), wait(20min + 200ms), close },
            { "4096 bytes at 1200.5 s" } },
        { "closed between two blocks, which looks like the end",
            { open, grow(9000), close, wait(3s), open, grow(9000), close },
            { "9000 bytes at 1.5 s", "18000 bytes at 4.5 s" } },
    };
    for (const auto& row : rows) {
        watch();
        std::filesystem::remove(mix);
        std::vector<std::string> reports;
        const WallTime start = platform.dispatch.now();
        BounceWatcher::shared().onBounceDetected = [&](const auto& url, const auto&, const auto&) {
            const std::chrono::duration<double> seconds = platform.dispatch.now() - start;
            std::ostringstream text;
            text << std::filesystem::file_size(url.path()) << " bytes at " << seconds.count()
                 << " s";
            reports.push_back(text.str());
        };
        Exporter exporter { platform, mix };
        for (const Step& step : row.steps)
            step(exporter);
        platform.dispatch.advance(1h);
        EXPECT_EQ(reports, row.reports) << row.what;
    }
}

TEST_F(BounceWatcherTests, AnUpdateForgetsWaitsAndReports)
{
    bounce();
    platform.dispatch.advance(1s);
    watch();
    EXPECT_THAT(reportedAfter(5s), IsEmpty()) << "the wait ended with the old stream";

    bounce();
    platform.dispatch.advance(700ms);
    watch();
    bounce();
    EXPECT_THAT(reportedAfter(5s), ElementsAre(mix)) << "two waits for one path report once";
    watch();
    bounce();
    EXPECT_THAT(reportedAfter(2s), ElementsAre(mix)) << "an update forgets what was reported";

    bounce("other");
    BounceWatcher::shared().stop();
    deliver(mix);
    EXPECT_THAT(reportedAfter(5s), IsEmpty());
}

TEST_F(BounceWatcherTests, MeasuresSettlingByTheWallClockUnlessItIsSetBack)
{
    const std::pair<std::chrono::milliseconds, std::chrono::milliseconds> rows[] = {
        { 500ms, 400ms }, // Exactly one second by the wall clock is enough.
        { -1h, 1400ms },
    };
    for (const auto& [jump, wait] : rows) {
        watch();
        bounce();
        platform.dispatch.advance(600ms);
        platform.dispatch.jumpWallClock(jump);
        EXPECT_EQ(reportedAfter(wait).size(), 1U) << jump.count();
    }
}

TEST_F(BounceWatcherTests, LivesWithoutAStream)
{
    platform.fileEvents.canCreate = false;
    watch();
    BounceWatcher::shared().stop();
}

TEST_F(BounceWatcherTests, AWaitDoesNotOutliveTheWatcher)
{
    bounce();
    SharedInstances::destroyAll();
    EXPECT_THAT(reportedAfter(5s), IsEmpty());
}

} // namespace
} // namespace stemvault
