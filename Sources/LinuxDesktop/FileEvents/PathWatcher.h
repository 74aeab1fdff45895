#pragma once

#include "LinuxDesktop/FileEvents/FileStatus.h"
#include "LinuxDesktop/FileEvents/Inotify.h"
#include "LinuxDesktop/FileEvents/InotifyEvent.h"

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace stemvault {

/// Watches everything a root's path leads through, folders and links, so that no change of what the
/// path means goes unnoticed: nothing in the root itself tells that a folder above it was renamed.
/// Each part is asked only to tell when it goes; the folder that holds the root, or the last one
/// there is of a path that ends early, also tells when names in it come and go.
class PathWatcher {
public:
    struct Meaning {
        std::string resolved; ///< Without links; empty for the root of everything.
        std::optional<FileStatus> folder; ///< Absent when there is no folder at the path.
        std::string missing; ///< The first part of the path that is not there.
    };

    explicit PathWatcher(Inotify& ownInotify) : inotify(ownInotify) { }

    /// Between these two, `follow` every path; afterwards watches of before that nobody asked for
    /// again are retired.
    void begin();
    void end();

    [[nodiscard]] Meaning follow(const std::string& absolutePath);

    /// Whether an event may mean that a path leads elsewhere now. Also forgets watches that ended.
    [[nodiscard]] bool concerns(const InotifyEvent& event);

    [[nodiscard]] bool uses(int watch) const { return watches.contains(watch); }

    /// False when something could not be watched, so that the paths must be followed by the clock.
    [[nodiscard]] bool isComplete() const { return complete; }

private:
    /// The names that matter in a watched folder; none where only the folder itself does.
    using Names = std::vector<std::string>;

    bool watch(const std::string& path, std::uint32_t mask, const std::string& name);
    void watchNames(const std::string& folder, const std::string& name);

    Inotify& inotify;
    std::unordered_map<int, Names> watches;
    std::unordered_map<int, Names> former;
    bool complete = true;
};

} // namespace stemvault
