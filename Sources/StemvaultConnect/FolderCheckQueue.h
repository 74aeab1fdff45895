#pragma once

#include "Foundation/WeakGuard.h"
#include "Platform/Dispatch.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <string>

namespace stemvault {

/// Runs disk checks ("looks") in the background without letting those that hang use up the
/// background threads: looks at one folder run one after the other, and only a few below one root
/// run at the same time. A drive that stops responding therefore delays only its own looks, and
/// blocks only a few threads, however many looks there are. Main thread only.
class FolderCheckQueue {
public:
    /// Runs on a background thread; the work that it returns then runs on the main thread.
    using Check = std::function<Work()>;

    FolderCheckQueue();
    ~FolderCheckQueue();

    /// Runs `look` after all earlier looks at `folder`. `root` is the watched folder above it.
    void ask(const std::string& root, const std::string& folder, Check look);

    /// Drops the looks that have not started. Running ones still count until they end.
    void dropWaiting();

private:
    struct Root {
        std::size_t underWay = 0;
        std::deque<std::string> ready; ///< Folders with waiting looks and no running one.
    };
    struct Folder {
        bool isUnderWay = false;
        std::deque<Check> waiting;
    };

    void beginNext(const std::string& root);
    void begin(const std::string& root, const std::string& folder);
    void end(const std::string& root, const std::string& folder);

    std::map<std::string, Root> roots; ///< Only roots with waiting or running looks.
    std::map<std::string, Folder> folders; ///< Only folders with waiting or running looks.

    WeakGuard alive;
};

} // namespace stemvault
