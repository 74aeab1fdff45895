#pragma once

#include "LinuxDesktop/Hotkey/ShortcutLists.h"
#include "Platform/Dialogs.h"

#include <string>

namespace stemvault {

/// What the user is shown who wants a hotkey for the selection: the entry for it in the desktop's
/// own list of shortcuts, where it waits for a key.
class HotkeySetup {
public:
    /// `courier` is the executable behind the hotkey. `dialogs` must outlive it.
    HotkeySetup(Dialogs& dialogs, const std::string& courier, QDBusConnection bus);

    /// Beside the program's executable in a build tree, in an installation among the programs that
    /// nobody starts by hand.
    [[nodiscard]] static std::string standardCourier();

    /// Lists the entry and opens the list; whether that could be opened. Where there is no list
    /// that it knows, an alert shows the command to bind. Main-queue work goes on meanwhile.
    [[nodiscard]] bool show();

private:
    Dialogs& dialogs;
    Shortcut shortcut;
    QDBusConnection bus;
};

} // namespace stemvault
