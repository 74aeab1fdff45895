#include "LinuxDesktop/Workspace/LinuxWorkspace.h"

#include "LinuxDesktop/Workspace/URLOpener.h"

#include <string_view>
#include <strings.h>
#include <utility>

namespace stemvault::workspace {

namespace {

// URLs come from release feeds too, and of all that a desktop can open, only a web page is
// harmless.
bool isWebAddress(std::string_view url)
{
    const auto beginsWith = [url](std::string_view scheme) {
        return url.size() > scheme.size()
            && ::strncasecmp(url.data(), scheme.data(), scheme.size()) == 0;
    };
    return beginsWith("https://") || beginsWith("http://");
}

} // namespace

LinuxWorkspace::LinuxWorkspace(
    Dispatch& dispatch, const WorkspaceSources& sources, std::function<bool()> showShortcuts)
    : showKeyboardShortcuts(std::move(showShortcuts)),
      watch(std::make_unique<ApplicationWatch>(
          dispatch, sources, [this](WorkspaceNews news) { announce(news); }))
{
}

std::vector<RunningApplication> LinuxWorkspace::runningApplications() const
{
    std::vector<RunningApplication> running;
    for (const ListedApplication& application : watch->applications())
        running.push_back(application.description);
    return running;
}

void LinuxWorkspace::addObserver(
    const void* observer, WorkspaceNotification notification, std::function<void()> work)
{
    observers.push_back(
        std::make_shared<Observer>(Observer { observer, notification, std::move(work) }));
}

void LinuxWorkspace::removeObserver(const void* observer)
{
    std::erase_if(observers, [observer](const auto& each) {
        // `post` may be calling the observers at this moment.
        each->isRemoved = each->handle == observer;
        return each->isRemoved;
    });
}

bool LinuxWorkspace::open(const std::string& url)
{
    // The URL of the keyboard shortcuts, whose place differs between desktops.
    if (url.starts_with("x-apple.systempreferences:com.apple.preference.keyboard"))
        return showKeyboardShortcuts();
    return isWebAddress(url) && openURL(url);
}

void LinuxWorkspace::announce(WorkspaceNews news)
{
    if (news.terminated)
        post(WorkspaceNotification::DidTerminateApplication);
    if (news.launched)
        post(WorkspaceNotification::DidLaunchApplication);
    if (news.activated)
        post(WorkspaceNotification::DidActivateApplication);
}

void LinuxWorkspace::post(WorkspaceNotification notification)
{
    const auto asked = observers;
    for (const auto& observer : asked)
        if (!observer->isRemoved && observer->notification == notification)
            observer->work();
}

} // namespace stemvault::workspace
