#pragma once

#include "LinuxDesktop/StatusBar/TrayMenu.h"

#include <QMenu>

#include <vector>

namespace stemvault::status_bar {

/// The menu as a window of this program, for trays that do not show it themselves.
class PopUpMenu final : public QMenu {
public:
    /// `shown` must outlive it.
    explicit PopUpMenu(TrayMenu& shown);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void refresh();

    TrayMenu& menu;
    std::vector<QAction*> rows;
};

} // namespace stemvault::status_bar
