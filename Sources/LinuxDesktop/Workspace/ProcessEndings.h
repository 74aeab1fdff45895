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

/// Calls back at once when one of the watched processes has ended. Main thread only.
class ProcessEndings {
public:
    /// `onEnding` may call `watch`.
    ProcessEndings(std::string processRoot, std::function<void()> onEnding);

    /// Watches exactly these from now on. Silently leaves out those without a process descriptor.
    void watch(const std::set<ProcessKey>& keys);

private:
    struct DeleteLater { // The notifier's own signal may be in progress.
        void operator()(QSocketNotifier* notifier) const
        {
            notifier->setEnabled(false);
            notifier->deleteLater();
        }
    };
    struct Watch {
        FileDescriptor process;
        std::unique_ptr<QSocketNotifier, DeleteLater> notifier;
    };

    [[nodiscard]] Watch makeWatch(const ProcessKey& key);
    [[nodiscard]] bool isStillThere(const ProcessKey& key) const;

    const std::string root;
    const std::function<void()> ended;
    std::map<ProcessKey, Watch> watches;
    QObject context; ///< The context of queued calls; destroyed first.
};

} // namespace stemvault::workspace
