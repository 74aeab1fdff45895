#pragma once

#include "FileManager/FileIdentity.h"
#include "FileManager/FileManager.h"
#include "Foundation/FileURL.h"
#include "Foundation/Shared.h"
#include "Foundation/WeakGuard.h"
#include "Platform/Dispatch.h"
#include "StemvaultConnect/FolderLooks.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace stemvault {

class FileEventStream;

/// Finds newly bounced audio files in the folders it is given, and reports each once, when its size
/// has settled and nobody has it open for writing any more. Main thread only, unless it says
/// otherwise; the disk is asked in the background.
class BounceWatcher : public Shared<BounceWatcher> {
public:
    /// Receives each finished bounce with the name of the folder that holds it, and which folder
    /// that was; absent when it could not be read.
    std::function<void(const FileURL& file, const std::string& folderName,
        const std::optional<FileIdentity>& folder)>
        onBounceDetected;

    /// Watches these folders and nothing else; what was known of files is forgotten.
    void update(const std::optional<FileURL>& sessionFolder,
        const std::optional<std::string>& alwaysWatchPath);

    /// Ends watching.
    void stop();

    /// A copy of ours has just got this name. What it is now is no bounce, also where the drive
    /// cannot tell a copy from a recording. From any thread; looks at the disk.
    static void noteCopy(const FileURL& file);

    /// The extensions that count as audio, in lower case: those of Resources/audio-files.
    [[nodiscard]] static const std::set<std::string, std::less<>>& audioExtensions();

    /// So long a file must be left alone before it counts as finished.
    static constexpr std::chrono::milliseconds stableFor { 1000 };

    /// A file that someone keeps open for writing counts all the same when it has been left
    /// alone for so long and is more than a header.
    static constexpr std::chrono::minutes stableForWhileOpen { 5 };
    static constexpr std::int64_t largestHeader = 4096;

    /// Whether a file may be copied, by the watcher's measure of a finished one.
    [[nodiscard]] static bool isAtRest(const FileManager::SourceState& source, WallTime now);

private:
    friend class Shared<BounceWatcher>;
    struct Wait;
    struct Look;
    BounceWatcher();
    ~BounceWatcher();

    void startStream(const std::vector<std::string>& paths);
    void handleEvents(
        const std::vector<std::string>& paths, const std::vector<std::uint32_t>& flags);
    [[nodiscard]] bool isBounce(const std::string& path, std::uint32_t flag) const;
    void waitForStability(Wait wait);
    [[nodiscard]] std::string rootOf(const std::string& path) const;
    [[nodiscard]] bool isReported(const std::string& path, std::int64_t size) const;
    [[nodiscard]] static Look lookAt(
        const std::string& path, bool asksForFolder, bool asksForWriters);
    void apply(Wait wait, const Look& look);
    void report(const std::string& path, const Look& look);
    [[nodiscard]] bool noteVersion(const std::string& path, const Look& look);
    void keepCopy(const std::string& path, const Look& look);
    [[nodiscard]] bool isCopy(const std::string& path, const Look& look) const;

    /// Folders in which DAWs keep their own working files, in lower case.
    const std::set<std::string, std::less<>> internalSessionFolderNames = {
        "audio files",
        "session file backups",
        "wavecache files",
        "fade files",
        "plug-in settings",
        "rendered files",
        "video files",
        "clip groups",
    };
    std::unique_ptr<FileEventStream> streamRef;
    std::vector<std::string> watchedFolders;
    FolderLooks looks;
    std::unordered_set<std::string> watchingPaths; ///< Files that are being waited for.
    std::unordered_map<std::string, std::int64_t> alertedFileSizes; ///< In bytes, when reported.

    /// What was reported, by folder and name instead of by path: the session's folder and the other
    /// one may lead to the same files under two spellings.
    using Place = std::pair<FileIdentity, std::string>;
    using Version =
        std::pair<std::int64_t, std::optional<FileManager::FileDate>>; ///< Size and date.
    std::map<Place, Version> alertedVersions;
    std::map<Place, Version> copies; ///< Of ours, as they were when they got their names.
    bool isActive = false;

    static constexpr std::chrono::milliseconds pollInterval { 500 };

    WeakGuard alive;
};

} // namespace stemvault
