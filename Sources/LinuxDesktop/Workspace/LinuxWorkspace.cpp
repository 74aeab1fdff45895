#include "LinuxDesktop/Workspace/LinuxWorkspace.h"

#include "LinuxDesktop/Workspace/KeyboardSettings.h"
#include "LinuxDesktop/Workspace/URLOpener.h"

#include <utility>

namespace stemvault {

namespace {

bool hasScheme(const std::string& url)
{
    const auto end = url.find_first_of(":/?#");
    return end != std::string::npos && url[end] == ':' && end > 0 && url.front() != '-';
}

} // namespace

LinuxWorkspace::LinuxWorkspace(Dispatch& dispatch, const WorkspaceSources& sources)
    : watch(std::make_unique<ApplicationWatch>(
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
        // A notice may be on its way round just now.
        each->isRemoved = each->handle == observer;
        return each->isRemoved;
    });
}

bool LinuxWorkspace::open(const std::string& url)
{
    // The place of the keyboard's shortcuts, which every desktop keeps elsewhere.
    if (url.starts_with("x-apple.systempreferences:com.apple.preference.keyboard"))
        return openKeyboardSettings();
    // Without a scheme it would be taken for a file's name, or for an option.
    return hasScheme(url) && openURL(url);
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

} // namespace stemvault
