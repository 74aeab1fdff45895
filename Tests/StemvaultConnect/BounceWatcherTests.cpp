#include "StemvaultConnect/BounceWatcher.h"
#include "StemvaultConnect/SettingsStore.h"
#include "Support/FakePlatform.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace stemvault {
namespace {

using namespace std::chrono_literals;
using namespace FileEventFlag;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t writtenFile = ItemIsFile | ItemCreated;

class BounceWatcherTests : public testing::Test {
protected:
    BounceWatcherTests()
    {
        BounceWatcher::shared().onBounceDetected = [this](const FileURL& file,
                                                       const std::string& folderName) {
            reported.push_back(file.path());
            folderNames.push_back(folderName);
        };
    }

    void watch() { BounceWatcher::shared().update(FileURL(folder.path()), std::nullopt); }

    void deliver(const std::string& path, std::uint32_t flags = writtenFile)
    {
        platform.fileEvents.deliver({ path }, { flags });
    }

    std::vector<std::string> takeReported() { return std::exchange(reported, {}); }

    FakePlatform platform;
    TemporaryFolder folder;
    std::vector<std::string> reported;
    std::vector<std::string> folderNames;
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
        BounceWatcher::shared().update(row.sessionFolder, row.alwaysWatchPath);
        ASSERT_EQ(desktop.fileEvents.streams.size(), row.expected.empty() ? 0U : 1U) << row.what;
        if (row.expected.empty())
            continue;
        const auto stream = desktop.fileEvents.streams.back();
        EXPECT_EQ(stream->paths, row.expected) << row.what;
        EXPECT_EQ(stream->latency, 500ms);
        EXPECT_EQ(stream->flags, 0x13U);
        EXPECT_EQ(stream->state, "made started");
        BounceWatcher::shared().update(std::nullopt, std::nullopt);
        EXPECT_EQ(stream->state, "made started stopped invalidated released");
    }
}

TEST_F(BounceWatcherTests, TakesAudioFilesThatAreWritten)
{
    SettingsStore::shared().setAlwaysWatchPath("/x/Bounces");
    const struct {
        const char* what;
        std::string path;
        std::uint32_t flags;
        bool isTaken;
    } rows[] = {
        { "a new file", "/s/Mix.wav", writtenFile, true },
        { "a file that changed", "/s/Mix.wav", ItemIsFile | ItemModified, true },
        { "flags that add up", "/s/Mix.wav", writtenFile | ItemRenamed | ItemRemoved, true },
        { "only renamed", "/s/Mix.wav", ItemIsFile | ItemRenamed, false },
        { "only removed", "/s/Mix.wav", ItemIsFile | ItemRemoved, false },
        { "a folder with an audio name", "/s/Take.wav", ItemIsDir | ItemCreated, false },
        { "a link", "/s/Take.wav", ItemIsSymlink | ItemCreated, false },
        { "the extension in capitals", "/s/Mix.WAV", writtenFile, true },
        { "aiff", "/s/a.aiff", writtenFile, true },
        { "aif", "/s/a.aif", writtenFile, true },
        { "mp3", "/s/a.mp3", writtenFile, true },
        { "flac", "/s/a.flac", writtenFile, true },
        { "m4a", "/s/a.m4a", writtenFile, true },
        { "mp4", "/s/a.mp4", writtenFile, true },
        { "mov", "/s/a.mov", writtenFile, true },
        { "not yet under its name", "/s/Mix.wav.tmp", writtenFile, false },
        { "no extension", "/s/wav", writtenFile, false },
        { "ogg", "/s/a.ogg", writtenFile, false },
        { "hidden", "/s/.Mix.wav", writtenFile, true },
        { "the DAW's own recordings", "/s/Audio Files/a.wav", writtenFile, false },
        { "in any case", "/s/AUDIO FILES/a.wav", writtenFile, false },
        { "backups", "/s/Session File Backups/a.wav", writtenFile, false },
        { "caches", "/s/WaveCache Files/a.wav", writtenFile, false },
        { "fades", "/s/Fade Files/a.wav", writtenFile, false },
        { "plug-ins", "/s/Plug-In Settings/a.wav", writtenFile, false },
        { "renders", "/s/Rendered Files/a.wav", writtenFile, false },
        { "videos", "/s/Video Files/a.mov", writtenFile, false },
        { "clips", "/s/Clip Groups/a.wav", writtenFile, false },
        { "deeper than the DAW's own", "/s/Audio Files/Mixes/a.wav", writtenFile, true },
        { "below the other folder", "/x/Bounces/Audio Files/a.wav", writtenFile, true },
        { "a sibling that begins alike", "/x/Bounces2/Audio Files/a.wav", writtenFile, true },
        { "a sibling that does not", "/x/Mixes/Audio Files/a.wav", writtenFile, false },
    };
    for (const auto& row : rows) {
        watch();
        deliver(row.path, row.flags);
        platform.dispatch.advance(2s);
        EXPECT_EQ(takeReported().size(), row.isTaken ? 1U : 0U) << row.what;
    }
    SettingsStore::shared().setAlwaysWatchPath("");
    watch();
    deliver("/s/Audio Files/a.wav");
    platform.dispatch.advance(2s);
    EXPECT_THAT(reported, IsEmpty()) << "an empty path is the beginning of nothing";
}

TEST_F(BounceWatcherTests, PairsPathsAndFlagsUpToTheShorterOfTheTwo)
{
    watch();
    platform.fileEvents.deliver({ "/s/a.wav", "/s/b.wav" }, { writtenFile });
    platform.fileEvents.deliver({ "/s/c.wav" }, { ItemIsDir, writtenFile });
    platform.fileEvents.deliver({}, { writtenFile });
    platform.dispatch.advance(2s);
    EXPECT_THAT(reported, ElementsAre("/s/a.wav"));
}

