#pragma once

#include "Support/TemporaryFolder.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>

#include <functional>

namespace stemvault {

/// A private session bus, which cannot start services.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();

    /// Returns a new connection to the bus each time.
    QDBusConnection connect();

private:
    TemporaryFolder folder;
    QProcess daemon;
    QString address;
    QStringList clients;
};

/// Passes every call to the path where it is registered to one function.
struct BusObject : QDBusVirtualObject {
    std::function<bool(const QDBusMessage&, const QDBusConnection&)> handle;

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override
    {
        return handle(call, bus);
    }
    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
};

} // namespace stemvault
