#pragma once

#include "LinuxDesktop/Workspace/ApplicationWatch.h"
#include "Platform/Workspace.h"

#include <functional>
#include <memory>
#include <vector>

namespace stemvault::workspace {

/// The workspace of a Linux desktop; see ApplicationWatch for what counts as an application.
/// Posts an activation whenever the user switches to another window, even of the same application,
/// because that is when a DAW has opened its session.
class LinuxWorkspace : public Workspace {
public:
    /// `dispatch` must outlive it. `showShortcuts` handles the URL of the keyboard shortcuts.
    LinuxWorkspace(
        Dispatch& dispatch, const WorkspaceSources& sources, std::function<bool()> showShortcuts);

    [[nodiscard]] std::vector<RunningApplication> runningApplications() const override;
    void addObserver(const void* observer, WorkspaceNotification notification,
        std::function<void()> work) override;
    void removeObserver(const void* observer) override;
    [[nodiscard]] bool open(const std::string& url) override;

private:
    struct Observer {
        const void* handle;
        WorkspaceNotification notification;
        std::function<void()> work;
        bool isRemoved = false;
    };

    void announce(WorkspaceNews news);
    void post(WorkspaceNotification notification);

    std::function<bool()> showKeyboardShortcuts;
    std::vector<std::shared_ptr<Observer>> observers;
    std::unique_ptr<ApplicationWatch> watch;
};

} // namespace stemvault::workspace
