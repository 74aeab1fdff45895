#pragma once

#include "LinuxDesktop/Workspace/DesktopEntries.h"
#include "LinuxDesktop/Workspace/ProcessTable.h"
#include "Platform/Workspace.h"

#include <map>
#include <string>
#include <vector>

namespace stemvault::workspace {

/// How an ordinary window identifies the program that it belongs to.
struct WindowClass {
    std::string instance;
    std::string className;
};

struct ListedApplication {
    ProcessKey key;
    RunningApplication description;
};

/// The applications among the processes, in the order in which they were started. Regular are
/// - a known DAW, even without a window that is visible here: the topmost of a chain of processes
///   of the same name, because the processes that it starts under its own name work for it;
/// - a process with an ordinary window;
/// - the first process of a unit in which an entry of the desktop's menu was started.
/// The other processes of such a chain, and programs that the desktop started in the background,
/// are Prohibited. All other processes are left out.
[[nodiscard]] std::vector<ListedApplication> listApplications(
    const std::map<pid_t, Process>& processes, const std::map<ProcessKey, WindowClass>& windows,
    const DesktopEntries& entries);

} // namespace stemvault::workspace
