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

    /// Does what a row says, once the call that asked for it has returned.
    void choose(std::size_t row);

Q_SIGNALS:
    void changed();

private:
    Menu menu;
    MenuDelegate* delegate = nullptr;
};

} // namespace stemvault
