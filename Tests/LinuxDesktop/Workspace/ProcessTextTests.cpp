#include "LinuxDesktop/OpenFiles/LsofFallback.h"
#include "LinuxDesktop/OpenFiles/MountNamespace.h"
#include "LinuxDesktop/Workspace/DesktopEntry.h"
#include "LinuxDesktop/Workspace/KnownApplication.h"
#include "LinuxDesktop/Workspace/ProcessText.h"

#include <gmock/gmock.h>

// Windows paths from the kernel contain NULs, so they cannot be raw strings.
// NOLINTBEGIN(modernize-raw-string-literal)
namespace stemvault::workspace {
namespace {

using namespace std::literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

TEST(ProcessTextTests, TheStatOfAProcess)
{
    const auto text = [](const std::string& begin) {
        return begin + " 7 1 1 0 -1 4194560 9 9 9 9 1 1 1 1 20 0 1 0 4711 5 5";
    };
    EXPECT_THAT(
        parseProcessStat(text("42 (a) b) S")), Optional(ProcessStat { 'S', 7, 4711, "a) b", {} }));
    EXPECT_THAT(parseProcessStat(text("42 (a) S") + " 5 101 102 103 0"),
        Optional(ProcessStat { 'S', 7, 4711, "a", { 101, 102, 103 } }));
    for (const auto& malformed : { "42 (a)"s, text("42 (a) S").substr(0, 50), text("42 (a) ") })
        EXPECT_EQ(parseProcessStat(malformed), std::nullopt) << malformed;
}

TEST(ProcessTextTests, ADAWByWhatItsProcessIsCalled)
{
    const std::string wine(20, '\0'); // Wine leaves this many empty arguments after the path.
    const struct {
        std::string commandLine, command, executable, name, identifier;
    } rows[] = {
        { "C:\\Program Files\\DAW\\ProTools.exe" + wine, "ProTools.exe", "/usr/lib/wine/wine64",
            "Pro Tools", "com.avid.ProTools" },
        { "C:\\DAW\\Pro Tools Intro.exe" + wine, "", "", "Pro Tools", "com.avid.ProTools" },
        { "C:\\Program Files\\DAW\\Ableton Live 11 Suite.exe" + wine, "Ableton Live 11", "",
            "Ableton Live 11 Suite", "com.ableton.live" },
        { "", "Ableton Live 11", "", "Ableton Live 11", "com.ableton.live" }, // Cut at 15 bytes.
        { "C:\\DAW\\Cubase12.EXE" + wine, "", "", "Cubase 12", "com.steinberg.cubase12" },
        { "cubase12" + wine, "cubase12", "", "cubase 12", "com.steinberg.cubase12" },
        { "Z:\\reaper.exe" + wine, "", "", "REAPER", "com.cockos.reaper" },
        { "/opt/REAPER/reaper\0/s/Song.rpp\0"s, "reaper", "", "REAPER", "com.cockos.reaper" },
        { "C:\\PreSonus\\Studio One 5\\Studio One.exe" + wine, "", "/usr/lib/wine/wine64",
            "Studio One", "com.presonus.studioone5" },
        { "Studio One\0"s, "Studio One", "/opt/PreSonus/Studio One 5/Studio One", "Studio One",
            "com.presonus.studioone5" },
        { "/opt/PreSonus/Studio One 7/Studio One\0"s, "", "", "Studio One",
            "com.presonus.studioone6" },
        { "/opt/REAPER/reaper_host64\0"s, "reaper_host64", "", "", "" },
        { "/usr/bin/wineserver64\0"s, "", "", "", "" },
        { "C:\\windows\\system32\\services.exe" + wine, "", "", "", "" },
        { "grep\0reaper\0"s, "grep", "/usr/bin/grep", "", "" },
        { "C:\\Steinberg\\Nuendo 13\\Nuendo13.exe" + wine, "", "", "Nuendo 13",
            "com.steinberg.nuendo" },
        { "C:\\Image-Line\\FL Studio 2025\\FL64 (scaled).exe" + wine, "", "", "FL Studio",
            "com.image-line.flstudio" },
        { "/opt/bitwig-studio/bin/BitwigStudio\0"s, "", "", "Bitwig Studio",
            "com.bitwig.BitwigStudio" },
        { "/opt/bitwig-studio/bin/BitwigAudioEngine-X64-AVX2\0"s, "", "", "Bitwig Studio",
            "com.bitwig.BitwigStudio" },
        { "/opt/bitwig-studio/bin/BitwigPluginHost-X64-SSE41\0"s, "", "", "", "" },
        { "/usr/lib/ardour7/ardour-7.3.0~ds0\0"s, "", "", "Ardour", "org.ardour.Ardour" },
        { "/usr/lib/ardour7/ardour-vst-scanner\0"s, "", "", "", "" },
        { "/usr/bin/ardour7-export\0"s, "", "", "", "" },
        { "/opt/Mixbus-11.0.289/bin/mixbus11\0"s, "", "", "Mixbus", "com.harrisonconsoles.Mixbus" },
        { "/usr/bin/Waveform13\0"s, "", "", "Waveform", "com.tracktion.Waveform" },
        { "/usr/local/bin/renoise-3.3.2\0"s, "", "", "Renoise", "com.renoise.Renoise" },
        { "lmms\0song.mmpz\0"s, "lmms", "/usr/bin/lmms", "LMMS", "io.lmms.LMMS" },
        { "qtractor\0"s, "", "", "Qtractor", "org.rncbc.qtractor" },
        { "/usr/lib/qtractor/qtractor_plugin_scan\0"s, "", "", "", "" },
        { "rosegarden\0"s, "", "", "Rosegarden", "com.rosegardenmusic.rosegarden" },
        { "zrythm\0"s, "", "", "Zrythm", "org.zrythm.Zrythm" },
        { "/tmp/.mount_x/bin/audacity\0"s, "", "", "Audacity", "org.audacityteam.Audacity" },
        // Started through a link with another name.
        { "my-daw\0"s, "my-daw", "/opt/REAPER/reaper", "REAPER", "com.cockos.reaper" },
        { "my-daw\0"s, "my-daw", "/opt/REAPER/reaper (deleted)", "REAPER", "com.cockos.reaper" },
        { "my-daw\0"s, "my-daw", "/opt/x/Cubase14", "Cubase 14", "com.steinberg.cubase12" },
        { "StudioOne\0"s, "StudioOne", "", "Studio One", "com.presonus.studioone6" },
        { "PreSonus-Studio-One\0"s, "", "/opt/PreSonus/Studio One 5/Studio One", "Studio One",
            "com.presonus.studioone5" },
        // Steam's game launcher, and REAPER with an argument that only resembles the launcher's.
        { "/s/ubuntu12_32/reaper\0SteamLaunch\0AppId=7\0--\0/opt/REAPER/reaper\0"s, "reaper",
            "/s/ubuntu12_32/reaper", "", "" },
        { "/opt/REAPER/reaper\0/s/SteamLaunch\0"s, "reaper", "", "REAPER", "com.cockos.reaper" },
        { "", "", "", "", "" },
    };
    for (const auto& row : rows) {
        const auto known =
            knownApplication(parseProgram(row.commandLine, row.command + "\n"), row.executable);
        EXPECT_EQ(
            known.value_or(KnownApplication {}), (KnownApplication { row.identifier, row.name }))
            << row.commandLine;
    }
}

TEST(ProcessTextTests, ADAWByItsDesktopEntry)
{
    const struct {
        const char *entry, *identifier;
    } rows[] = {
        { "fm.reaper.Reaper", "com.cockos.reaper" },
        { "com.presonus.studioapp7", "com.presonus.studioone6" },
        { "com.bitwig.BitwigStudio", "com.bitwig.BitwigStudio" },
        { "ardour8", "org.ardour.Ardour" },
        { "waveform13", "com.tracktion.Waveform" },
        { "audacity_audacity", "org.audacityteam.Audacity" },
        { "ardour-manual", "" },
        { "waveform", "" }, // Many programs have this name.
        { "", "" },
    };
    for (const auto& row : rows)
        EXPECT_EQ(knownApplicationOfEntry(row.entry).value_or(KnownApplication {}).identifier,
            row.identifier)
            << row.entry;
}

TEST(ProcessTextTests, TheUnitOfAnApplication)
{
    const struct {
        const char *unit, *identifier;
    } rows[] = {
        { "app-cockos\\x2dreaper-0123456789abcdef0123456789abcdef.scope", "cockos-reaper" },
        { "app-org.kde.dolphin@0123456789abcdef.service", "org.kde.dolphin" },
        { "app-x-1.scope/of its own", "x" },
        { "app-x\\x2.service", "x\\x2" },
        { "user@1000.service/app.slice", "" },
        { "app-@autostart.service", "" },
    };
    for (const auto& row : rows) {
        const auto unit =
            parseApplicationUnit("2:cpu:/app-no-1.scope\n0::/user.slice/"s + row.unit);
        EXPECT_EQ(unit ? unit->identifier : "", row.identifier) << row.unit;
    }
}

TEST(ProcessTextTests, ADesktopEntry)
{
    const auto entry =
        parseDesktopEntry("# Name=No\nName=No\n[Desktop Entry]\r\nType = Application\n"
                          "Name=A\\sB\\\\c\\q\nName[de]=Ein Name\nName=Later\nNo value\n"
                          "StartupWMClass=Cls\nTryExec=/x y\nNoDisplay=true\nTerminal=true\n"
                          "Exec=env A=b \"/opt/My \\\\\"Daw/run it\" %U\n[Desktop Action x]\n"
                          "Hidden=true\n=\n[",
            { "fr" });
    EXPECT_THAT(
        entry, Optional(DesktopEntry { "A B\\c\\q", "Cls", "run it", "/x y", false, false, true }));
    const std::string twoNames =
        "[Desktop Entry]\nType=Application\nName=A\nName[de]=B\nName[de_AT]=C";
    EXPECT_EQ(parseDesktopEntry(twoNames, preferredLanguages("de_CH.UTF-8"))->name, "B");
    EXPECT_EQ(parseDesktopEntry(twoNames, preferredLanguages("C.UTF-8"))->name, "A");
    EXPECT_THAT(preferredLanguages("sr_RS.UTF-8@latin"),
        ElementsAre("sr_RS@latin", "sr_RS", "sr@latin", "sr"));
    for (const char* none : { "", "[Desktop Entry]\nName=A", "[Desktop Entry]\nType=Application",
             "Type=Application\nName=A", "[Desktop Entry]\nType=Link\nName=A" })
        EXPECT_EQ(parseDesktopEntry(none, {}), std::nullopt) << none;
    for (const char* others : { "", "\"", "sh -c reaper", "env A=b", "flatpak run org.x.Y" })
        EXPECT_THAT(programOfExecLine(others), IsEmpty());
    EXPECT_THAT(parseFlatpakIdentifier("[Application]\nname=org.x.Y\n"), Optional("org.x.Y"s));
}

TEST(ProcessTextTests, NamesInTheFormOfLsof)
{
    EXPECT_EQ(
        open_files::nameAsPrinted("/a b/\xc3\xa9\xe6\x97\xa5 "), "/a b/\xc3\xa9\xe6\x97\xa5 ");
    EXPECT_EQ(open_files::nameAsPrinted("\n\t\r\\\x07\x7f\xff\xc3"), "\\n\\t\\r\\\\^G^?\\xff\\xc3");
    EXPECT_EQ(
        open_files::linesOfMappedFiles("0-1 r--p 0 0:1 5   /exe\n1-2 r--p 0 0:1 5 /a b\n"
                                       "2-3 rw-p 0 0:1 5 /a b\n3-4 rw-p 0 0:0 0 [heap]\n"
                                       "4-5 r--p 0 0:1 6 /x\\012y (deleted)\n5-6 rw-p 0 0:0 0",
            "/exe"),
        "n/a b\nn/x\\ny\n");
}

TEST(ProcessTextTests, WhatASandboxSeesUnderOurPaths)
{
    const open_files::MountView here("20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
                                     "21 20 0:5 / /tmp rw - tmpfs tmpfs rw\n"
                                     "22 20 8:2 / /media/My\\040Disk rw - ext4 /dev/sdb1 rw\n"
                                     "23 20 0:9 /@home /home rw - btrfs /dev/sdc1 rw\n");
    const open_files::MountView there(
        "50 49 0:30 /newroot / rw - tmpfs tmpfs rw\n"
        "51 50 8:1 /usr /usr rw - ext4 /dev/sda1 rw\n"
        "52 50 0:31 / /tmp rw - tmpfs tmpfs rw\n"
        "53 50 0:9 /@home/anna /home/anna rw - btrfs /dev/sdc1 rw\n"
        "54 53 8:1 /hidden /home/anna/over rw - ext4 /dev/sda1 rw\n"
        "55 53 0:9 /@home/anna/else /home/anna/kept rw - btrfs /dev/sdc1 rw\n"
        "56 50 8:2 / /media/My\\040Disk rw - ext4 /dev/sdb1 rw\n"
        "57 54 0:9 /@home/anna/over /home/anna/over rw - btrfs /dev/sdc1 rw\n");
    const struct {
        const char *what, *path;
        bool isTheSame;
    } rows[] = {
        { "the home, of which a part is mounted there", "/home/anna/Song/Song.rpp", true },
        { "another part of the home, which is not", "/home/ben/Song.rpp", false },
        { "a temporary folder of its own", "/tmp/Song/Song.rpp", false },
        { "a disk with a blank in its name", "/media/My Disk/Song.rpp", true },
        { "the system's own programs", "/usr/bin/reaper", true },
        { "its own program", "/app/reaper", false },
        { "another folder mounted over one of ours", "/home/anna/kept/Song.rpp", false },
        { "a folder that begins like it", "/home/anna/kept well/Song.rpp", true },
        { "one mounted over, and then the right one again", "/home/anna/over/Song.rpp", true },
    };
    for (const auto& row : rows)
        EXPECT_EQ(
            open_files::namesThatLeadToTheSame("p1\nn"s + row.path + "\nnpipe\n", there, here),
            row.isTheSame ? "p1\nn"s + row.path + "\nnpipe\n" : "p1\nnpipe\n")
            << row.what;
    const open_files::MountView circle("1 2 0:1 / / x\n2 1 0:1 / / x\n3 3 0:1 / / x\n");
    EXPECT_EQ(circle.resolvedLocation("/a"), "0:1/a");
    EXPECT_EQ(open_files::MountView("").resolvedLocation("/a"), "");
}

} // namespace
} // namespace stemvault::workspace
// NOLINTEND(modernize-raw-string-literal)
