#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>

#include <deque>

namespace stemvault {
class ServicesProvider;
}

namespace stemvault::application {

/// The program's services on the session bus, which the menu entries in file managers call.
/// Main thread only.
class DBusServices final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "net.stemvault.Connect.Services1")
public:
    /// Registers the services on the bus. Calls wait until a provider is set.
    explicit DBusServices(QDBusConnection sessionBus);

    /// Does not take ownership.
    void setProvider(ServicesProvider* chosen);

    /// Performs the service of this message name on a selection of file URIs. URIs that are not
    /// files on this machine are ignored. The reply, an error text for the user or an empty text,
    /// is sent when the service is done. Other calls are handled meanwhile.
    Q_SLOT Q_SCRIPTABLE QString Perform(const QString& service, const QStringList& uris);

private:
    void performNextLater();
    void performNext();
    [[nodiscard]] QDBusMessage perform(const QDBusMessage& call);

    QDBusConnection bus;
    ServicesProvider* provider = nullptr;
    std::deque<QDBusMessage> waiting;
    int underWay = 0;
};

} // namespace stemvault::application
