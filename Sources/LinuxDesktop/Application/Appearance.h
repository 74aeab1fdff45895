#pragma once

#include "LinuxDesktop/Application/DesktopTheme.h"

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QPalette>

namespace stemvault {

/// Has the windows light or dark as the rest of the desktop, and follows its
/// changes: the settings portal, Plasma's colours, or else the theme of GTK's
/// windows. What the toolkit itself finds out at the start stands until one of
/// them says otherwise. Asks the portal without waiting.
class Appearance final : public QObject {
    Q_OBJECT
public:
    explicit Appearance(QDBusConnection sessionBus);

private:
    Q_SLOT void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);
    Q_SLOT void plasmaChanged(int what, int detail);
    void askPortal();
    void take(const QVariant& value);
    void apply();
    static void use(const QPalette& palette);

    QDBusConnection bus;
    DesktopTheme theme;
    const QPalette toolkitsOwn;
    uint preference = 0; ///< What the portal or Plasma says; 0 for nothing.
    bool hasBeenDark = false;
};

} // namespace stemvault
