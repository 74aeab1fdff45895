#include "StemvaultConnect/SessionFolder.h"

#include "Foundation/PathText.h"
#include "Foundation/UnicodeText.h"

#include <algorithm>
#include <cstddef>

namespace stemvault {

namespace {

constexpr auto npos = std::string_view::npos;

/// The position of the first component that satisfies `matches`. The path begins with a slash, and
/// the empty component before it is skipped.
template <typename Matches> std::size_t findComponent(std::string_view path, Matches matches)
{
    for (std::size_t begin = path.find('/') + 1; begin != 0;) {
        const std::size_t slash = path.find('/', begin);
        if (matches(path.substr(begin, slash == npos ? npos : slash - begin)))
            return begin;
        begin = slash == npos ? 0 : slash + 1;
    }
    return npos;
}

FileURL folderContaining(std::string_view path)
{
    return FileURL(deletingLastPathComponent(path));
}

std::optional<FileURL> waveCacheFolder(std::span<const std::string_view> paths)
{
    const auto found = std::ranges::find_if(
        paths, [](std::string_view path) { return path.ends_with("WaveCache.wfm"); });
    if (found == paths.end())
        return std::nullopt;
    return folderContaining(*found);
}

std::optional<FileURL> packageFolder(std::span<const std::string_view> paths)
{
    for (const std::string_view path : paths) {
        if (path.find(".logicx") == npos)
            continue;
        const auto package = findComponent(
            path, [](std::string_view component) { return component.ends_with(".logicx"); });
        if (package != npos)
            return folderContaining(path.substr(0, path.find('/', package)));
    }
    return std::nullopt;
}

std::optional<FileURL> audioFilesFolder(std::span<const std::string_view> paths)
{
    for (const std::string_view path : paths) {
        if (path.find("Audio Files") == npos)
            continue;
        const auto folder = findComponent(
            path, [](std::string_view component) { return component == "Audio Files"; });
        // If it is directly below the root, its parent cannot be a session folder.
        if (folder != npos && folder > 1)
            return FileURL(std::string(path.substr(0, folder - 1)));
    }
    return std::nullopt;
}

std::string_view extensionOf(std::string_view path)
{
    const auto stop = path.find_last_of("./");
    return stop == npos || path[stop] == '/' ? std::string_view() : path.substr(stop + 1);
}

} // namespace

std::vector<std::string_view> openPaths(std::string_view lsofOutput)
{
    std::vector<std::string_view> paths;
    if (!isValidUTF8(lsofOutput))
        return paths;
    while (!lsofOutput.empty()) {
        const auto end = std::min(lsofOutput.find('\n'), lsofOutput.size());
        if (lsofOutput.starts_with("n/"))
            paths.push_back(lsofOutput.substr(1, end - 1));
        lsofOutput.remove_prefix(std::min(end + 1, lsofOutput.size()));
    }
    return paths;
}

std::optional<FileURL> sessionFolder(std::span<const std::string_view> openPaths,
    std::span<const std::string_view> extensions, const ModificationDate& modificationDate)
{
    if (auto folder = waveCacheFolder(openPaths))
        return folder;
    if (auto folder = packageFolder(openPaths))
        return folder;
    if (auto folder = audioFilesFolder(openPaths))
        return folder;
    return newestSessionFileFolder(openPaths, extensions, modificationDate);
}

std::optional<FileURL> newestSessionFileFolder(std::span<const std::string_view> paths,
    std::span<const std::string_view> extensions, const ModificationDate& modificationDate)
{
    std::optional<std::string_view> newest;
    auto newestDate = std::chrono::sys_time<std::chrono::nanoseconds>::min();
    for (const std::string_view path : paths) {
        if (std::ranges::find(extensions, lowercased(extensionOf(path))) == extensions.end())
            continue;
        const auto date = modificationDate(std::string(path))
                              .value_or(std::chrono::sys_time<std::chrono::nanoseconds>::min());
        if (newest && date <= newestDate)
            continue;
        newest = path;
        newestDate = date;
    }
    if (!newest)
        return std::nullopt;
    return folderContaining(*newest);
}

} // namespace stemvault
