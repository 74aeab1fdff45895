#pragma once

#include "LinuxDesktop/StatusBar/DBusMenuTypes.h"
#include "LinuxDesktop/StatusBar/TrayMenu.h"

#include <QDBusAbstractAdaptor>

namespace stemvault::status_bar {

/// The menu on the bus, for panels in other processes. They may read the rows at any time, at the
/// latest when the menu opens, which some announce by AboutToShow and others by the event "opened".
/// Each of these calls updates the rows and signals the changes to panels that have read them.
class DBusMenu final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(QString TextDirection READ textDirection)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath)
public:
    /// `node` is the object on the bus. `menu` must outlive it.
    DBusMenu(QObject* node, TrayMenu& menu);

    [[nodiscard]] uint version() const { return 3; }
    [[nodiscard]] QString textDirection() const;
    [[nodiscard]] QString status() const { return QStringLiteral("normal"); }
    [[nodiscard]] QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
    uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
        stemvault::status_bar::DBusMenuLayout& layout);
    QList<stemvault::status_bar::DBusMenuItem> GetGroupProperties(
        const QList<int>& ids, const QStringList& propertyNames);
    QDBusVariant GetProperty(int id, const QString& name);
    void Event(int id, const QString& type, const QDBusVariant& data, uint timestamp);
    QList<int> EventGroup(const QList<stemvault::status_bar::DBusMenuEvent>& events);
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

Q_SIGNALS:
    void ItemsPropertiesUpdated(const QList<stemvault::status_bar::DBusMenuItem>& updated,
        const QList<stemvault::status_bar::DBusMenuItemKeys>& removed);
    void LayoutUpdated(uint revision, int parent);
    void ItemActivationRequested(int id, uint timestamp);

private:
    [[nodiscard]] QList<DBusMenuItem> rows() const;
    [[nodiscard]] bool isKnown(int id) const;
    void announce();

    TrayMenu& menu;
    QList<DBusMenuItem> announced; ///< The rows as last read or signalled.
    uint revision = 1;
};

} // namespace stemvault::status_bar
