#pragma once

#include "Platform/StatusBar.h"

#include <QObject>

namespace stemvault {

/// The menu of the status item, as all the ways of showing it share it. Main thread only.
class TrayMenu final : public QObject {
    Q_OBJECT
public:
    void setMenu(Menu shown, MenuDelegate* itsDelegate);

    [[nodiscard]] const std::vector<MenuItem>& items() const { return menu.items; }

    /// Has the delegate bring the rows up to date; tells by `changed` when that made a difference.
    bool update();

    /// As `update`, unless the menu is open: then its rows stay as they are until it is closed.
    void updateUnlessOpen();

    /// The menu was opened, and is brought up to date for that, or it was closed. Some panels never
    /// say the one or the other; whatever they do next brings the rows up to date.
    void setOpen(bool isOpenNow);

    /// Does what a row says, once the call that asked for it has returned.
    void choose(std::size_t row);

Q_SIGNALS:
    void changed();

private:
    Menu menu;
    MenuDelegate* delegate = nullptr;
    bool isOpen = false; ///< As far as is told.
};

} // namespace stemvault
