#include "StemvaultConnect/SessionFolder.h"

#include <gmock/gmock.h>

#include <map>

namespace stemvault {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view extensions[] = { "ptx", "logicx", "als", "song", "cpr", "rpp" };

/// The folder found if lsof prints this output and these files were modified at these hours.
std::string folderOf(const std::string& lsofOutput, const std::map<std::string, int>& hours = {})
{
    const auto modificationDate = [&hours](const std::string& path) {
        const auto hour = hours.find(path);
        using Date = std::chrono::sys_time<std::chrono::nanoseconds>;
        return hour == hours.end() ? std::nullopt : std::optional(Date(hour->second * 1h));
    };
    const auto found = sessionFolder(openPaths(lsofOutput), extensions, modificationDate);
    return found ? found->path() : "absent";
}

TEST(SessionFolderTests, TheFirstRuleThatAPathSatisfiesDecides)
{
    const struct {
        const char* what;
        std::string output;
        std::string expected;
    } rows[] = {
        { "lines of other kinds",
            "p12\nfcwd\nnpipe\nn[heap]\nnAudio Files/a\nnSong.als\n/S/a.ptx\n", "absent" },
        { "no line end after the last name", "n/S/A/A.rpp", "/S/A" },
        { "the first wave cache wins over all before it",
            "n/L/X.logicx/a\nn/B/Audio "
            "Files/a.wav\nn/C/c.cpr\nn/S/WaveCache.wfm\nn/b/WaveCache.wfm\n",
            "/S" },
        { "a wave cache by the end of its name", "n/x/MyWaveCache.wfm\n", "/x" },
        { "no wave cache: more follows its name", "n/x/WaveCache.wfm.bak\n", "absent" },
        { "no wave cache: other capitals", "n/x/wavecache.wfm\n", "absent" },
        { "the outermost package", "n/a/One.logicx/b/Two.logicx/c\n", "/a" },
        { "the package itself, open as a folder", "n/a/One.logicx\n", "/a" },
        { "no package: .logicx within the name", "n/a/One.logicx.bak/c\n", "absent" },
        { "such a name, then a package", "n/a/One.logicx.bak/c\nn/b/Two.logicx/c\n", "/b" },
        { "a package wins over an Audio Files folder",
            "n/b/Audio Files/a.wav\nn/a/One.logicx/Audio Files/x.wav\n", "/a" },
        { "an Audio Files folder wins over a session file", "n/s/S.als\nn/b/Audio Files/a.wav\n",
            "/b" },
        { "an Audio Files folder", "n/Work/Big Song/Audio Files/Kick_01.wav\n", "/Work/Big Song" },
        { "the outermost Audio Files", "n/a/Audio Files/Audio Files/x\n", "/a" },
        { "a folder whose name begins with it", "n/x/Audio Files Backup/a.wav\n", "absent" },
        { "a folder whose name ends with it", "n/x/Old Audio Files/a.wav\n", "absent" },
        { "Audio Files in other case", "n/x/audio files/a.wav\n", "absent" },
        { "Audio Files directly under the root names no folder", "n/Audio Files/a.wav\n",
            "absent" },
        { "a later Audio Files folder counts then", "n/Audio Files/a.wav\nn/x/Audio Files/a.wav\n",
            "/x" },
        { "a session file by its extension in any case", "n/s/Song.RPP\n", "/s" },
        { "a name that is all extension", "n/s/.als\n", "/s" },
        { "an extension of the folder, not of the file", "n/s.rpp/Song\n", "absent" },
        { "a session file directly under the root", "n/Song.als\n", "/" },
        { "output that is not UTF-8", "n/s/Song.als\nn/t/\xff\n", "absent" },
    };
    for (const auto& row : rows)
        EXPECT_EQ(folderOf(row.output), row.expected) << row.what;
}

TEST(SessionFolderTests, TheNewestSessionFileWins)
{
    const std::string output = "n/a/A.cpr\nn/b/B.CPR\nn/c/C.song\n";
    const struct {
        const char* what;
        std::map<std::string, int> hours;
        std::string expected;
    } rows[] = {
        { "the newest", { { "/a/A.cpr", 10 }, { "/b/B.CPR", 11 }, { "/c/C.song", 9 } }, "/b" },
        { "with equal dates the first",
            { { "/a/A.cpr", 10 }, { "/b/B.CPR", 11 }, { "/c/C.song", 11 } }, "/b" },
        { "unreadable counts as the oldest", { { "/c/C.song", -9999 } }, "/c" },
        { "all unreadable: the first", {}, "/a" },
    };
    for (const auto& row : rows)
        EXPECT_EQ(folderOf(output, row.hours), row.expected) << row.what;
}

} // namespace
} // namespace stemvault
