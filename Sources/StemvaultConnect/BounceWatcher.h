#pragma once

#include "FileManager/FileIdentity.h"
#include "FileManager/FileManager.h"
#include "Foundation/FileURL.h"
#include "Foundation/Shared.h"
#include "Foundation/WeakGuard.h"
#include "Platform/Dispatch.h"
#include "StemvaultConnect/FolderCheckQueue.h"

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
/// has settled and no program has it open for writing any more. Main thread only, unless stated
/// otherwise; the disk is read in the background.
class BounceWatcher : public Shared<BounceWatcher> {
public:
    /// Called with each finished bounce, the name of the folder that contains it, and the identity
    /// of that folder, absent if it could not be read.
    std::function<void(const FileURL& file, const std::string& folderName,
        const std::optional<FileIdentity>& folder)>
        onBounceDetected;

    /// Watches only these folders from now on, and forgets everything that it knew about files.
    void update(const std::optional<FileURL>& sessionFolder,
        const std::optional<std::string>& alwaysWatchPath);

    /// Ends watching.
    void stop();

    /// Called when a copy of ours has just got this name. The file in its present state is not a
    /// bounce, even if the drive reports it like one. From any thread; reads the disk.
    static void noteCopy(const FileURL& file);

    /// The extensions that count as audio, in lower case: those of Resources/audio-files.
    [[nodiscard]] static const std::set<std::string, std::less<>>& audioExtensions();

    /// How long a file must be left alone before it counts as finished.
    static constexpr std::chrono::milliseconds stableFor { 1000 };

    /// A file that a program keeps open for writing counts as finished, too, if it has been left
    /// alone for this long and is larger than a header.
    static constexpr std::chrono::minutes stableForWhileOpen { 5 };
    static constexpr std::int64_t largestHeader = 4096;

    /// Whether a file may be copied: the same rules as for a finished bounce, judged by its date.
    [[nodiscard]] static bool isAtRest(const FileManager::SourceState& source, WallTime now);

private:
    friend class Shared<BounceWatcher>;
    struct Wait;
    struct FileState;
    BounceWatcher();
    ~BounceWatcher();

    void startStream(const std::vector<std::string>& paths);
    void handleEvents(
        const std::vector<std::string>& paths, const std::vector<std::uint32_t>& flags);
    [[nodiscard]] bool isBounce(const std::string& path, std::uint32_t flag) const;
    void waitForStability(Wait wait);
    [[nodiscard]] std::string rootOf(const std::string& path) const;
    [[nodiscard]] bool isReported(const std::string& path, std::int64_t size) const;
    [[nodiscard]] static FileState readFileState(
        const std::string& path, bool asksForFolder, bool asksForWriters);
    void apply(Wait wait, const FileState& look);
    void report(const std::string& path, const FileState& look);
    [[nodiscard]] bool noteVersion(const std::string& path, const FileState& look);
    void keepCopy(const std::string& path, const FileState& look);
    [[nodiscard]] bool isCopy(const std::string& path, const FileState& look) const;

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
    FolderCheckQueue looks;
    std::unordered_set<std::string> watchingPaths; ///< Files that have not settled yet.
    std::unordered_map<std::string, std::int64_t> alertedFileSizes; ///< In bytes, when reported.

    /// The reported files, by folder and name instead of by path, because the session folder and
    /// the always-watched one may contain the same files under different paths.
    using Place = std::pair<FileIdentity, std::string>;
    using Version =
        std::pair<std::int64_t, std::optional<FileManager::FileDate>>; ///< Size and date.
    std::map<Place, Version> alertedVersions;
    std::map<Place, Version> copies; ///< Our own copies, as they were when they got their names.
    bool isActive = false;

    static constexpr std::chrono::milliseconds pollInterval { 500 };

    WeakGuard alive;
};

} // namespace stemvault
