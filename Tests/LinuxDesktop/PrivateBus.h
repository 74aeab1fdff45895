#pragma once

#include "Support/TemporaryFolder.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>

#include <functional>

namespace stemvault {

/// A session bus of the test's own on which no service can be started.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();

    /// Another client of the bus each time.
    QDBusConnection connect();

private:
    TemporaryFolder folder;
    QProcess daemon;
    QString address;
    QStringList clients;
};

/// Every call to the path it is registered at comes to one function.
struct BusObject : QDBusVirtualObject {
    std::function<bool(const QDBusMessage&, const QDBusConnection&)> handle;

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override
    {
        return handle(call, bus);
    }
    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
};

} // namespace stemvault
