#pragma once

#include "Foundation/WeakGuard.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace stemvault {

/// Records which folders of a list are missing, as of the latest check. A check never blocks the
/// caller, not even on a network drive that has stopped responding: a folder counts as present
/// until a check finds it missing. Main thread only; the disk is read in the background.
class FolderPresence {
public:
    FolderPresence();
    ~FolderPresence();

    /// Called when a check has found that a folder is gone or back.
    std::function<void()> onChange;

    /// Starts to check each of these folders and returns at once.
    void look(std::vector<std::string> paths);

    [[nodiscard]] bool isMissing(const std::string& path) const { return missing.contains(path); }

private:
    struct Walk;

    void begin(std::vector<std::string> paths);
    void apply(const std::string& path, bool isMissingNow);
    void end(const std::shared_ptr<Walk>& walk);
    void superviseProgress(const std::shared_ptr<Walk>& walk, std::size_t lastPosition);
    void abandon(const std::shared_ptr<Walk>& walk);
    [[nodiscard]] std::vector<std::string> withoutStuck(std::vector<std::string> paths) const;

    std::set<std::string> missing;
    std::vector<std::shared_ptr<Walk>> walks; ///< Those that have not ended, including stuck ones.
    std::vector<std::string> next; ///< The folders to check when a walk ends; may be empty.

    WeakGuard alive;
};

} // namespace stemvault
