#pragma once

#include "Platform/StatusBar.h"

#include <QPointer>

class QWidget;

namespace stemvault {

class QtStatusItem;

/// The desktop's tray: by the bus where a panel listens there, else by the older protocol of X11
/// trays, whichever comes and goes first.
class QtStatusBar final : public StatusBar {
public:
    /// Every item is as wide as its image, whatever the length: panels decide.
    [[nodiscard]] std::unique_ptr<StatusItem> statusItem(double length) override;

    /// Lets the key equivalents of the menu work in a window.
    void addKeyEquivalents(QWidget& window) const;

private:
    QPointer<QtStatusItem> latest;
};

} // namespace stemvault
