#pragma once

#include "Foundation/FileDescriptor.h"
#include "LinuxDesktop/Workspace/ProcessTable.h"

#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

namespace stemvault::workspace {

/// Calls back soon after a watched process has ended, but never from `watch`. Main thread only.
class ProcessEndings {
public:
    /// `onEnding` may call `watch`.
    ProcessEndings(std::string processRoot, std::function<void()> onEnding);

    /// Watches exactly these from now on. Silently leaves out those without a process descriptor.
    void watch(const std::set<ProcessKey>& keys);

private:
    struct Watch {
        FileDescriptor process;
        std::unique_ptr<QSocketNotifier> notifier;
    };

    [[nodiscard]] Watch makeWatch(const ProcessKey& key);
    [[nodiscard]] bool isStillThere(const ProcessKey& key) const;
    void callLater();

    const std::string root;
    const std::function<void()> ended;
    std::map<ProcessKey, Watch> watches;
    QObject context; ///< The context of queued calls; destroyed first.
};

} // namespace stemvault::workspace
