#include "Foundation/FileDescriptor.h"
#include "StemvaultConnect/BounceWatcher.h"
#include "StemvaultConnect/SessionTracker.h"
#include "StemvaultConnect/SettingsStore.h"
#include "Support/FakePlatform.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <fstream>
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
        { "a take", "/Media/1.wav", song + "/Media/2.wav", 0 },
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
        platform.dispatch.advance(2s);
        EXPECT_EQ(takeReported().size(), row.reports) << row.what;
    }
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
    std::filesystem::remove(mix);
    deliver(mix);
    platform.dispatch.advance(2s);
    EXPECT_THAT(takeReported(), IsEmpty()) << "gone counts as empty, which is known";
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

/// A program that exports the mix, with what is reported meanwhile and how many seconds after the
/// export began.
struct Export {
    BounceWatcherTests& test;
    FakeDispatch& dispatch;
    const WallTime start = dispatch.now();
    FileDescriptor file {};
    off_t size = 0;
    std::vector<std::string> reports {};

    Export(BounceWatcherTests& itsTest, FakeDispatch& itsDispatch)
        : test(itsTest), dispatch(itsDispatch)
    {
        BounceWatcher::shared().onBounceDetected = [this](
                                                       const auto& url, const auto&, const auto&) {
            const std::chrono::duration<double> seconds = dispatch.now() - start;
            const auto bytes = std::filesystem::file_size(url.path());
            std::ostringstream text;
            text << bytes << " bytes at " << seconds.count() << " s";
            reports.push_back(text.str());
        };
    }

    void open()
    {
        file = FileDescriptor(::open(test.mix.c_str(), O_CREAT | O_WRONLY, S_IRUSR | S_IWUSR));
        change();
    }
    void grow(off_t bytes)
    {
        EXPECT_EQ(::ftruncate(file.get(), size += bytes), 0);
        change();
    }
    void overwrite() { change(); }
    void close()
    {
        file.reset();
        test.deliver(test.mix, ItemIsFile | ItemModified);
    }
    void wait(std::chrono::milliseconds time) { dispatch.advance(time); }

private:
    /// The file's date is that of the virtual clock.
    void change()
    {
        const auto now = dispatch.now().time_since_epoch();
        const auto seconds = std::chrono::floor<std::chrono::seconds>(now);
        const timespec date { seconds.count(), std::chrono::nanoseconds(now - seconds).count() };
        const timespec dates[] = { date, date };
        EXPECT_EQ(::futimens(file.get(), dates), 0);
        test.deliver(test.mix, ItemIsFile | ItemModified);
    }
};

TEST_F(BounceWatcherTests, ReportsAnExportWhenItIsComplete)
{
    const struct {
        const char* what;
        std::function<void(Export&)> run;
        std::vector<std::string> expected;
    } rows[] = {
        { "written at once",
            [](Export& it) {
                it.open();
                it.grow(9000);
                it.close();
            },
            { "9000 bytes at 1.5 s" } },
        { "a header, and the rest a minute and a half later",
            [](Export& it) {
                it.open();
                it.grow(44);
                it.wait(90s);
                it.grow(9000);
                it.wait(100ms);
                it.close();
            },
            { "9044 bytes at 92 s" } },
        { "pauses of three seconds",
            [](Export& it) {
                it.open();
                for (int block = 0; block < 5; ++block) {
                    it.grow(9000);
                    it.wait(3s);
                }
                it.close();
            },
            { "45000 bytes at 15.5 s" } },
        { "space reserved first and filled later",
            [](Export& it) {
                it.open();
                it.grow(9000);
                it.wait(6s);
                it.overwrite();
                it.wait(100ms);
                it.close();
            },
            { "9000 bytes at 8 s" } },
        { "filled slowly, for longer than an open file is waited for",
            [](Export& it) {
                it.open();
                it.grow(9000);
                for (int minute = 0; minute < 12; ++minute) {
                    it.wait(1min);
                    it.overwrite();
                }
                it.wait(100ms);
                it.close();
            },
            { "9000 bytes at 722 s" } },
        { "closed after a while without another write",
            [](Export& it) {
                it.open();
                it.grow(9000);
                it.wait(20s + 200ms);
                it.close();
            },
            { "9000 bytes at 20.5 s" } },
        { "left open",
            [](Export& it) {
                it.open();
                it.grow(4097);
            },
            { "4097 bytes at 300.5 s" } },
        { "left open with a header alone",
            [](Export& it) {
                it.open();
                it.grow(4096);
            },
            {} },
        { "a header alone, closed in the end",
            [](Export& it) {
                it.open();
                it.grow(4096);
                it.wait(20min + 200ms);
                it.close();
            },
            { "4096 bytes at 1200.5 s" } },
        { "closed between two blocks, which cannot be told from the end",
            [](Export& it) {
                it.open();
                it.grow(9000);
                it.close();
                it.wait(3s);
                it.open();
                it.grow(9000);
                it.close();
            },
            { "9000 bytes at 1.5 s", "18000 bytes at 4.5 s" } },
    };
    for (const auto& row : rows) {
        watch();
        std::filesystem::remove(mix);
        Export it(*this, platform.dispatch);
        row.run(it);
        platform.dispatch.advance(1h);
        EXPECT_EQ(it.reports, row.expected) << row.what;
    }
}

TEST_F(BounceWatcherTests, SomeoneWhoReadsAFileDoesNotHoldItUp)
{
    bounce();
    const std::ifstream reader(mix);
    platform.dispatch.advance(1500ms);
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
