#pragma once

#include "LinuxDesktop/FileEvents/FileStatus.h"
#include "LinuxDesktop/FileEvents/Inotify.h"
#include "LinuxDesktop/FileEvents/InotifyEvent.h"

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace stemvault::file_events {

/// Watches every folder and link along the path of a root, because the root itself raises no event
/// when a folder above it is renamed. Each part is watched for its own removal or rename. The
/// folder that holds the root, or the last existing folder on a broken path, is also watched for
/// names that are added or removed.
class PathWatcher {
public:
    struct Target {
        std::string resolved; ///< With all links resolved; empty for "/".
        std::optional<FileStatus> folder; ///< Absent when there is no folder at the path.
        std::string missing; ///< The path up to the first part that does not exist.
    };

    explicit PathWatcher(Inotify& ownInotify) : inotify(ownInotify) { }

    /// Call `follow` for every path between `begin` and `end`. `end` retires the watches that no
    /// path needs any more.
    void begin();
    void end();

    [[nodiscard]] Target follow(const std::string& absolutePath);

    /// Whether a path may lead elsewhere after this event. Forgets a watch that has ended.
    [[nodiscard]] bool isAffectedBy(const InotifyEvent& event);

    [[nodiscard]] bool uses(int watch) const { return watches.contains(watch); }

    /// False when a limit kept some part from being watched, so that the paths must be polled.
    [[nodiscard]] bool isComplete() const { return complete; }

private:
    /// The names that matter in a watched folder; empty if only the folder itself matters.
    using Names = std::vector<std::string>;

    bool watch(const std::string& path, std::uint32_t mask, const std::string& name);
    void watchNames(const std::string& folder, const std::string& name);

    Inotify& inotify;
    std::unordered_map<int, Names> watches;
    std::unordered_map<int, Names> former;
    bool complete = true;
};

} // namespace stemvault::file_events
