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

namespace stemvault::workspace {

/// The sources that an ApplicationWatch uses.
struct WorkspaceSources {
    std::string processRoot = "/proc";
    std::string display; ///< The X11 display; empty if there is none.
    std::optional<QDBusConnection> unitBus; ///< The bus of the service manager, if it is used.
    /// Whether applications can come and go unnoticed by X11, even while it responds.
    bool isWayland = false;
    /// How often to look at the processes if events do not report every change.
    std::chrono::milliseconds interval { 5'000 };
    /// The time between two announcements of a changed title of a DAW.
    std::chrono::milliseconds titlePause { 2'000 };
    DesktopEntryPlaces entries;

    /// From this program's environment. On Wayland, native applications are found by their units
    /// and by looking every five seconds. Without an X11 window manager that publishes its windows,
    /// all applications are found by looking every five seconds.
    [[nodiscard]] static WorkspaceSources ofThisSession();
};

struct WorkspaceNews {
    bool launched = false;
    bool terminated = false;
    bool activated = false;
};

/// Finds the applications among the user's processes by their windows, by the desktop's units and,
/// for DAWs, by their names. An application counts as launched when it is first regular. It stays
/// launched until its process ends, whatever its windows do, because many programs show a splash
/// window, then none, then their main window. Main thread only; needs its event loop.
///
/// If the title of a DAW's window changes, for example because it opens another session, the DAW
/// counts as activated: at once, and again a little later, as some open the session's files later.
///
/// The desktop's menu is read in the background. Until that is done, applications other than DAWs
/// have the names of their programs.
class ApplicationWatch {
public:
    /// `onNews` is called from the event loop, once for all changes that are found together.
    /// `queues` must outlive the watch.
    ApplicationWatch(
        Dispatch& queues, WorkspaceSources lookedAtHere, std::function<void(WorkspaceNews)> onNews);

    /// The present applications, in the order in which they were started.
    [[nodiscard]] const std::vector<ListedApplication>& applications();

private:
    enum class Activation { None, Another };

    void listen();
    void handleWindows(X11Windows::Change change);
    void updatePollTimer();
    void followTitles();
    void announceTitleChange();

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
    std::set<ProcessKey> running; ///< The applications whose launch has been noted.
    std::optional<std::chrono::steady_clock::time_point> lookedAt;
    WorkspaceNews news;

    ProcessEndings endings;
    std::unique_ptr<X11Windows> windows;
    bool isServerGone = false;
    std::unique_ptr<UnitSignals> units;
    std::unique_ptr<Timer> timer; ///< Exists while events do not report every change.
    bool isInTitlePause = false; ///< A change of title has just been announced.
    int titleNoticesDue = 0;
    WeakGuard alive;
};

} // namespace stemvault::workspace
