#include "LinuxDesktop/StatusBar/TrayHost.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

namespace stemvault::status_bar {

namespace {

const QString service = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString path = QStringLiteral("/StatusNotifierWatcher");

} // namespace

// Registers the item by its object path, so the connection serves as its bus name. Every panel's
// watcher accepts a path as well as a bus name, but GNOME's looks up the owner of a name, and
// sometimes loses an item by doing so too early. The signal matches name no service, because the
// toolkit would then block to look up the service's owner.
TrayHost::TrayHost(QDBusConnection connection, QString itemPath)
    : bus(std::move(connection)), item(std::move(itemPath))
{
    watcher.setConnection(bus);
    watcher.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    watcher.addWatchedService(service);
    connect(&watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString&, const QString&, const QString& owner) {
            if (owner.isEmpty())
                ask();
            else
                registerItem();
        });
    for (const char* signal : { "StatusNotifierHostRegistered", "StatusNotifierHostUnregistered" })
        bus.connect(QString(), path, service, QLatin1String(signal), this, SLOT(ask()));
    registerItem();
}

QDBusMessage TrayHost::call(const QString& interface, const QString& method)
{
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setAutoStartService(false);
    return message;
}

void TrayHost::registerItem()
{
    auto message = call(service, QStringLiteral("RegisterStatusNotifierItem"));
    message << item;
    message.setDelayedReply(false);
    bus.asyncCall(message);
    ask();
}

void TrayHost::ask()
{
    ask(Answer::Tentative);
}

// While the program starts, a "no" may be outdated when it is read, because a panel may have come
// meanwhile. So the watcher is asked again: if the older kind of icon were created then, the
// toolkit, which checks for a panel itself, would create a second item on the bus.
void TrayHost::ask(Answer whenAbsent)
{
    auto message = call(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    message << service << QStringLiteral("IsStatusNotifierHostRegistered");
    auto* pending = new QDBusPendingCallWatcher(bus.asyncCall(message), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending, whenAbsent] {
        pending->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *pending;
        const bool there = reply.isValid() && reply.value().variant().toBool();
        if (there || whenAbsent == Answer::Final)
            set(there);
        else
            ask(Answer::Final);
    });
}

void TrayHost::set(bool there)
{
    if (std::exchange(isKnown, true) && there == isShown)
        return;
    isShown = there;
    Q_EMIT isThere(there);
}

} // namespace stemvault::status_bar
