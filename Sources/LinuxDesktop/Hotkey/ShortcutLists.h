#pragma once

#include <QDBusConnection>

#include <string>

namespace stemvault::hotkey {

/// A command to bind a key to.
struct Shortcut {
    std::string name;
    std::string program; ///< An absolute path.
    std::string argument;

    [[nodiscard]] std::string command() const { return program + " " + argument; }
};

/// Adds the shortcut, without a key, to the list that the desktop shows its user, unless it is
/// already there. An entry that has a key is not changed. False if the desktop has no list that is
/// known here, or the list cannot be changed. Runs the event loop while it waits. `currentDesktop`
/// is a colon-separated list like XDG_CURRENT_DESKTOP.
[[nodiscard]] bool addToShortcutList(
    const std::string& currentDesktop, const Shortcut& shortcut, const QDBusConnection& bus);

} // namespace stemvault::hotkey
