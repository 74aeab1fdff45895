#include "LinuxDesktop/Workspace/ApplicationWatch.h"

#include "Foundation/DAWTable.h"
#include "Foundation/Environment.h"

#include <algorithm>
#include <utility>

namespace stemvault::workspace {

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

/// How often a change of title is announced.
constexpr int noticesOfOneTitle = 2;

/// Queries in quick succession, as within one piece of work, share one look at the processes.
constexpr std::chrono::milliseconds momentOfOneLook = 5ms;

bool isRegular(const ListedApplication& application)
{
    return application.description.activationPolicy == ActivationPolicy::Regular;
}

} // namespace

WorkspaceSources WorkspaceSources::ofThisSession()
{
    WorkspaceSources sources;
    sources.display = environment("DISPLAY");
    sources.entries = DesktopEntryPlaces::ofThisUser();
    sources.isWayland =
        !environment("WAYLAND_DISPLAY").empty() || environment("XDG_SESSION_TYPE") == "wayland";
    if (sources.isWayland)
        sources.unitBus = QDBusConnection::sessionBus();
    return sources;
}

ApplicationWatch::ApplicationWatch(
    Dispatch& queues, WorkspaceSources lookedAtHere, std::function<void(WorkspaceNews)> onNews)
    : dispatch(queues), announced(std::move(onNews)), sources(std::move(lookedAtHere)),
      menu(std::make_shared<const DesktopEntries>()), processes(sources.processRoot),
      endings(sources.processRoot, [this] { update(); })
{
    listen();
}

void ApplicationWatch::listen()
{
    if (!sources.display.empty())
        windows = X11Windows::connect(
            sources.display, [this](X11Windows::Change change) { handleWindows(change); },
            [this] {
                isServerGone = true;
                updatePollTimer();
            });
    if (sources.unitBus)
        units = std::make_unique<UnitSignals>(*sources.unitBus, [this] { update(); });
    updatePollTimer();
}

void ApplicationWatch::handleWindows(X11Windows::Change change)
{
    updatePollTimer();
    if (change.list || change.active)
        update(change.active ? Activation::Another : Activation::None);
    if (!change.title)
        return;
    titleNoticesDue = noticesOfOneTitle;
    if (!isInTitlePause)
        announceTitleChange();
}

void ApplicationWatch::announceTitleChange()
{
    isInTitlePause = titleNoticesDue > 0;
    if (!isInTitlePause)
        return;
    --titleNoticesDue;
    dispatch.mainAsyncAfter(sources.titlePause, alive.guard([this] { announceTitleChange(); }));
    update(Activation::Another);
}

void ApplicationWatch::updatePollTimer()
{
    const bool isNeeded = sources.isWayland || !windows || isServerGone || !windows->isPublished();
    if (!isNeeded)
        timer.reset();
    else if (!timer)
        timer = dispatch.scheduledTimer(sources.interval, alive.guard([this] { update(); }));
}

const std::vector<ListedApplication>& ApplicationWatch::applications()
{
    if (lookedAt && steady_clock::now() - *lookedAt < momentOfOneLook)
        return listed;
    look();
    // Announced later, so that observers are not called from within their own query.
    if (news.launched || news.terminated)
        dispatch.mainAsync(alive.guard([this] { announce(); }));
    return listed;
}

void ApplicationWatch::update(Activation activation)
{
    look();
    news.activated = news.activated || activation == Activation::Another;
    announce();
}

void ApplicationWatch::look()
{
    processes.sweep();
    noteWindows();
    listed = listApplications(processes.processes(), windowClasses, *menu);
    followTitles();
    noteTerminated();
    noteLaunched();
    // Applications found by the first look were not launched just now.
    if (!std::exchange(lookedAt, steady_clock::now()))
        news = {};
    endings.watch(running);
}

void ApplicationWatch::noteWindows()
{
    std::erase_if(
        windowClasses, [this](const auto& window) { return !processes.contains(window.first); });
    if (!windows)
        return;
    for (const auto& [window, about] : windows->windows()) {
        const auto process = processes.processes().find(about.process);
        if (about.isOrdinary && process != processes.processes().end())
            windowClasses.emplace(
                process->second.key, WindowClass { about.instance, about.className });
    }
}

/// The titles of a DAW's windows show which session it has open.
void ApplicationWatch::followTitles()
{
    if (!windows)
        return;
    std::set<pid_t> daws;
    for (const ListedApplication& application : listed)
        if (dawWithBundleIdentifier(application.description.bundleIdentifier.value_or("")))
            daws.insert(application.key.process);
    for (const auto& [window, about] : windows->windows())
        if (daws.contains(about.process))
            windows->followTitle(window);
}

void ApplicationWatch::noteLaunched()
{
    bool isAnyNew = false;
    for (const ListedApplication& application : listed)
        if (isRegular(application) && running.insert(application.key).second)
            isAnyNew = true;
    if (!isAnyNew)
        return;
    news.launched = true;
    readMenuIfOutdated();
}

void ApplicationWatch::noteTerminated()
{
    const auto isGone = [this](const ProcessKey& key) { return !processes.contains(key); };
    if (std::erase_if(running, isGone) > 0)
        news.terminated = true;
}

void ApplicationWatch::announce()
{
    if (news.launched || news.terminated || news.activated)
        announced(std::exchange(news, {}));
}

/// Reads the disk in the background, because it may be slow or belong to another machine.
void ApplicationWatch::readMenuIfOutdated()
{
    if (std::exchange(isReadingMenu, true))
        return;
    auto take = [this](std::shared_ptr<const DesktopEntries> read) { takeMenu(std::move(read)); };
    auto finish = [&queues = dispatch, guarded = alive.guard(std::move(take))](
                      std::shared_ptr<const DesktopEntries> read) {
        queues.mainAsync([guarded, read = std::move(read)]() mutable { guarded(read); });
    };
    dispatch.utilityAsync([old = menu, places = sources.entries, finish = std::move(finish)] {
        finish(old->isOutdated() ? DesktopEntries::read(places) : nullptr);
    });
}

void ApplicationWatch::takeMenu(std::shared_ptr<const DesktopEntries> read)
{
    isReadingMenu = false;
    if (!read)
        return;
    // Looks with the old menu first, so that only names can differ afterwards.
    look();
    const auto before = listed;
    menu = std::move(read);
    look();
    // An observer may be waiting for an application whose name was unknown until now.
    if (!std::ranges::equal(
            before, listed, {}, &ListedApplication::description, &ListedApplication::description))
        news.launched = true;
    announce();
}

} // namespace stemvault::workspace
