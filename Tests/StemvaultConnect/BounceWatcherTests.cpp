#include "StemvaultConnect/BounceWatcher.h"
#include "StemvaultConnect/SettingsStore.h"
#include "Support/FakePlatform.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

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

    /// Writes the mix, and tells of it.
    void bounce(const std::string& content = "data") { deliver(folder.write("Mix.wav", content)); }

    std::vector<std::string> takeReported() { return std::exchange(reported, {}); }

    FakePlatform platform;
    TemporaryFolder folder;
    const std::string mix = folder.path("Mix.wav");
    std::vector<std::string> reported;
    std::optional<FileIdentity> reportedFolder; ///< Of the latest report.
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
        platform.dispatch.advance(2s);
        return takeReported() == std::vector { path };
    };
    const struct {
        const char* what;
        std::string path;
        std::uint32_t flags;
        bool isTaken;
    } rows[] = {
        { "a file that changed", "/s/Mix.wav", ItemIsFile | ItemModified, true },
        { "flags that add up", "/s/Mix.wav", writtenFile | ItemRenamed | ItemRemoved, true },
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
    SettingsStore::shared().setAlwaysWatchPath(""); // The beginning of nothing.
    for (const std::string internal : { "Audio Files", "Session File Backups", "WaveCache Files",
             "Fade Files", "Plug-In Settings", "Rendered Files", "Video Files", "Clip Groups" })
        EXPECT_FALSE(isTaken("/s/" + internal + "/a.wav")) << internal;
}

TEST_F(BounceWatcherTests, PairsPathsAndFlagsUpToTheShorterOfTheTwo)
{
    platform.fileEvents.deliver({ "/s/a.wav", "/s/b.wav" }, { writtenFile });
    platform.fileEvents.deliver({ "/s/c.wav" }, { ItemIsDir, writtenFile });
    platform.fileEvents.deliver({}, { writtenFile });
    platform.dispatch.advance(2s);
    EXPECT_THAT(reported, ElementsAre("/s/a.wav"));
}

TEST_F(BounceWatcherTests, ReportsAFileOnceAtTheFourthCheck)
{
    bounce();
    deliver(mix, ItemIsFile | ItemModified);
    platform.dispatch.advance(1499ms);
    EXPECT_THAT(reported, IsEmpty());
    platform.dispatch.advance(1ms);
    EXPECT_THAT(reported, ElementsAre(mix));
    platform.dispatch.advance(1h);
    EXPECT_EQ(reported.size(), 1U);
}

TEST_F(BounceWatcherTests, WaitsForAsLongAsAFileGrows)
{
    for (std::size_t size = 1; size <= 25; ++size) {
        bounce(std::string(size, 'x'));
        platform.dispatch.advance(400ms);
    }
    EXPECT_THAT(reported, IsEmpty());
    platform.dispatch.advance(1499ms);
    EXPECT_THAT(reported, IsEmpty()) << "the last change was seen less than 1.5 seconds ago";
    platform.dispatch.advance(501ms);
    EXPECT_THAT(reported, ElementsAre(mix));
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
        platform.dispatch.advance(2s);
        EXPECT_EQ(takeReported().size(), row.reports) << row.what;
    }
}

TEST_F(BounceWatcherTests, AFileThatGoesDuringItsWaitIsReported)
{
    bounce();
    platform.dispatch.advance(600ms);
    std::filesystem::remove(mix);
    platform.dispatch.advance(1400ms);
    EXPECT_THAT(reported, IsEmpty()) << "it has read empty for less than a second";
    platform.dispatch.advance(500ms);
    EXPECT_THAT(reported, ElementsAre(mix));
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
        platform.dispatch.advance(5s);
        EXPECT_EQ(takeReported().size(), row.reports) << row.what;
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
        platform.dispatch.advance(3s);
        return takeReported().size();
    };
    EXPECT_EQ(write("Song/Mix.wav", "data"), 1U);
    EXPECT_EQ(reportedFolder, FileManager::identityOfFolder(session));
    EXPECT_EQ(write("Song/Mix.wav", "more data"), 1U) << "written again, larger";
    EXPECT_EQ(write("Song/Mix.wav", "less data"), 0U) << "written again at the same size";
    EXPECT_EQ(write("Mix.wav", "more data"), 1U) << "another folder";

    deliver(folder.path("Music/Song/Mix.wav"));
    platform.dispatch.advance(3s);
    EXPECT_THAT(takeReported(), IsEmpty()) << "told of under the other spelling alone";

    std::filesystem::rename(session, folder.path("disk/Music/Renamed"));
    std::filesystem::last_write_time(folder.path("disk/Music/Renamed/Mix.wav"), {});
    deliver(folder.path("disk/Music/Renamed/Mix.wav"));
    platform.dispatch.advance(3s);
    EXPECT_EQ(takeReported().size(), 1U) << "written again in a folder that has a new name";
}

