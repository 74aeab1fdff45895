#pragma once

#include "Platform/Dialogs.h"

#include <QIcon>
#include <QWidget>

namespace stemvault::dialogs {

/// The large picture at the left of an alert: an icon, with a badge unless the alert is
/// informational. It is drawn from the icon at each painting, so that it is sharp on every screen.
class AlertIcon final : public QWidget {
public:
    AlertIcon(QIcon shown, AlertStyle alertStyle, int size);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QIcon icon;
    AlertStyle style;
};

} // namespace stemvault::dialogs
