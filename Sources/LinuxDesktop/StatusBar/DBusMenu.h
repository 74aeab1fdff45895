#pragma once

#include "LinuxDesktop/StatusBar/DBusMenuTypes.h"
#include "LinuxDesktop/StatusBar/TrayMenu.h"

#include <QDBusAbstractAdaptor>

namespace stemvault {

/// The menu on the bus, as panels in other processes show it. They read the rows when they like, at
/// the latest when the menu opens; some announce that by AboutToShow, some by the event "opened".
/// Each of these brings the rows up to date, and whoever has read other ones is told.
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
        stemvault::DBusMenuLayout& layout);
    QList<stemvault::DBusMenuItem> GetGroupProperties(
        const QList<int>& ids, const QStringList& propertyNames);
    QDBusVariant GetProperty(int id, const QString& name);
    void Event(int id, const QString& type, const QDBusVariant& data, uint timestamp);
    QList<int> EventGroup(const QList<stemvault::DBusMenuEvent>& events);
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

Q_SIGNALS:
    void ItemsPropertiesUpdated(const QList<stemvault::DBusMenuItem>& updated,
        const QList<stemvault::DBusMenuItemKeys>& removed);
    void LayoutUpdated(uint revision, int parent);
    void ItemActivationRequested(int id, uint timestamp);

private:
    [[nodiscard]] QList<DBusMenuItem> rows() const;
    [[nodiscard]] bool isKnown(int id) const;
    void announce();

    TrayMenu& menu;
    QList<DBusMenuItem> announced; ///< The rows as their readers know them.
    uint revision = 1;
};

} // namespace stemvault
