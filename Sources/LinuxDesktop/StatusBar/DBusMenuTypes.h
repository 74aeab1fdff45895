#pragma once

#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QStringList>
#include <QVariantMap>

namespace stemvault::status_bar {

// The types that com.canonical.dbusmenu and org.kde.StatusNotifierItem use on the bus.

struct DBusMenuItem { // (ia{sv})
    int id = 0;
    QVariantMap properties;
};

struct DBusMenuItemKeys { // (ias)
    int id = 0;
    QStringList properties;
};

struct DBusMenuLayout { // (ia{sv}av)
    int id = 0;
    QVariantMap properties;
    QList<DBusMenuLayout> children;
};

struct DBusMenuEvent { // (isvu)
    int id = 0;
    QString type;
    QDBusVariant data;
    uint timestamp = 0;
};

struct DBusPixmap { // (iiay)
    int width = 0;
    int height = 0;
    QByteArray pixels;
};

struct DBusToolTip { // (sa(iiay)ss)
    QString icon;
    QList<DBusPixmap> pixmaps;
    QString title;
    QString text;
};

/// Registers the types with the D-Bus library. May be called several times.
void registerDBusMenuTypes();

} // namespace stemvault::status_bar

Q_DECLARE_METATYPE(stemvault::status_bar::DBusMenuItem)
Q_DECLARE_METATYPE(stemvault::status_bar::DBusMenuItemKeys)
Q_DECLARE_METATYPE(stemvault::status_bar::DBusMenuLayout)
Q_DECLARE_METATYPE(stemvault::status_bar::DBusMenuEvent)
Q_DECLARE_METATYPE(stemvault::status_bar::DBusPixmap)
Q_DECLARE_METATYPE(stemvault::status_bar::DBusToolTip)