TEST_F(BounceWatcherTests, ADriveThatDoesNotAnswerHoldsUpOnlyItsOwnFiles)
{
    const std::string drive = folder.makeFolder("drive");
    BounceWatcher::shared().update(FileURL(drive), folder.path());
    for (int i = 0; i < 100; ++i)
        deliver(
            folder.write("drive/" + std::to_string(i % 50) + "/" + std::to_string(i) + ".wav", ""));
    // None of the looks at the drive ends.
    std::vector<Work> hanging;
    while (platform.dispatch.utilityWorkCount() > 0)
        hanging.push_back(platform.dispatch.holdOldestUtilityWork());
    EXPECT_EQ(hanging.size(), 4U) << "the background threads are not used up";

    bounce();
    platform.dispatch.advance(1500ms);
    EXPECT_THAT(takeReported(), ElementsAre(mix)) << "of the other drive, at the fourth check";
    platform.dispatch.advance(1h);
    EXPECT_THAT(reported, IsEmpty());

    for (const Work& look : hanging)
        look();
    platform.dispatch.advance(1499ms);
    EXPECT_THAT(reported, IsEmpty()) << "the drive answers, and the waits begin";
    platform.dispatch.advance(1ms);
    EXPECT_EQ(takeReported().size(), 100U);
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
    platform.dispatch.advance(2s);
    EXPECT_THAT(reported, ElementsAre(mix));
}

TEST_F(BounceWatcherTests, AnUpdateForgetsWaitsAndReports)
{
    bounce();
    platform.dispatch.advance(1s);
    watch();
    platform.dispatch.advance(5s);
    EXPECT_THAT(reported, IsEmpty()) << "the wait ended with the old stream";

    bounce();
    platform.dispatch.advance(700ms);
    watch();
    bounce();
    platform.dispatch.advance(5s);
    EXPECT_THAT(takeReported(), ElementsAre(mix)) << "two waits for one path report once";
    watch();
    bounce();
    platform.dispatch.advance(2s);
    EXPECT_THAT(takeReported(), ElementsAre(mix)) << "reported before the update, so once more";

    bounce("other");
    BounceWatcher::shared().stop();
    deliver(mix);
    platform.dispatch.advance(5s);
    EXPECT_THAT(reported, IsEmpty());
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
        platform.dispatch.advance(wait);
        EXPECT_EQ(takeReported().size(), 1U) << jump.count();
    }
}

TEST_F(BounceWatcherTests, LivesWithoutAStreamAndWithoutAReceiver)
{
    platform.fileEvents.canCreate = false;
    watch();
    BounceWatcher::shared().stop();

    platform.fileEvents.canCreate = true;
    watch();
    const auto receiver = std::exchange(BounceWatcher::shared().onBounceDetected, nullptr);
    bounce();
    platform.dispatch.advance(2s);
    BounceWatcher::shared().onBounceDetected = receiver;
    bounce();
    platform.dispatch.advance(2s);
    EXPECT_THAT(reported, IsEmpty()) << "recorded at this size although nobody was told";
}

TEST_F(BounceWatcherTests, AWaitDoesNotOutliveTheWatcher)
{
    bounce();
    SharedInstances::destroyAll();
    platform.dispatch.advance(5s);
    EXPECT_THAT(reported, IsEmpty());
}

} // namespace
} // namespace stemvault
