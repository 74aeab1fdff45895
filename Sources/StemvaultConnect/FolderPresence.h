#pragma once

#include "Foundation/WeakGuard.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace stemvault {

/// Knows which folders of a list are missing, as of the latest look. Looking never makes anyone
/// wait, not even for a network drive that has stopped answering: a folder counts as there until a
/// look has found otherwise. Main thread only; the disk is asked elsewhere.
class FolderPresence {
public:
    FolderPresence();
    ~FolderPresence();

    /// Called when a look has found a folder gone or back.
    std::function<void()> onChange;

    /// Begins to look for each of these and returns at once.
    void look(std::vector<std::string> paths);

    [[nodiscard]] bool isMissing(const std::string& path) const { return missing.contains(path); }

private:
    struct Walk;

    void begin(std::vector<std::string> paths);
    void apply(const std::string& path, bool isMissingNow);
    void end(const std::shared_ptr<Walk>& walk);
    void watchOver(const std::shared_ptr<Walk>& walk, std::size_t lastPosition);
    void leaveBehind(const std::shared_ptr<Walk>& walk);
    [[nodiscard]] std::vector<std::string> withoutStuck(std::vector<std::string> paths) const;

    std::set<std::string> missing;
    std::vector<std::shared_ptr<Walk>> walks; ///< Those that have not ended, stuck ones included.
    std::vector<std::string> next; ///< What to look for when one ends; empty: nothing.

    WeakGuard alive;
};

} // namespace stemvault
