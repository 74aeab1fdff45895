#include "Foundation/DAWTable.h"

#include <algorithm>

namespace stemvault {

namespace {

// docs/daw-facts.md gives the source of each fact; add a new row there too. One row covers both the
// native program and the one under Wine. Releases newer than the last one listed use its
// identifier, because their session files are the same.
constexpr DAW table[] = {
    {
        .identifier = "com.avid.ProTools",
        .name = "Pro Tools",
        .programs = { "protools", "pro tools*" },
        .desktopEntries = {},
        .sessionFiles = { "ptx", "ptf" },
        .workingFolders = { "Audio Files", "Fade Files", "Rendered Files", "Video Files",
            "Clip Groups" },
    },
    {
        // Runs on macOS only.
        .identifier = "com.apple.logic10",
        .name = "Logic Pro",
        .programs = {},
        .desktopEntries = {},
        .sessionFiles = { "logicx" },
        .workingFolders = { "Audio Files", "Freeze Files" },
    },
    {
        .identifier = "com.ableton.live",
        .name = "",
        .programs = { "ableton live *" },
        .desktopEntries = {},
        .sessionFiles = { "als" },
        .workingFolders = { "Samples" },
    },
    {
        .identifier = "com.presonus.studioone5",
        .name = "Studio One",
        .programs = { "studio one", "studioone" },
        .desktopEntries = {},
        .sessionFiles = { "song" },
        .workingFolders = { "Media", "Cache", "Samples" },
        .installedIn = "studio one 5",
    },
    {
        .identifier = "com.presonus.studioone6",
        .name = "Studio One",
        .programs = { "studio one", "studioone" },
        .desktopEntries = { "com.presonus.studioapp*" },
        .sessionFiles = { "song" },
        .workingFolders = { "Media", "Cache", "Samples" },
    },
    {
        .identifier = "com.steinberg.cubase12",
        .name = "",
        .programs = { "cubase*" },
        .desktopEntries = {},
        .sessionFiles = { "cpr" },
        .workingFolders = { "Audio", "Edits", "Freeze" },
    },
    {
        .identifier = "com.cockos.reaper",
        .name = "REAPER",
        .programs = { "reaper" },
        .desktopEntries = { "cockos-reaper", "fm.reaper.reaper" },
        .sessionFiles = { "rpp" },
        .workingFolders = { "Media" },
    },
    {
        .identifier = "com.steinberg.nuendo",
        .name = "",
        .programs = { "nuendo*" },
        .desktopEntries = {},
        .sessionFiles = { "npr" },
        .workingFolders = { "Audio", "Edits", "Freeze" },
    },
    {
        .identifier = "com.image-line.flstudio",
        .name = "FL Studio",
        .programs = { "fl (scaled)", "fl64", "fl64 (scaled)" },
        .desktopEntries = {},
        .sessionFiles = { "flp" },
        .workingFolders = { "Recorded", "Sliced audio" },
    },
    {
        // Its audio engine is the process that has the media open.
        .identifier = "com.bitwig.BitwigStudio",
        .name = "Bitwig Studio",
        .programs = { "bitwigstudio", "bitwig-studio", "bitwigaudioengine*" },
        .desktopEntries = { "com.bitwig.bitwigstudio*" },
        .sessionFiles = { "bwproject" },
        .workingFolders = { "samples", "recordings", "bounce", "plugin-states" },
    },
    {
        .identifier = "org.ardour.Ardour",
        .name = "Ardour",
        .programs = { "ardour", "ardour-#" },
        .desktopEntries = { "ardour", "ardour#", "org.ardour.ardour" },
        .sessionFiles = { "ardour" },
        .workingFolders = { "interchange", "dead", "externals" },
    },
    {
        .identifier = "com.harrisonconsoles.Mixbus",
        .name = "Mixbus",
        .programs = { "mixbus", "mixbus-#", "mixbus#", "mixbus32c-#" },
        .desktopEntries = { "mixbus#", "mixbus32c*" },
        .sessionFiles = { "ardour" },
        .workingFolders = { "interchange", "dead", "externals" },
    },
    {
        .identifier = "com.tracktion.Waveform",
        .name = "Waveform",
        .programs = { "waveform#" },
        .desktopEntries = { "waveform#", "com.tracktion.waveform*" },
        .sessionFiles = { "tracktionedit", "tracktion" },
        .workingFolders = { "Recorded", "Imported", "Frozen" },
    },
    {
        // Its songs contain their samples.
        .identifier = "com.renoise.Renoise",
        .name = "Renoise",
        .programs = { "renoise", "renoise-#" },
        .desktopEntries = { "renoise", "renoise-#" },
        .sessionFiles = { "xrns" },
        .workingFolders = {},
    },
    {
        .identifier = "io.lmms.LMMS",
        .name = "LMMS",
        .programs = { "lmms" },
        .desktopEntries = { "lmms", "io.lmms.lmms", "lmms_lmms" },
        .sessionFiles = { "mmp", "mmpz" },
        .workingFolders = { "resources" },
    },
    {
        // Records next to the session file.
        .identifier = "org.rncbc.qtractor",
        .name = "Qtractor",
        .programs = { "qtractor" },
        .desktopEntries = { "qtractor", "org.rncbc.qtractor" },
        .sessionFiles = { "qtr", "qts", "qtz" },
        .workingFolders = {},
    },
    {
        .identifier = "com.rosegardenmusic.rosegarden",
        .name = "Rosegarden",
        .programs = { "rosegarden" },
        .desktopEntries = { "com.rosegardenmusic.rosegarden" },
        .sessionFiles = { "rg", "rgp" },
        .workingFolders = { "audio" },
    },
    {
        .identifier = "org.zrythm.Zrythm",
        .name = "Zrythm",
        .programs = { "zrythm" },
        .desktopEntries = { "zrythm", "org.zrythm.zrythm" },
        .sessionFiles = { "zpj" },
        .workingFolders = { "pool", "plugins", "backups" },
    },
    {
        // Its projects contain their audio.
        .identifier = "org.audacityteam.Audacity",
        .name = "Audacity",
        .programs = { "audacity" },
        .desktopEntries = { "audacity", "org.audacityteam.audacity", "audacity_audacity" },
        .sessionFiles = { "aup3", "aup" },
        .workingFolders = {},
    },
};

} // namespace

std::span<const DAW> knownDAWs()
{
    return table;
}

const DAW* dawWithBundleIdentifier(std::string_view bundleIdentifier)
{
    const auto* const row = std::ranges::find_if(
        table, [&](const DAW& daw) { return bundleIdentifier.starts_with(daw.identifier); });
    return row == std::end(table) ? nullptr : row;
}

} // namespace stemvault