TEST_F(BounceWatcherTests, ReportsAFileOnceAtTheFourthCheck)
{
    watch();
    const std::string mix = folder.write("Big Song/Mix.wav", "data");
    deliver(mix);
    deliver(mix, ItemIsFile | ItemModified);
    platform.dispatch.advance(1499ms);
    EXPECT_THAT(reported, IsEmpty());
    platform.dispatch.advance(1ms);
    EXPECT_THAT(reported, ElementsAre(mix));
    EXPECT_THAT(folderNames, ElementsAre("Big Song"));
    platform.dispatch.advance(1h);
    EXPECT_EQ(reported.size(), 1U);
}

TEST_F(BounceWatcherTests, WaitsForAsLongAsAFileGrows)
{
    watch();
    std::string content = "RIFF";
    const std::string mix = folder.write("Mix.wav", content);
    deliver(mix);
    for (int i = 0; i < 25; ++i) {
        folder.write("Mix.wav", content += "more");
        deliver(mix, ItemIsFile | ItemModified);
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
    watch();
    const struct {
        const char* what;
        std::size_t size;
        std::size_t reports;
    } rows[] = {
        { "first seen", 10'000, 1 },
        { "written again at the same size", 10'000, 0 },
        { "written again, larger", 12'000, 1 },
        { "the larger size is the one remembered", 12'000, 0 },
        { "back at the first size", 10'000, 1 },
        { "empty counts as a size", 0, 1 },
    };
    for (const auto& row : rows) {
        deliver(folder.write("Mix.wav", std::string(row.size, 'x')));
        platform.dispatch.advance(2s);
        EXPECT_EQ(takeReported().size(), row.reports) << row.what;
    }
}

TEST_F(BounceWatcherTests, AFileThatGoesDuringItsWaitIsReported)
{
    watch();
    const std::string mix = folder.write("Mix.wav", "data");
    deliver(mix);
    platform.dispatch.advance(600ms);
    std::filesystem::remove(mix);
    platform.dispatch.advance(1400ms);
    EXPECT_THAT(reported, IsEmpty()) << "it has read empty for less than a second";
    platform.dispatch.advance(500ms);
    EXPECT_THAT(reported, ElementsAre(mix));
}

TEST_F(BounceWatcherTests, AnUpdateForgetsWaitsAndReports)
{
    watch();
    const std::string mix = folder.write("Mix.wav", "data");
    deliver(mix);
    platform.dispatch.advance(1s);
    watch();
    platform.dispatch.advance(5s);
    EXPECT_THAT(takeReported(), IsEmpty()) << "the wait ended with the old stream";

    deliver(mix);
    platform.dispatch.advance(2s);
    EXPECT_THAT(takeReported(), ElementsAre(mix));
    watch();
    deliver(mix);
    platform.dispatch.advance(2s);
    EXPECT_THAT(takeReported(), ElementsAre(mix)) << "reported before the update, so once more";

    deliver(folder.write("Other.wav", "data"));
    BounceWatcher::shared().stop();
    deliver(mix);
    platform.dispatch.advance(5s);
    EXPECT_THAT(reported, IsEmpty());
}

TEST_F(BounceWatcherTests, TwoChainsForOnePathReportOnce)
{
    watch();
    const std::string mix = folder.write("Mix.wav", "data");
    deliver(mix);
    platform.dispatch.advance(700ms);
    watch();
    deliver(mix);
    platform.dispatch.advance(5s);
    EXPECT_THAT(reported, ElementsAre(mix));
}

TEST_F(BounceWatcherTests, MeasuresSettlingByTheWallClock)
{
    watch();
    deliver(folder.write("Mix.wav", "data"));
    platform.dispatch.advance(600ms);
    platform.dispatch.jumpWallClock(500ms);
    platform.dispatch.advance(400ms);
    EXPECT_EQ(reported.size(), 1U) << "exactly one second by the wall clock is enough";
}

TEST_F(BounceWatcherTests, AClockSetBackHoldsNothingUp)
{
    watch();
    deliver(folder.write("Mix.wav", "data"));
    platform.dispatch.advance(600ms);
    platform.dispatch.jumpWallClock(-1h);
    platform.dispatch.advance(1400ms);
    EXPECT_EQ(reported.size(), 1U);
}

TEST_F(BounceWatcherTests, LivesWithoutAStreamAndWithoutAReceiver)
{
    platform.fileEvents.canCreate = false;
    watch();
    BounceWatcher::shared().stop();

    platform.fileEvents.canCreate = true;
    watch();
    const auto receiver = std::exchange(BounceWatcher::shared().onBounceDetected, nullptr);
    const std::string mix = folder.write("Mix.wav", "data");
    deliver(mix);
    platform.dispatch.advance(2s);
    BounceWatcher::shared().onBounceDetected = receiver;
    deliver(mix);
    platform.dispatch.advance(2s);
    EXPECT_THAT(reported, IsEmpty()) << "recorded at this size although nobody was told";
}

TEST_F(BounceWatcherTests, AWaitDoesNotOutliveTheWatcher)
{
    watch();
    deliver(folder.write("Mix.wav", "data"));
    SharedInstances::destroyAll();
    platform.dispatch.advance(5s);
    EXPECT_THAT(reported, IsEmpty());
}

} // namespace
} // namespace stemvault
