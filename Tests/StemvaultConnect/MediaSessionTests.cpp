#include "StemvaultConnect/MediaSession.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace stemvault {
namespace {

using namespace std::chrono_literals;

const DAW& dawNamed(const std::string& identifier)
{
    const DAW* const daw = dawWithBundleIdentifier(identifier);
    EXPECT_NE(daw, nullptr) << identifier;
    return *daw;
}

const std::string live = "com.ableton.live", cubase = "com.steinberg.cubase12",
                  reaper = "com.cockos.reaper", ardour = "org.ardour.Ardour",
                  bitwig = "com.bitwig.BitwigStudio", audacity = "org.audacityteam.Audacity";

struct MediaSessionTests : testing::Test {
    /// The folder found if these files are open and the newest file in each session folder was
    /// modified at this hour.
    std::string folderOf(const std::string& daw, const std::vector<std::string_view>& openPaths,
        const std::map<std::string, int>& sessionFolders)
    {
        const auto newest = [&](const std::string& folder) {
            ++questions[folder];
            const auto hour = sessionFolders.find(folder);
            return hour == sessionFolders.end()
                ? std::nullopt
                : std::optional(FileManager::FileDate(hour->second * 1h));
        };
        const auto found = mediaSessionFolder(openPaths, dawNamed(daw), "/home/me", newest);
        return found ? found->path() : "absent";
    }

    std::map<std::string, int> questions; ///< How often each folder was queried.
};

TEST_F(MediaSessionTests, FindsTheSessionThatTheOpenMediaBelongTo)
{
    const std::string wine = "/home/me/.wine/drive_c/";
    const struct {
        const char* what;
        std::string daw;
        std::vector<std::string> openPaths;
        std::map<std::string, int> sessionFolders;
        std::string expected;
    } rows[] = {
        { "Live streams what was recorded", live, { "/m/Song Project/Samples/Recorded/1.wav" },
            { { "/m/Song Project", 1 } }, "/m/Song Project" },
        { "Live under Wine", live,
            { wine + "users/me/Documents/Song Project/Samples/Imported/a.aif" },
            { { wine + "users/me/Documents/Song Project", 1 } },
            wine + "users/me/Documents/Song Project" },
        { "REAPER with media beside the project", reaper, { "/m/Song/01-Bass.wav" },
            { { "/m/Song", 1 } }, "/m/Song" },
        { "Ardour", ardour, { "/m/Song/interchange/Song/audiofiles/Audio 1-1.wav" },
            { { "/m/Song", 1 } }, "/m/Song" },
        { "Audacity, which holds its project itself", audacity, { "/m/Talk/Talk.aup3" },
            { { "/m/Talk", 1 } }, "/m/Talk" },
        { "most of the media decide, not the newest session", reaper,
            { "/m/A/1.wav", "/m/A/2.wav", "/m/B/Media/3.wav" }, { { "/m/A", 1 }, { "/m/B", 2 } },
            "/m/A" },
        { "a file that is open twice counts once", reaper,
            { "/m/A/1.wav", "/m/A/1.wav", "/m/A/1.wav", "/m/B/2.wav", "/m/B/3.wav" },
            { { "/m/A", 2 }, { "/m/B", 1 } }, "/m/B" },
        { "with equal counts the newest session", reaper, { "/m/A/1.wav", "/m/B/2.wav" },
            { { "/m/A", 2 }, { "/m/B", 1 } }, "/m/A" },
        { "the nearest of two above", reaper, { "/m/Album/Song/1.wav" },
            { { "/m/Album", 2 }, { "/m/Album/Song", 1 } }, "/m/Album/Song" },
        { "six levels up", reaper, { "/m/S/b/c/d/e/f/1.wav" }, { { "/m/S", 1 } }, "/m/S" },
        { "seven levels up", reaper, { "/m/S/b/c/d/e/f/g/1.wav" }, { { "/m/S", 1 } }, "absent" },
        { "on a drive that the desktop mounted", bitwig, { "/run/media/me/Disk/S/samples/a.wav" },
            { { "/run/media/me/Disk/S", 1 } }, "/run/media/me/Disk/S" },

        { "no media", cubase, { "/m/Song/Notes.txt", "/m/Song/Song.bak" }, { { "/m/Song", 1 } },
            "absent" },

        { "a factory pack with a demo song", live,
            { "/home/me/Music/Ableton/Factory Packs/Drums/Samples/Kick.wav" },
            { { "/home/me/Music/Ableton/Factory Packs/Drums", 1 } }, "absent" },
        { "what a Windows program brought along", cubase,
            { wine + "ProgramData/Steinberg/Content/Demo/Audio/a.wav" },
            { { wine + "ProgramData/Steinberg/Content/Demo", 1 } }, "absent" },
        { "the system", ardour, { "/usr/share/ardour/demo/interchange/demo/audiofiles/click.wav" },
            { { "/usr/share/ardour/demo", 1 } }, "absent" },
        { "a hidden folder", bitwig, { "/home/me/.BitwigStudio/demo/samples/a.wav" },
            { { "/home/me/.BitwigStudio/demo", 1 } }, "absent" },
        { "a session file left in the home folder", reaper, { "/home/me/Drums/Kick.wav" },
            { { "/home/me", 1 }, { "/home", 1 }, { "/", 1 } }, "absent" },
    };
    for (const auto& row : rows) {
        const std::vector<std::string_view> openPaths(row.openPaths.begin(), row.openPaths.end());
        EXPECT_EQ(folderOf(row.daw, openPaths, row.sessionFolders), row.expected) << row.what;
    }
}

TEST_F(MediaSessionTests, AsksForEachFolderOnce)
{
    std::vector<std::string> paths;
    for (int i = 0; i < 5000; ++i)
        paths.push_back(
            "/m/Song/Media/" + std::to_string(i % 50) + "/" + std::to_string(i) + ".wav");
    const std::vector<std::string_view> openPaths(paths.begin(), paths.end());
    EXPECT_EQ(folderOf(reaper, openPaths, { { "/m/Song", 1 } }), "/m/Song");
    EXPECT_EQ(questions.size(), 52U) << "the fifty, Media and Song";
    for (const auto& [folder, count] : questions)
        EXPECT_EQ(count, 1) << folder;
}

TEST(NewestSessionFileTests, LooksDirectlyInAFolder)
{
    const TemporaryFolder folder;
    const DAW& daw = dawNamed(reaper);
    EXPECT_FALSE(newestSessionFile(folder.path("none"), daw));
    for (const std::string name : { "Song.als", "Song.rpp-bak", "._Song.rpp", "below/Song.rpp" })
        folder.write(name, "");
    EXPECT_FALSE(newestSessionFile(folder.path(), daw));

    folder.write("Old.rpp", "");
    const std::string song = folder.write("Song.RPP", "");
    std::filesystem::last_write_time(
        folder.path("Old.rpp"), std::filesystem::last_write_time(song) - 1h);
    EXPECT_EQ(newestSessionFile(folder.path(), daw), FileManager::contentModificationDate(song));
}

} // namespace
} // namespace stemvault
