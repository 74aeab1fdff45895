#pragma once

#include "LinuxDesktop/FileEvents/MountTable.h"
#include "LinuxDesktop/FileEvents/PathWatcher.h"
#include "LinuxDesktop/FileEvents/TreeWalker.h"
#include "LinuxDesktop/FileEvents/WatchState.h"

#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace stemvault {

/// Keeps the roots on the folders their paths lead to, whatever is removed, renamed, mounted or put
/// in their place, and for as long as there is none waits for one.
class RootTracker {
public:
    RootTracker(WatchState& shared, TreeWalker& treeWalker, const std::vector<std::string>& paths);

    /// Attaches the roots that are there; `since` is when the stream began.
    void start(FileTime since);

    /// To be shown every event, before anything else is done with it. Whether it means that a path
    /// may lead elsewhere now.
    bool notice(const InotifyEvent& event);
    /// The table of mounts has changed, but not before that moment.
    void noticeMounts(FileTime notBefore);

    /// Follows the paths anew if anything has cast doubt on them.
    void recheck();

    /// Events were lost: everything is looked through for changes since then.
    void lookThrough(FileTime since);

    /// When the paths must be followed by the clock; absent while every change is told.
    [[nodiscard]] std::optional<EventCoalescer::Time> due() const;
    void suspect() { suspicious = true; }

    [[nodiscard]] bool guards(int watch) const { return guard.uses(watch); }
    [[nodiscard]] const MountTable& mountTable() const { return mounts; }

private:
    struct Root {
        std::string given;
        std::string absolute;
        PathWatcher::Meaning meaning;
        NodeId node = noNode;
        bool isLost = false; ///< Its watch has ended, so its folder has, whatever bears its number.
    };

    void followAll(TreeWalker::Visit visit, FileTime since);
    [[nodiscard]] bool isShared(const PathWatcher::Meaning& meaning) const;
    void update(Root& root, PathWatcher::Meaning meaning, TreeWalker::Visit visit, FileTime since);
    void attach(Root& root, TreeWalker::Visit visit, FileTime since);
    void detach(Root& root);
    void checkMounts(FileTime since);
    void checkMount(const Root& root, const std::string& point, FileTime since);

    WatchState& state;
    TreeWalker& walker;
    PathWatcher guard;
    MountTable mounts;
    std::vector<Root> roots;
    std::set<std::string> mountPoints;
    bool suspicious = false;
    bool haveMountsChanged = true;
    FileTime unsureSince = FileTime::max(); ///< If changes of paths may have been missed.
    std::optional<EventCoalescer::Time> nextLook;
    FileTime lastLook;
};

} // namespace stemvault
