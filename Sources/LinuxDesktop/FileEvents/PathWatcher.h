#pragma once

#include "LinuxDesktop/FileEvents/FileStatus.h"
#include "LinuxDesktop/FileEvents/Inotify.h"
#include "LinuxDesktop/FileEvents/InotifyEvent.h"

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace stemvault {

/// Watches every folder and link that the path of a root leads through. The root itself raises no
/// event when a folder above it is renamed. Each part is watched for its own removal or rename; the
/// folder that holds the root, or the last existing one of a path that ends early, is also watched
/// for names that come and go.
class PathWatcher {
public:
    struct Target {
        std::string resolved; ///< Without links; empty for the root of everything.
        std::optional<FileStatus> folder; ///< Absent when there is no folder at the path.
        std::string missing; ///< The first part of the path that is not there.
    };

    explicit PathWatcher(Inotify& ownInotify) : inotify(ownInotify) { }

    /// Call `follow` for every path between these two. `end` retires the watches that no path needs
    /// any more.
    void begin();
    void end();

    [[nodiscard]] Target follow(const std::string& absolutePath);

    /// Whether an event means that a path may lead elsewhere now. Forgets a watch that ended.
    [[nodiscard]] bool isAffectedBy(const InotifyEvent& event);

    [[nodiscard]] bool uses(int watch) const { return watches.contains(watch); }

    /// False when some part could not be watched, so that the paths must be polled.
    [[nodiscard]] bool isComplete() const { return complete; }

private:
    /// The names that matter in a watched folder; none where only the folder itself matters.
    using Names = std::vector<std::string>;

    bool watch(const std::string& path, std::uint32_t mask, const std::string& name);
    void watchNames(const std::string& folder, const std::string& name);

    Inotify& inotify;
    std::unordered_map<int, Names> watches;
    std::unordered_map<int, Names> former;
    bool complete = true;
};

} // namespace stemvault
