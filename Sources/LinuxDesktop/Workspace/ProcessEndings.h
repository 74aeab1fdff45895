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

namespace stemvault {

/// Tells at once when one of some processes has ended. Main thread only.
class ProcessEndings {
public:
    /// `onEnding` may call `watch`.
    ProcessEndings(std::string processRoot, std::function<void()> onEnding);

    /// Watches just these from now on. What the system has no descriptor for is left out silently.
    void watch(const std::set<ProcessKey>& keys);

private:
    struct DeleteLater { // It may be the one whose signal we are in.
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
    QObject context; ///< Of what is queued; goes first.
};

} // namespace stemvault
