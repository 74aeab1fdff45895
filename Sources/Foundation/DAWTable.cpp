#include "Foundation/DAWTable.h"

#include <algorithm>

namespace stemvault {

namespace {

// One row serves the native program and the one under Wine. Releases later than the last one that
// has an identifier of its own go by that one: their session files are the same.
constexpr DAW table[] = {
    {
        .identifier = "com.avid.ProTools",
        .name = "Pro Tools",
        .programs = { "protools", "pro tools*" },
        .desktopEntries = {},
        .sessionFiles = { "ptx", "ptf" },
        .workingFolders = { "Audio Files", "Fade Files", "Rendered Files", "Video Files",
            "Session File Backups", "Clip Groups" },
    },
    {
        // Runs on macOS only.
        .identifier = "com.apple.logic10",
        .name = "Logic Pro",
        .programs = {},
        .desktopEntries = {},
        .sessionFiles = { "logicx" },
        .workingFolders = { "Audio Files", "Freeze Files", "Samples" },
    },
    {
        .identifier = "com.ableton.live",
        .name = "",
        .programs = { "ableton live *" },
        .desktopEntries = {},
        .sessionFiles = { "als" },
        .workingFolders = { "Samples", "Backup", "Ableton Project Info" },
    },
    {
        .identifier = "com.presonus.studioone5",
        .name = "Studio One",
        .programs = { "studio one", "studioone" },
        .desktopEntries = {},
        .sessionFiles = { "song" },
        .workingFolders = { "Media", "Cache", "History", "Samples" },
        .installedIn = "studio one 5",
    },
    {
        .identifier = "com.presonus.studioone6",
        .name = "Studio One",
        .programs = { "studio one", "studioone" },
        .desktopEntries = { "com.presonus.studioapp*", "presonus-studio-one*" },
        .sessionFiles = { "song" },
        .workingFolders = { "Media", "Cache", "History", "Samples" },
    },
    {
        .identifier = "com.steinberg.cubase12",
        .name = "",
        .programs = { "cubase*" },
        .desktopEntries = {},
        .sessionFiles = { "cpr" },
        .workingFolders = { "Audio", "Edits", "Freeze", "Images", "Track Pictures", "Auto Saves" },
    },
    {
        .identifier = "com.cockos.reaper",
        .name = "REAPER",
        .programs = { "reaper" },
        .desktopEntries = { "cockos-reaper", "fm.reaper.reaper" },
        .sessionFiles = { "rpp" },
        .workingFolders = { "Media", "Audio", "Backups", "Peaks" },
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
