#include "LinuxDesktop/StatusBar/DBusMenuTypes.h"

#include <QDBusMetaType>

#include <concepts>

namespace stemvault::status_bar {

namespace {

template <typename... Members>
QDBusArgument& put(QDBusArgument& argument, const Members&... members)
{
    argument.beginStructure();
    (argument << ... << members);
    argument.endStructure();
    return argument;
}

template <typename... Members>
const QDBusArgument& take(const QDBusArgument& argument, Members&... members)
{
    argument.beginStructure();
    (argument >> ... >> members);
    argument.endStructure();
    return argument;
}

/// A type that the program sends but never receives.
template <typename Type>
concept Sent =
    std::same_as<Type, DBusMenuItem> || std::same_as<Type, DBusMenuItemKeys> || std::same_as<Type,
        DBusMenuLayout> || std::same_as<Type, DBusPixmap> || std::same_as<Type, DBusToolTip>;

} // namespace

// The library registers a type only if it can also be received.
template <Sent Type>
static const QDBusArgument& operator>>(const QDBusArgument& argument, Type& /*unused*/)
{
    return argument;
}

static QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuItem& item)
{
    return put(argument, item.id, item.properties);
}

static QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuItemKeys& keys)
{
    return put(argument, keys.id, keys.properties);
}

// The children are sent as variants, because D-Bus has no signature for a recursive type.
static QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuLayout& layout)
{
    argument.beginStructure();
    argument << layout.id << layout.properties;
    argument.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const DBusMenuLayout& child : layout.children)
        argument << QDBusVariant(QVariant::fromValue(child));
    argument.endArray();
    argument.endStructure();
    return argument;
}

static QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuEvent& event)
{
    return put(argument, event.id, event.type, event.data, event.timestamp);
}

static const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuEvent& event)
{
    return take(argument, event.id, event.type, event.data, event.timestamp);
}

static QDBusArgument& operator<<(QDBusArgument& argument, const DBusPixmap& pixmap)
{
    return put(argument, pixmap.width, pixmap.height, pixmap.pixels);
}

static QDBusArgument& operator<<(QDBusArgument& argument, const DBusToolTip& toolTip)
{
    return put(argument, toolTip.icon, toolTip.pixmaps, toolTip.title, toolTip.text);
}

void registerDBusMenuTypes()
{
    qDBusRegisterMetaType<DBusMenuItem>();
    qDBusRegisterMetaType<QList<DBusMenuItem>>();
    qDBusRegisterMetaType<DBusMenuItemKeys>();
    qDBusRegisterMetaType<QList<DBusMenuItemKeys>>();
    qDBusRegisterMetaType<DBusMenuLayout>();
    qDBusRegisterMetaType<DBusMenuEvent>();
    qDBusRegisterMetaType<QList<DBusMenuEvent>>();
    qDBusRegisterMetaType<DBusPixmap>();
    qDBusRegisterMetaType<QList<DBusPixmap>>();
    qDBusRegisterMetaType<DBusToolTip>();
    qDBusRegisterMetaType<QList<QStringList>>();
    qDBusRegisterMetaType<QList<int>>();
}

} // namespace stemvault::status_bar
