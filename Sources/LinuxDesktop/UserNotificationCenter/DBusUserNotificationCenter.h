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

namespace stemvault {

/// Posts by the desktop's notification service, org.freedesktop.Notifications. Nothing waits for
/// the service, and nothing is tried twice: what it cannot show is not shown.
class DBusUserNotificationCenter final : public QObject, public UserNotificationCenter {
public:
    /// `iconName` is a name that the desktop knows, or the path of an image.
    DBusUserNotificationCenter(
        Dispatch& mainDispatch, QDBusConnection sessionBus, const std::string& iconName);

    void setDelegate(UserNotificationCenterDelegate* chosen) override;

    /// The desktop asks nobody: granted where the service is running or can be started.
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
    std::optional<QStringList> capabilities; ///< Of the server that runs now, once it was asked.
    std::vector<UserNotification> waiting; ///< For the capabilities. Not empty while asking.
    WeakGuard alive;
};

} // namespace stemvault
