#include "LinuxDesktop/StatusBar/DBusMenu.h"

#include "LinuxDesktop/StatusBar/MenuRow.h"

#include <QBuffer>
#include <QGuiApplication>

namespace stemvault::status_bar {

namespace {

constexpr int rootId = 0;

// In a label on the bus, an underscore marks a mnemonic, and two stand for one underscore.
QString escaped(QString text)
{
    return text.replace(u'_', QStringLiteral("__"));
}

// Most panels scale an icon down to the height of their text. The panels of MATE and of GNOME
// Flashback, whose code is by the same author, show it in its full size.
bool showsIconsUnscaled()
{
    const QStringList desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':');
    return desktop.contains(QLatin1String("MATE"))
        || desktop.contains(QLatin1String("GNOME-Flashback"));
}

QByteArray asPNG(const QImage& image)
{
    constexpr int heightOfText = 16;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (showsIconsUnscaled())
        image.scaledToHeight(heightOfText, Qt::SmoothTransformation).save(&buffer, "PNG");
    else
        image.save(&buffer, "PNG");
    return bytes;
}

QString keyName(const std::string& keyEquivalent)
{
    return keyEquivalent == "," ? QStringLiteral("comma") : QString::fromStdString(keyEquivalent);
}

QVariantMap properties(const MenuItem& item)
{
    if (item.isSeparator)
        return { { QStringLiteral("type"), QStringLiteral("separator") } };
    const MenuRow row = menuRow(item);
    QVariantMap map { { QStringLiteral("label"), escaped(row.text) } };
    if (row.spokenText != row.text)
        map.insert(QStringLiteral("accessible-desc"), row.spokenText);
    if (!row.icon.isNull())
        map.insert(QStringLiteral("icon-data"), asPNG(row.icon));
    if (!item.isEnabled)
        map.insert(QStringLiteral("enabled"), false);
    if (item.isHidden)
        map.insert(QStringLiteral("visible"), false);
    if (!item.keyEquivalent.empty())
        map.insert(QStringLiteral("shortcut"),
            QVariant::fromValue(
                QList<QStringList> { { QStringLiteral("Control"), keyName(item.keyEquivalent) } }));
    return map;
}

/// The named properties; all of them if no name is given.
QVariantMap selected(const QVariantMap& all, const QStringList& names)
{
    if (names.isEmpty())
        return all;
    QVariantMap some;
    for (const QString& name : names)
        if (all.contains(name))
            some.insert(name, all.value(name));
    return some;
}

QVariantMap rootProperties()
{
    return { { QStringLiteral("children-display"), QStringLiteral("submenu") } };
}

} // namespace

DBusMenu::DBusMenu(QObject* node, TrayMenu& shown) : QDBusAbstractAdaptor(node), menu(shown)
{
    registerDBusMenuTypes();
    connect(&menu, &TrayMenu::changed, this, &DBusMenu::announce);
}

QString DBusMenu::textDirection() const
{
    return QGuiApplication::isRightToLeft() ? QStringLiteral("rtl") : QStringLiteral("ltr");
}

QList<DBusMenuItem> DBusMenu::rows() const
{
    QList<DBusMenuItem> all;
    for (const MenuItem& item : menu.items())
        all.push_back({ static_cast<int>(all.size()) + 1, properties(item) });
    return all;
}

bool DBusMenu::isKnown(int id) const
{
    return id >= rootId && id <= static_cast<int>(menu.items().size());
}

// Before the first call of GetLayout, no panel has read any rows.
void DBusMenu::announce()
{
    if (announced.isEmpty())
        return;
    const QList<DBusMenuItem> now = rows();
    QList<DBusMenuItem> updated;
    QList<DBusMenuItemKeys> removed;
    for (qsizetype i = 0; i < now.size() && i < announced.size(); ++i) {
        const QVariantMap& before = announced[i].properties;
        if (now[i].properties == before)
            continue;
        updated.push_back(now[i]);
        QStringList gone;
        for (const QString& name : before.keys())
            if (!now[i].properties.contains(name))
                gone.push_back(name);
        if (!gone.isEmpty())
            removed.push_back({ now[i].id, gone });
    }
    announced = now;
    if (updated.isEmpty())
        return;
    Q_EMIT ItemsPropertiesUpdated(updated, removed);
    Q_EMIT LayoutUpdated(++revision, rootId);
}

uint DBusMenu::GetLayout(
    int parentId, int recursionDepth, const QStringList& propertyNames, DBusMenuLayout& layout)
{
    menu.update();
    const QList<DBusMenuItem> all = rows();
    announced = all;
    layout.id = parentId;
    if (parentId != rootId) {
        if (isKnown(parentId))
            layout.properties = selected(all[parentId - 1].properties, propertyNames);
        return revision;
    }
    layout.properties = selected(rootProperties(), propertyNames);
    if (recursionDepth != 0)
        for (const DBusMenuItem& row : all)
            layout.children.push_back({ row.id, selected(row.properties, propertyNames), {} });
    return revision;
}

QList<DBusMenuItem> DBusMenu::GetGroupProperties(
    const QList<int>& ids, const QStringList& propertyNames)
{
    QList<DBusMenuItem> found;
    for (const DBusMenuItem& row : rows())
        if (ids.isEmpty() || ids.contains(row.id))
            found.push_back({ row.id, selected(row.properties, propertyNames) });
    if (ids.isEmpty() || ids.contains(rootId))
        found.prepend({ rootId, selected(rootProperties(), propertyNames) });
    return found;
}

QDBusVariant DBusMenu::GetProperty(int id, const QString& name)
{
    for (const DBusMenuItem& item : GetGroupProperties({ id }, { name }))
        if (item.properties.contains(name))
            return QDBusVariant(item.properties.value(name));
    return QDBusVariant(QString());
}

void DBusMenu::Event(int id, const QString& type, const QDBusVariant& /*data*/, uint /*timestamp*/)
{
    if (type == QLatin1String("clicked") && id > rootId)
        menu.choose(static_cast<std::size_t>(id - 1));
    else if (id == rootId && (type == QLatin1String("opened") || type == QLatin1String("closed")))
        menu.setOpen(type == QLatin1String("opened"));
}

QList<int> DBusMenu::EventGroup(const QList<DBusMenuEvent>& events)
{
    QList<int> unknown;
    for (const DBusMenuEvent& event : events) {
        if (isKnown(event.id))
            Event(event.id, event.type, event.data, event.timestamp);
        else
            unknown.push_back(event.id);
    }
    return unknown;
}

bool DBusMenu::AboutToShow(int id)
{
    return id == rootId && menu.update();
}

QList<int> DBusMenu::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors)
{
    QList<int> updated;
    for (const int id : ids) {
        if (!isKnown(id))
            idErrors.push_back(id);
        else if (AboutToShow(id))
            updated.push_back(id);
    }
    return updated;
}

} // namespace stemvault::status_bar
