#pragma once

#include "LinuxDesktop/Application/DesktopTheme.h"

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QPalette>

namespace stemvault::application {

/// Makes the windows light or dark like the rest of the desktop and follows
/// changes, using the settings portal, Plasma's colours, or else the GTK theme.
/// The palette that the toolkit chooses at the start is kept until one of them
/// differs. Asks the portal without blocking.
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
    const QPalette initialPalette;
    uint preference = 0; ///< The preference that the portal or Plasma announced; 0 for none.
    bool hasBeenDark = false;
};

} // namespace stemvault::application
