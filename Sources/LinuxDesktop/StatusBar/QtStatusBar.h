#pragma once

#include "Platform/StatusBar.h"

#include <QPointer>

class QWidget;

namespace stemvault::status_bar {

class QtStatusItem;

/// The desktop's tray: over the bus while a panel listens there, otherwise by the older protocol of
/// X11 trays. Switches between the two as panels come and go.
class QtStatusBar final : public StatusBar {
public:
    /// Ignores `length`, because panels decide about it: every item is as wide as its image.
    [[nodiscard]] std::unique_ptr<StatusItem> statusItem(double length) override;

    /// Makes the key equivalents of the menu work in a window.
    void addKeyEquivalents(QWidget& window) const;

private:
    QPointer<QtStatusItem> latest;
};

} // namespace stemvault::status_bar
