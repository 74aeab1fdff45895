#include "LinuxDesktop/StatusBar/TrayHost.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

namespace stemvault {

namespace {

const QString service = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString path = QStringLiteral("/StatusNotifierWatcher");

} // namespace

// The item goes by its object path, which makes the connection its service. Every panel's watcher
// takes a path as well as a bus name; GNOME's looks up the owner of a name, and loses an item now
// and then when it asks too early. The matches name no service, as the toolkit would wait for that
// service's owner.
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

// While the program starts, a "no" may be old by the time that it is read, and a panel may have
// come meanwhile. The older kind of icon must not be made then: the toolkit, which asks for a panel
// itself, would make a second item.
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

} // namespace stemvault
