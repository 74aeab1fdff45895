#pragma once

#include "Foundation/Alive.h"
#include "Foundation/FileURL.h"
#include "Foundation/Shared.h"
#include "Platform/Dispatch.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace stemvault {

class FileEventStream;

/// Finds newly bounced audio files in the folders it is given, and reports each once, when its size
/// has settled. Main thread only.
class BounceWatcher : public Shared<BounceWatcher> {
public:
    /// Receives each finished bounce with the name of the folder that holds it.
    std::function<void(const FileURL& file, const std::string& folderName)> onBounceDetected;

    /// Watches these folders and nothing else; what was known of files is forgotten.
    void update(const std::optional<FileURL>& sessionFolder,
        const std::optional<std::string>& alwaysWatchPath);

    /// Ends watching.
    void stop();

    /// The extensions that count as audio, in lower case.
    [[nodiscard]] static const std::set<std::string, std::less<>>& audioExtensions();

private:
    friend class Shared<BounceWatcher>;
    BounceWatcher();
    ~BounceWatcher();

    void startStream(const std::vector<std::string>& paths);
    void handleEvents(
        const std::vector<std::string>& paths, const std::vector<std::uint32_t>& flags);
    [[nodiscard]] bool isBounce(const std::string& path, std::uint32_t flag) const;
    void waitForStability(const FileURL& url, const std::string& path, std::int64_t lastSize,
        std::optional<WallTime> stableSince);
    void report(const FileURL& url, const std::string& path, std::int64_t size);

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
    std::unordered_set<std::string> watchingPaths; ///< Files that are being waited for.
    std::unordered_map<std::string, std::int64_t> alertedFileSizes; ///< In bytes, when reported.
    bool isActive = false;

    static constexpr std::chrono::milliseconds pollInterval { 500 };
    static constexpr std::chrono::milliseconds stableFor { 1000 };

    Alive alive;
};

} // namespace stemvault
