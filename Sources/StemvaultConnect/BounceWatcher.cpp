#include "StemvaultConnect/BounceWatcher.h"

#include "Foundation/FileManager.h"
#include "Foundation/PathText.h"
#include "Foundation/UnicodeText.h"
#include "Platform/FileEvents.h"
#include "Platform/Platform.h"
#include "StemvaultConnect/SettingsStore.h"

#include <algorithm>
#include <cstddef>

namespace stemvault {

namespace {

using namespace std::chrono_literals;

constexpr auto streamLatency = 500ms;
constexpr std::uint32_t streamFlags = FileEventStreamFlag::UseTextPaths
    | FileEventStreamFlag::NoDefer | FileEventStreamFlag::FileEvents;

bool isWrittenFile(std::uint32_t flag)
{
    return (flag & FileEventFlag::ItemIsFile) != 0
        && (flag & (FileEventFlag::ItemCreated | FileEventFlag::ItemModified)) != 0;
}

/// By text alone: a sibling whose name begins like the folder's counts as well.
bool isAlwaysWatched(const std::string& path)
{
    const auto& alwaysWatchPath = SettingsStore::shared().alwaysWatchPath();
    return alwaysWatchPath && !alwaysWatchPath->empty() && path.starts_with(*alwaysWatchPath);
}

} // namespace

BounceWatcher::BounceWatcher() = default;
BounceWatcher::~BounceWatcher() = default;

const std::set<std::string, std::less<>>& BounceWatcher::audioExtensions()
{
    static const std::set<std::string, std::less<>> extensions = { "wav", "aiff", "aif", "mp3",
        "flac", "m4a", "mp4", "mov" };
    return extensions;
}

void BounceWatcher::stop()
{
    isActive = false;
    watchingPaths.clear();
    alertedFileSizes.clear();
    if (!streamRef)
        return;
    streamRef->stop();
    streamRef->invalidate();
    streamRef.reset();
}

void BounceWatcher::update(
    const std::optional<FileURL>& sessionFolder, const std::optional<std::string>& alwaysWatchPath)
{
    stop();
    std::vector<std::string> paths;
    if (sessionFolder)
        paths.push_back(sessionFolder->path());
    if (alwaysWatchPath && !alwaysWatchPath->empty())
        paths.push_back(*alwaysWatchPath);
    if (!paths.empty())
        startStream(paths);
}

void BounceWatcher::startStream(const std::vector<std::string>& paths)
{
    isActive = true;
    streamRef = Platform::current().fileEvents.createStream(
        alive.guard([this](const std::vector<std::string>& eventPaths,
                        const std::vector<std::uint32_t>& eventFlags) {
            if (isActive)
                handleEvents(eventPaths, eventFlags);
        }),
        paths, streamLatency, streamFlags);
    if (streamRef)
        streamRef->start();
}

void BounceWatcher::handleEvents(
    const std::vector<std::string>& paths, const std::vector<std::uint32_t>& flags)
{
    for (std::size_t i = 0; i < std::min(paths.size(), flags.size()); ++i)
        if (isBounce(paths[i], flags[i]) && watchingPaths.insert(paths[i]).second)
            waitForStability(FileURL(paths[i]), paths[i], -1, std::nullopt);
}

bool BounceWatcher::isBounce(const std::string& path, std::uint32_t flag) const
{
    if (!isWrittenFile(flag) || !audioExtensions().contains(lowercased(pathExtension(path))))
        return false;
    const std::string folderName = lastPathComponent(deletingLastPathComponent(path));
    return !internalSessionFolderNames.contains(lowercased(folderName)) || isAlwaysWatched(path);
}

void BounceWatcher::waitForStability(const FileURL& url, const std::string& path,
    std::int64_t lastSize, std::optional<WallTime> stableSince)
{
    if (!isActive || !watchingPaths.contains(path))
        return;
    // A file that is gone reads as empty; it is reported, and its copy then says what is wrong.
    const std::int64_t size = FileManager::fileSize(path).value_or(0);
    std::optional<WallTime> since;
    if (lastSize >= 0 && size == lastSize) {
        const WallTime now = Platform::current().dispatch.now();
        // A clock that was set back must not make the file wait for the time to come again.
        since = std::min(stableSince.value_or(now), now);
        if (now - *since >= stableFor) {
            report(url, path, size);
            return;
        }
    }
    Platform::current().dispatch.mainAsyncAfter(pollInterval,
        alive.guard([this, url, path, size, since] { waitForStability(url, path, size, since); }));
}

void BounceWatcher::report(const FileURL& url, const std::string& path, std::int64_t size)
{
    watchingPaths.erase(path);
    const auto alerted = alertedFileSizes.find(path);
    if (alerted != alertedFileSizes.end() && alerted->second == size)
        return;
    alertedFileSizes.insert_or_assign(path, size);
    if (onBounceDetected)
        onBounceDetected(url, url.deletingLastPathComponent().lastPathComponent());
}

} // namespace stemvault
