#pragma once

#include "Foundation/WeakGuard.h"
#include "LinuxDesktop/Workspace/ApplicationList.h"
#include "LinuxDesktop/Workspace/ProcessEndings.h"
#include "LinuxDesktop/Workspace/UnitSignals.h"
#include "LinuxDesktop/Workspace/X11Windows.h"
#include "Platform/Dispatch.h"

#include <QDBusConnection>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace stemvault {

/// What a workspace looks at.
struct WorkspaceSources {
    std::string processRoot = "/proc";
    std::string display; ///< Of X11; empty when there is none.
    std::optional<QDBusConnection> unitBus; ///< Where the service manager signals, if it is asked.
    /// Whether applications can come and go of which X11 says nothing even while it answers.
    bool isWayland = false;
    /// How often to look where no event tells of everything.
    std::chrono::milliseconds interval { 5'000 };
    /// How long to wait from one change of a DAW's title that is told to the next.
    std::chrono::milliseconds titlePause { 2'000 };
    DesktopEntryPlaces entries;

    /// By this program's environment. On Wayland, applications of its own kind are found by their
    /// units and by looking every five seconds; so are all where X11 has no window manager that
    /// says which windows there are.
    [[nodiscard]] static WorkspaceSources ofThisSession();
};

struct WorkspaceNews {
    bool launched = false;
    bool terminated = false;
    bool activated = false;
};

/// Knows the applications among the user's processes by their windows, by the desktop's units and,
/// for DAWs, by their names. An application is launched when it first counts as regular. It stays
/// so until its process ends, whatever its windows do: many a program shows a splash window, then
/// none, then its own. Main thread only; needs its event loop.
///
/// A DAW whose window has another title, as when it opens another session, counts as activated: at
/// once and again a little later, as some open the session's files after that.
///
/// The desktop's menu is read in the background. Until then applications other than DAWs go by the
/// names of their programs.
class ApplicationWatch {
public:
    /// `onNews` is called from the event loop, once for all that is found at once. `queues` must
    /// outlive the watch.
    ApplicationWatch(
        Dispatch& queues, WorkspaceSources lookedAtHere, std::function<void(WorkspaceNews)> onNews);

    /// As they are now, in the order in which they were started.
    [[nodiscard]] const std::vector<ListedApplication>& applications();

private:
    enum class Activation { None, Another };

    void listen();
    void handleWindows(X11Windows::Change change);
    void lookAsOftenAsNeeded();
    void followTitles();
    void tellOfTitle();

    void update(Activation activation = Activation::None);
    void look();
    void noteWindows();
    void noteLaunched();
    void noteTerminated();
    void announce();

    void readMenuIfOutdated();
    void takeMenu(std::shared_ptr<const DesktopEntries> read);

    Dispatch& dispatch;
    const std::function<void(WorkspaceNews)> announced;
    const WorkspaceSources sources;
    std::shared_ptr<const DesktopEntries> menu;
    bool isReadingMenu = false;

    ProcessTable processes;
    std::map<ProcessKey, WindowClass> windowClasses;
    std::vector<ListedApplication> listed;
    std::set<ProcessKey> running; ///< Those whose launch counts as told.
    std::optional<std::chrono::steady_clock::time_point> lookedAt;
    WorkspaceNews news;

    ProcessEndings endings;
    std::unique_ptr<X11Windows> windows;
    bool isServerGone = false;
    std::unique_ptr<UnitSignals> units;
    std::unique_ptr<Timer> timer; ///< Of the looks where no event tells of everything.
    bool isInTitlePause = false; ///< A change of title has just been told.
    int titleNoticesDue = 0;
    WeakGuard alive;
};

} // namespace stemvault
