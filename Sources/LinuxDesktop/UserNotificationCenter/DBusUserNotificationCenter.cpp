#include "LinuxDesktop/UserNotificationCenter/DBusUserNotificationCenter.h"

#include "LinuxDesktop/Application/Identity.h"
#include "LinuxDesktop/Windows/DisplayText.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QUrl>
#include <QVariantMap>

#include <utility>

namespace stemvault::notification_center {

namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
constexpr uchar normalUrgency = 1;
constexpr int serversOwnTimeout = -1; ///< How long a notification stays is the server's choice.

QDBusMessage serviceCall(const QString& method)
{
    return QDBusMessage::createMethodCall(
        service, QStringLiteral("/org/freedesktop/Notifications"), service, method);
}

QDBusMessage busCall(const QString& method)
{
    const QString name = QStringLiteral("org.freedesktop.DBus");
    return QDBusMessage::createMethodCall(
        name, QStringLiteral("/org/freedesktop/DBus"), name, method);
}

/// Calls back with the reply, an error included, for as long as `context` lives.
template <typename Reply, typename Then>
void callLater(const QDBusConnection& bus, const QDBusMessage& call, QObject* context, Then then)
{
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), context);
    QObject::connect(
        watcher, &QDBusPendingCallWatcher::finished, context, [watcher, then = std::move(then)] {
            watcher->deleteLater();
            then(Reply(*watcher));
        });
}

QVariantMap hints(const UserNotification& notification)
{
    QVariantMap hints {
        { QStringLiteral("desktop-entry"), identity::applicationId },
        { QStringLiteral("urgency"), QVariant::fromValue(normalUrgency) },
        { QStringLiteral("category"), QStringLiteral("transfer.complete") },
    };
    if (notification.sound == UserNotificationSound::None)
        hints.insert(QStringLiteral("suppress-sound"), true);
    else
        hints.insert(QStringLiteral("sound-name"), QStringLiteral("complete"));
    return hints;
}

} // namespace

DBusUserNotificationCenter::DBusUserNotificationCenter(
    Dispatch& mainDispatch, QDBusConnection sessionBus, const std::string& iconName)
    : dispatch(mainDispatch), bus(std::move(sessionBus)), icon(QString::fromStdString(iconName)),
      owner(service, bus, QDBusServiceWatcher::WatchForOwnerChange)
{
    if (icon.startsWith(u'/'))
        icon = QUrl::fromLocalFile(icon).toString(QUrl::FullyEncoded);
    connect(
        &owner, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] { capabilities.reset(); });
}

void DBusUserNotificationCenter::setDelegate(UserNotificationCenterDelegate* chosen)
{
    delegate = chosen;
}

void DBusUserNotificationCenter::requestAuthorization(
    std::uint32_t /*options*/, std::function<void(bool granted)> completionHandler)
{
    QDBusMessage isRunning = busCall(QStringLiteral("NameHasOwner"));
    isRunning << service;
    callLater<QDBusPendingReply<bool>>(bus, isRunning, this,
        [this, handler = std::move(completionHandler)](const QDBusPendingReply<bool>& running) {
            if (running.isValid() && running.value())
                return handler(true);
            callLater<QDBusPendingReply<QStringList>>(bus,
                busCall(QStringLiteral("ListActivatableNames")), this,
                [handler](const QDBusPendingReply<QStringList>& names) {
                    handler(names.isValid() && names.value().contains(service));
                });
        });
}

void DBusUserNotificationCenter::add(const UserNotification& notification)
{
    dispatch.mainAsync(alive.guard([this, notification] { present(notification); }));
}

void DBusUserNotificationCenter::present(const UserNotification& notification)
{
    if (!delegate || !QGuiApplication::focusWindow())
        return post(notification);
    delegate->willPresent(notification, alive.guard([this, notification](std::uint32_t options) {
        if (!(options & PresentationOption::Banner))
            return;
        UserNotification allowed = notification;
        if (!(options & PresentationOption::Sound))
            allowed.sound = UserNotificationSound::None;
        post(std::move(allowed));
    }));
}

void DBusUserNotificationCenter::post(UserNotification notification)
{
    if (capabilities)
        return notify(notification);
    waiting.push_back(std::move(notification));
    if (waiting.size() == 1)
        askCapabilities();
}

// Servers differ in whether a body is markup, so notifications wait for the answer. Without an
// answer there is no server, and the waiting notifications are dropped.
void DBusUserNotificationCenter::askCapabilities()
{
    callLater<QDBusPendingReply<QStringList>>(bus, serviceCall(QStringLiteral("GetCapabilities")),
        this, [this](const QDBusPendingReply<QStringList>& reply) {
            const auto ready = std::exchange(waiting, {});
            if (!reply.isValid())
                return;
            capabilities = reply.value();
            for (const UserNotification& notification : ready)
                notify(notification);
        });
}

void DBusUserNotificationCenter::notify(const UserNotification& notification) const
{
    QString body = windows::displayLines(notification.body);
    if (capabilities->contains(QLatin1String("body-markup")))
        body = body.toHtmlEscaped();
    constexpr uint replacesNone = 0;
    QDBusMessage call = serviceCall(QStringLiteral("Notify"));
    call << identity::displayName << replacesNone << icon
         << windows::displayLine(notification.title) << body << QStringList() << hints(notification)
         << serversOwnTimeout;
    bus.asyncCall(call);
}

} // namespace stemvault::notification_center
