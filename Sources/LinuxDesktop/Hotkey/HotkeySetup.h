#pragma once

#include "LinuxDesktop/Hotkey/ShortcutLists.h"
#include "Platform/Dialogs.h"

#include <string>

namespace stemvault::hotkey {

/// Helps the user set up a hotkey for the selection: puts an entry without a key into the desktop's
/// own list of shortcuts, and shows that list.
class HotkeySetup {
public:
    /// `courier` is the executable behind the hotkey. `dialogs` must outlive it.
    HotkeySetup(Dialogs& dialogs, const std::string& courier, QDBusConnection bus);

    /// The courier's path: in an installation, in the libexec folder; in a build tree, next to the
    /// program's executable.
    [[nodiscard]] static std::string standardCourier();

    /// Adds the entry and opens the list. Returns whether the list could be opened. If the entry
    /// cannot be added, an alert shows the command to bind. Main-queue work continues meanwhile.
    [[nodiscard]] bool show();

private:
    Dialogs& dialogs;
    Shortcut shortcut;
    QDBusConnection bus;
};

} // namespace stemvault::hotkey
