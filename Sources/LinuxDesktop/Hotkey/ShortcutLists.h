#pragma once

#include <QDBusConnection>

#include <string>

namespace stemvault {

/// What a key is bound to.
struct Shortcut {
    std::string name;
    std::string program; ///< Its absolute path.
    std::string argument;

    [[nodiscard]] std::string command() const { return program + " " + argument; }
};

/// Puts the shortcut, without a key, into the list that the desktop shows its user, unless it is
/// there already; one that has a key is not changed. False on a desktop without such a list, or
/// when that could not be reached. Runs the event loop while it waits. `currentDesktop` is a list
/// with colons, as XDG_CURRENT_DESKTOP has it.
[[nodiscard]] bool addToShortcutList(
    const std::string& currentDesktop, const Shortcut& shortcut, const QDBusConnection& bus);

} // namespace stemvault
