#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace stemvault {

namespace AuthorizationOption {
inline constexpr std::uint32_t Sound = 0x02;
inline constexpr std::uint32_t Alert = 0x04;
} // namespace AuthorizationOption

namespace PresentationOption {
inline constexpr std::uint32_t Sound = 0x02;
inline constexpr std::uint32_t Banner = 0x10;
} // namespace PresentationOption

enum class UserNotificationSound { None, Default };

/// A message to the user that asks nothing, shown at once. Texts are never markup.
struct UserNotification {
    std::string identifier;
    std::string title;
    std::string body;
    UserNotificationSound sound = UserNotificationSound::None;

    [[nodiscard]] bool operator==(const UserNotification&) const = default;
};

class UserNotificationCenterDelegate {
public:
    virtual ~UserNotificationCenterDelegate() = default;

    /// Asked on the main thread when a notification arrives while the program is in front. The
    /// handler takes presentation options; without Banner the notification is not shown.
    virtual void willPresent(const UserNotification& notification,
        const std::function<void(std::uint32_t options)>& completionHandler) = 0;
};

class UserNotificationCenter {
public:
    virtual ~UserNotificationCenter() = default;

    /// Not owned; null takes it back. Main thread only.
    virtual void setDelegate(UserNotificationCenterDelegate* delegate) = 0;

    /// Asks for permission; the handler is called on the main thread. Main thread only.
    virtual void requestAuthorization(
        std::uint32_t options, std::function<void(bool granted)> completionHandler) = 0;

    /// Posts a notification and returns at once; that it cannot be shown is nobody's failure. From
    /// any thread.
    virtual void add(const UserNotification& notification) = 0;
};

} // namespace stemvault
