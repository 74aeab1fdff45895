#pragma once

#include "LinuxDesktop/Workspace/DesktopEntries.h"
#include "LinuxDesktop/Workspace/ProcessTable.h"
#include "Platform/Workspace.h"

#include <map>
#include <string>
#include <vector>

namespace stemvault {

/// What an ordinary window says of the program it belongs to.
struct WindowClass {
    std::string instance;
    std::string className;
};

struct ListedApplication {
    ProcessKey key;
    RunningApplication description;
};

/// The applications among the processes, in the order in which they were started. Regular is
/// - a known DAW, whether or not it has a window that can be seen from here: of a chain of
///   processes of that name the topmost, for what it starts under its own name works for it;
/// - a process with an ordinary window;
/// - the first process of a unit that an entry of the desktop's menu was started in.
/// What the desktop started in the background is Prohibited; all other processes are left out.
[[nodiscard]] std::vector<ListedApplication> listApplications(
    const std::map<pid_t, Process>& processes, const std::map<ProcessKey, WindowClass>& windows,
    const DesktopEntries& entries);

} // namespace stemvault
