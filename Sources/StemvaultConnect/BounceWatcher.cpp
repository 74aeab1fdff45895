#include "StemvaultConnect/BounceWatcher.h"

#include "FileManager/WriterCheck.h"
#include "Foundation/PathText.h"
#include "Foundation/UnicodeText.h"
#include "Platform/FileEvents.h"
#include "Platform/Platform.h"
#include "StemvaultConnect/SessionTracker.h"
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

/// Compares text only: a sibling whose name begins with the folder's name counts as well.
bool isAlwaysWatched(const std::string& path)
{
    const auto& alwaysWatchPath = SettingsStore::shared().alwaysWatchPath();
    return alwaysWatchPath && !alwaysWatchPath->empty() && path.starts_with(*alwaysWatchPath);
}

/// Ignores case, because the file system may do so.
bool isBelow(const std::string& path, const std::string& folder)
{
    return lowercased(path).starts_with(lowercased(folder) + "/");
}

bool isInWorkingFolder(const std::string& path)
{
    return std::ranges::any_of(SessionTracker::shared().workingFolders(),
        [&path](const std::string& folder) { return isBelow(path, folder); });
}

} // namespace

/// One check of a file that has not settled yet, with the findings of the previous checks.
struct BounceWatcher::Wait {
    std::string path;
    std::int64_t lastSize = -1; ///< -1 before the first check.
    std::optional<WallTime> stableSince {}; ///< When the size was first seen unchanged.
    bool isLast = false; ///< The file is reported if this check finds it unchanged and complete.
    bool isOpen = false; ///< A program had it open for writing when that was last checked.
    std::optional<FileManager::FileDate> lastDate {};
};

/// The state of a file on disk.
struct BounceWatcher::FileState {
    std::optional<FileIdentity> folder; ///< Only if it was requested.
    std::optional<FileManager::ItemAttributes> item;
    Writers writers = Writers::Unknown;

    /// 0 for a file that is gone. It is reported all the same, and its copy then fails with the
    /// reason.
    [[nodiscard]] std::int64_t size() const { return item ? item->size : 0; }
    [[nodiscard]] std::optional<FileManager::FileDate> date() const
    {
        return item ? std::optional(item->contentModificationDate) : std::nullopt;
    }
    [[nodiscard]] Version version() const { return { size(), date() }; }
};

BounceWatcher::BounceWatcher() = default;
BounceWatcher::~BounceWatcher() = default;

const std::set<std::string, std::less<>>& BounceWatcher::audioExtensions()
{
    static const std::set<std::string, std::less<>> extensions = { STEMVAULT_AUDIO_EXTENSIONS };
    return extensions;
}

void BounceWatcher::stop()
{
    isActive = false;
    watchingPaths.clear();
    alertedFileSizes.clear();
    alertedVersions.clear();
    copies.clear();
    looks.dropWaiting();
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
    watchedFolders = paths;
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
            waitForStability({ .path = paths[i] });
}

bool BounceWatcher::isBounce(const std::string& path, std::uint32_t flag) const
{
    if (!isWrittenFile(flag) || !audioExtensions().contains(lowercased(pathExtension(path))))
        return false;
    const std::string folderName = lastPathComponent(deletingLastPathComponent(path));
    const bool isInternal = internalSessionFolderNames.contains(lowercased(folderName));
    return isAlwaysWatched(path) || (!isInternal && !isInWorkingFolder(path));
}

void BounceWatcher::waitForStability(Wait wait)
{
    if (!isActive || !watchingPaths.contains(wait.path))
        return;
    if (wait.stableSince) {
        const WallTime now = Platform::current().dispatch.now();
        // If the clock was set back, the file must not wait until it shows the old time again.
        wait.stableSince = std::min(*wait.stableSince, now);
        wait.isLast = now - *wait.stableSince >= stableFor;
    }
    const bool asksForWriters = wait.isLast && !isReported(wait.path, wait.lastSize);
    const auto found = alive.guard([this, wait](const FileState& look) { apply(wait, look); });
    looks.ask(
        rootOf(wait.path), deletingLastPathComponent(wait.path), [wait, asksForWriters, found] {
            return [found, look = readFileState(wait.path, wait.isLast, asksForWriters)] {
                found(look);
            };
        });
}

