#pragma once

#include "Platform/StatusBar.h"

#include <QObject>

namespace stemvault::status_bar {

/// The menu of the status item, shared by all the ways of showing it. Main thread only.
class TrayMenu final : public QObject {
    Q_OBJECT
public:
    void setMenu(Menu shown, MenuDelegate* itsDelegate);

    [[nodiscard]] const std::vector<MenuItem>& items() const { return menu.items; }

    /// Lets the delegate update the rows. Emits `changed` and returns true if any of them changed.
    bool update();

    /// Like `update`, but leaves the rows unchanged while the menu is open.
    void updateUnlessOpen();

    /// Call it when the menu was opened or closed; it updates the rows. Some panels never announce
    /// one or the other, but whatever they call next updates the rows as well.
    void setOpen(bool isOpenNow);

    /// Runs a row's action from the event loop, after the caller has returned.
    void choose(std::size_t row);

Q_SIGNALS:
    void changed();

private:
    Menu menu;
    MenuDelegate* delegate = nullptr;
    bool isOpen = false; ///< As far as panels announce it.
};

} // namespace stemvault::status_bar
