#pragma once

#include "Foundation/WeakGuard.h"
#include "Platform/Dispatch.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <string>

namespace stemvault {

/// Looks at folders in the background without filling the background threads with looks that hang:
/// looks into one folder run one after the other, and at most a few below one root run side by
/// side. A drive that stops answering therefore holds up only what is asked of it, and costs a few
/// threads however much is asked. Main thread only.
class FolderLooks {
public:
    /// Runs on a background thread; what it returns then runs on the main thread.
    using Look = std::function<Work()>;

    FolderLooks();
    ~FolderLooks();

    /// Runs `look` after all earlier looks into `folder`. `root` is the watched folder above it.
    void ask(const std::string& root, const std::string& folder, Look look);

    /// Drops the looks that have not begun. Those under way keep their place until they end.
    void dropWaiting();

private:
    struct Root {
        std::size_t underWay = 0;
        std::deque<std::string> ready; ///< Folders with waiting looks and none under way.
    };
    struct Folder {
        bool isUnderWay = false;
        std::deque<Look> waiting;
    };

    void beginNext(const std::string& root);
    void begin(const std::string& root, const std::string& folder);
    void end(const std::string& root, const std::string& folder);

    std::map<std::string, Root> roots; ///< Those below which something waits or is under way.
    std::map<std::string, Folder> folders; ///< Likewise.

    WeakGuard alive;
};

} // namespace stemvault
