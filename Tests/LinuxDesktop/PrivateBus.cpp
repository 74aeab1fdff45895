#include "LinuxDesktop/PrivateBus.h"

#include <gtest/gtest.h>

namespace stemvault {

PrivateBus::PrivateBus()
{
    const std::string config = folder.write("bus.conf",
        "<busconfig><type>session</type><listen>unix:dir=" + folder.path()
            + "</listen><policy context='default'><allow send_destination='*' eavesdrop='true'/>"
              "<allow eavesdrop='true'/><allow own='*'/></policy></busconfig>");
    daemon.start("dbus-daemon",
        { "--config-file=" + QString::fromStdString(config), "--nofork", "--print-address" });
    EXPECT_TRUE(daemon.waitForReadyRead(10'000)) << "the bus did not start";
    address = QString::fromUtf8(daemon.readAllStandardOutput()).trimmed();
}

PrivateBus::~PrivateBus()
{
    for (const QString& client : clients)
        QDBusConnection::disconnectFromBus(client);
    daemon.kill();
    daemon.waitForFinished();
}

QDBusConnection PrivateBus::connect()
{
    clients << QStringLiteral("client %1 of %2").arg(clients.size()).arg(address);
    return QDBusConnection::connectToBus(address, clients.back());
}

} // namespace stemvault
