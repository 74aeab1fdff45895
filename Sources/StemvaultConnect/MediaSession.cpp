#include "StemvaultConnect/MediaSession.h"

#include "FileManager/FileManager.h"
#include "Foundation/PathText.h"
#include "Foundation/UnicodeText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <set>

namespace stemvault {

namespace {

// Including the folder of the media itself. Ardour needs four: SESSION/interchange/NAME/audiofiles.
constexpr int maxLevels = 6;

constexpr std::array<std::string_view, 19> mediaExtensions = { "aif", "aifc", "aiff", "au", "bwf",
    "caf", "flac", "m4a", "mov", "mp3", "mp4", "ogg", "opus", "rf64", "sd2", "w64", "wav", "wave",
    "wv" };

constexpr std::array<std::string_view, 10> systemFolders = { "/bin/", "/boot/", "/etc/", "/lib/",
    "/lib64/", "/nix/", "/opt/", "/snap/", "/usr/", "/var/lib/" };

/// On the drive that Wine creates for a user's Windows programs.
constexpr std::array<std::string_view, 5> windowsSystemFolders = { "program files/",
    "program files (x86)/", "programdata/", "windows/", "users/public/" };

/// Folders in which DAWs and sample players keep files that were not made in a session.
constexpr std::array<std::string_view, 15> nonSessionFolderNames = { "appdata", "cache", "caches",
    "core library", "factory content", "factory library", "factory packs", "factory samples",
    "libraries", "live packs", "packs", "sample libraries", "sample library", "sound sets",
    "user library" };

template <typename Names> bool contains(const Names& names, std::string_view name)
{
    return std::ranges::find(names, name) != names.end();
}

template <typename Beginnings>
bool beginsWithOneOf(std::string_view path, const Beginnings& beginnings)
{
    return std::ranges::any_of(
        beginnings, [path](std::string_view beginning) { return path.starts_with(beginning); });
}

bool isInNonSessionFolder(std::string_view path)
{
    while (!path.empty()) {
        const auto slash = std::min(path.find('/'), path.size());
        const std::string_view name = path.substr(0, slash);
        if (name.starts_with('.') || contains(nonSessionFolderNames, name))
            return true;
        path.remove_prefix(std::min(slash + 1, path.size()));
    }
    return false;
}

/// Whether the files in the folder may belong to one of the user's sessions.
bool mayBelongToASession(const std::string& folder)
{
    static constexpr std::string_view windowsDrive = "/drive_c/";
    const std::string path = lowercased(folder) + "/";
    const auto drive = path.find(windowsDrive);
    if (drive == std::string::npos)
        return !beginsWithOneOf(path, systemFolders) && !isInNonSessionFolder(path);
    const std::string_view onDrive = std::string_view(path).substr(drive + windowsDrive.size());
    return !beginsWithOneOf(onDrive, windowsSystemFolders) && !isInNonSessionFolder(onDrive);
}

/// Whether a folder is `home` or above it: a stray session file there says nothing about the media
/// below.
bool isTooWide(std::string_view folder, std::string_view home)
{
    return folder == "/" || folder == home
        || (home.starts_with(folder) && home.substr(folder.size()).starts_with('/'));
}

/// How many open media files each folder contains; the DAW's own session files count as well.
std::map<std::string, int> mediaFolders(std::span<const std::string_view> openPaths, const DAW& daw)
{
    std::map<std::string, int> folders;
    for (const std::string_view path : std::set(openPaths.begin(), openPaths.end())) {
        const std::string extension = lowercased(pathExtension(path));
        if (contains(mediaExtensions, extension)
            || std::ranges::find(daw.sessionFiles, extension) != daw.sessionFiles.end())
            ++folders[deletingLastPathComponent(path)];
    }
    std::erase_if(folders, [](const auto& entry) { return !mayBelongToASession(entry.first); });
    return folders;
}

} // namespace

std::optional<FileURL> mediaSessionFolder(std::span<const std::string_view> openPaths,
    const DAW& daw, std::string_view home, const NewestSessionFile& newestSessionFile)
{
    std::map<std::string, std::optional<FileManager::FileDate>> asked;
    const auto dateIn = [&](const std::string& folder) {
        const auto [entry, isNew] = asked.try_emplace(folder);
        if (isNew && !isTooWide(folder, home))
            entry->second = newestSessionFile(folder);
        return entry->second;
    };

    std::map<std::string, int> sessions;
    for (const auto& [mediaFolder, count] : mediaFolders(openPaths, daw)) {
        std::string folder = mediaFolder;
        for (int level = 0; level < maxLevels && folder != "/"; ++level) {
            if (dateIn(folder)) {
                sessions[folder] += count;
                break;
            }
            folder = deletingLastPathComponent(folder);
        }
    }
    const auto best = std::ranges::max_element(sessions, {},
        [&](const auto& session) { return std::pair(session.second, dateIn(session.first)); });
    return best == sessions.end() ? std::nullopt : std::optional(FileURL(best->first));
}

std::optional<FileManager::FileDate> newestSessionFile(const std::string& folder, const DAW& daw)
{
    std::optional<FileManager::FileDate> newest;
    for (const FileURL& item :
        FileManager::contentsOfDirectory(FileURL(folder)).value_or(std::vector<FileURL>())) {
        const bool isSessionFile = !item.lastPathComponent().starts_with('.')
            && std::ranges::find(daw.sessionFiles, lowercased(item.pathExtension()))
                != daw.sessionFiles.end();
        if (isSessionFile)
            newest = std::max(newest, FileManager::contentModificationDate(item.path()));
    }
    return newest;
}

} // namespace stemvault
