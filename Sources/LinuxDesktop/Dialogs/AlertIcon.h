#pragma once

#include "Platform/Dialogs.h"

#include <QIcon>
#include <QWidget>

namespace stemvault {

/// The large picture at the left of an alert: an icon, with a badge where the alert warns. Drawn
/// anew for each screen, so that it is sharp on all of them.
class AlertIcon final : public QWidget {
public:
    AlertIcon(QIcon shown, AlertStyle alertStyle, int size);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QIcon icon;
    AlertStyle style;
};

} // namespace stemvault