std::string BounceWatcher::rootOf(const std::string& path) const
{
    const auto root = std::ranges::find_if(
        watchedFolders, [&path](const std::string& folder) { return path.starts_with(folder); });
    return root == watchedFolders.end() ? std::string() : *root;
}

bool BounceWatcher::isReported(const std::string& path, std::int64_t size) const
{
    const auto alerted = alertedFileSizes.find(path);
    return alerted != alertedFileSizes.end() && alerted->second == size;
}

BounceWatcher::FileState BounceWatcher::readFileState(
    const std::string& path, bool asksForFolder, bool asksForWriters)
{
    FileState look;
    // Checked first: if nobody writes the file, the attributes that are read afterwards are final.
    if (asksForWriters)
        look.writers = writersOf(path);
    if (asksForFolder)
        look.folder = FileManager::identityOfFolder(deletingLastPathComponent(path));
    look.item = FileManager::attributesOfItem(path);
    return look;
}

void BounceWatcher::apply(Wait wait, const FileState& look)
{
    if (!isActive || !watchingPaths.contains(wait.path))
        return;
    const WallTime now = Platform::current().dispatch.now();
    // A program may reserve space first and fill it later, so an open file's date counts as well.
    const bool isUnchanged =
        look.size() == wait.lastSize && !(wait.isOpen && look.date() > wait.lastDate);
    if (!isUnchanged) {
        wait.stableSince.reset();
    } else if (!wait.stableSince) {
        wait.stableSince = now;
    } else if (wait.isLast) {
        const bool isLeftAlone =
            look.size() > largestHeader && now - *wait.stableSince >= stableForWhileOpen;
        if (look.writers != Writers::Some || isLeftAlone)
            return report(wait.path, look);
        wait.isOpen = true;
    }
    wait.isLast = false;
    wait.lastSize = look.size();
    wait.lastDate = look.date();
    Platform::current().dispatch.mainAsyncAfter(
        pollInterval, alive.guard([this, wait] { waitForStability(wait); }));
}

void BounceWatcher::report(const std::string& path, const FileState& look)
{
    watchingPaths.erase(path);
    // Archive tools create a file first and replace it by a link at the end. The target of the link
    // was not written here.
    if (look.item && !look.item->isRegularFile)
        return;
    // Our copy is not recorded: a bounce that replaces it is reported, even with the same size.
    if (isCopy(path, look))
        return;
    const bool isKnown = isReported(path, look.size());
    alertedFileSizes.insert_or_assign(path, look.size());
    const bool isNewVersion = noteVersion(path, look);
    const FileURL url(path);
    if (!isKnown && isNewVersion && onBounceDetected)
        onBounceDetected(url, url.deletingLastPathComponent().lastPathComponent(), look.folder);
}

// A copy must settle for more than a second before it could be reported, so this normally runs in
// time.
void BounceWatcher::noteCopy(const FileURL& file)
{
    Platform::current().dispatch.mainAsync(
        [path = file.path(), look = readFileState(file.path(), true, false)] {
            shared().keepCopy(path, look);
        });
}

void BounceWatcher::keepCopy(const std::string& path, const FileState& look)
{
    if (look.folder)
        copies.insert_or_assign({ *look.folder, lastPathComponent(path) }, look.version());
}

bool BounceWatcher::isCopy(const std::string& path, const FileState& look) const
{
    if (!look.folder)
        return false;
    const auto copy = copies.find({ *look.folder, lastPathComponent(path) });
    return copy != copies.end() && copy->second == look.version();
}

// False if this version was noted before, under any path.
bool BounceWatcher::noteVersion(const std::string& path, const FileState& look)
{
    if (!look.folder)
        return true;
    const Version version = look.version();
    const auto [known, isNew] =
        alertedVersions.try_emplace({ *look.folder, lastPathComponent(path) }, version);
    return isNew || std::exchange(known->second, version) != version;
}

bool BounceWatcher::isAtRest(const FileManager::SourceState& source, WallTime now)
{
    const auto age = now - source.contentModificationDate;
    if (source.writers == Writers::Some)
        return source.size > largestHeader && age >= stableForWhileOpen;
    // A date in the future was set by another computer with a different clock, and is ignored.
    return age >= stableFor || age <= -stableFor;
}

} // namespace stemvault
