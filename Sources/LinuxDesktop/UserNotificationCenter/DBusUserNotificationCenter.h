#pragma once

#include "Foundation/WeakGuard.h"
#include "Platform/Dispatch.h"
#include "Platform/UserNotificationCenter.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QStringList>

#include <optional>
#include <vector>

namespace stemvault::notification_center {

/// Posts through the desktop's notification service, org.freedesktop.Notifications. Never blocks on
/// the service and never retries: a notification that the service cannot show is dropped.
class DBusUserNotificationCenter final : public QObject, public UserNotificationCenter {
public:
    /// `iconName` is a name that the desktop knows, or the path of an image.
    DBusUserNotificationCenter(
        Dispatch& mainDispatch, QDBusConnection sessionBus, const std::string& iconName);

    void setDelegate(UserNotificationCenterDelegate* chosen) override;

    /// Desktops do not ask the user, so this is granted if the service runs or can be started.
    void requestAuthorization(
        std::uint32_t options, std::function<void(bool granted)> completionHandler) override;

    void add(const UserNotification& notification) override;

private:
    void present(const UserNotification& notification);
    void post(UserNotification notification);
    void askCapabilities();
    void notify(const UserNotification& notification) const;

    Dispatch& dispatch;
    QDBusConnection bus;
    QString icon;
    UserNotificationCenterDelegate* delegate = nullptr;
    QDBusServiceWatcher owner;
    std::optional<QStringList> capabilities; ///< Of the present server; absent until it answered.
    std::vector<UserNotification> waiting; ///< For the capabilities. Not empty during the request.
    WeakGuard alive;
};

} // namespace stemvault::notification_center
