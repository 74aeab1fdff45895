#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>

#include <deque>

namespace stemvault {

class ServicesProvider;

/// The program's services on the session bus, where the entries in the file managers ask for them.
/// Main thread only.
class DBusServices final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "net.stemvault.Connect.Services1")
public:
    /// On the bus from now on. Calls that come before there is a provider wait for it.
    explicit DBusServices(QDBusConnection sessionBus);

    /// Not owned.
    void setProvider(ServicesProvider* chosen);

    /// Performs the service of this message name on a selection of file URIs; what is no file of
    /// this machine is passed over. The reply, an error text for the user or nothing, comes when
    /// the service is done. Other calls are taken meanwhile.
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

} // namespace stemvault
