#include "LinuxDesktop/Workspace/UnitSignals.h"

#include <QDBusMessage>

#include <utility>

namespace stemvault::workspace {

namespace {

const QString service = QStringLiteral("org.freedesktop.systemd1");
const QString path = QStringLiteral("/org/freedesktop/systemd1");
const QString manager = QStringLiteral("org.freedesktop.systemd1.Manager");

} // namespace

UnitSignals::UnitSignals(QDBusConnection bus, std::function<void()> onChange)
    : changed(std::move(onChange))
{
    // The matches name no sender, because Qt would then block to look up the sender on the bus.
    for (const char* signal : { "UnitNew", "UnitRemoved" })
        bus.connect(QString(), path, manager, QString::fromLatin1(signal), this,
            SLOT(unitChanged(QString)));
    // The manager sends no signals until a client subscribes. The reply is empty, so it is ignored.
    auto subscribe =
        QDBusMessage::createMethodCall(service, path, manager, QStringLiteral("Subscribe"));
    subscribe.setAutoStartService(false);
    bus.send(subscribe);
}

void UnitSignals::unitChanged(const QString& unit)
{
    if (unit.startsWith(QLatin1String("app-"))
        && (unit.endsWith(QLatin1String(".scope")) || unit.endsWith(QLatin1String(".service"))))
        changed();
}

} // namespace stemvault::workspace
