#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace stemvault {

/// What the program asks permission for; options are combined with |.
namespace AuthorizationOption {
inline constexpr std::uint32_t Sound = 0x02;
inline constexpr std::uint32_t Alert = 0x04;
} // namespace AuthorizationOption

/// How a notification is shown while the program is in front; combined with |.
namespace PresentationOption {
inline constexpr std::uint32_t Sound = 0x02;
inline constexpr std::uint32_t Banner = 0x10;
} // namespace PresentationOption

enum class UserNotificationSound { None, Default };

/// A message that needs no answer. Texts are UTF-8 and shown as they stand, never as markup.
struct UserNotification {
    std::string identifier; ///< Unique; if reused, it may replace the earlier notification.
    std::string title; ///< One line.
    std::string body;
    UserNotificationSound sound = UserNotificationSound::None;

    [[nodiscard]] bool operator==(const UserNotification&) const = default;
};

class UserNotificationCenterDelegate {
public:
    virtual ~UserNotificationCenterDelegate() = default;

    /// Called on the main thread for each notification that is due while the program is in front.
    /// The delegate calls `completionHandler` on the main thread, now or later, with presentation
    /// options: without Banner the notification is not shown, without Sound it is silent. If the
    /// delegate never calls it, the notification is not shown.
    virtual void willPresent(const UserNotification& notification,
        const std::function<void(std::uint32_t options)>& completionHandler) = 0;
};

/// The desktop's notifications.
class UserNotificationCenter {
public:
    virtual ~UserNotificationCenter() = default;

    /// Sets the delegate that decides about notifications while the program is in front; without
    /// one, all are shown. Not owned: it must outlive the center or first be replaced by null. Main
    /// thread only.
    virtual void setDelegate(UserNotificationCenterDelegate* delegate) = 0;

    /// Asks for permission and returns at once. The handler is called once on the main thread,
    /// never inside this call, with false if nothing can be shown; not at all if the program ends
    /// first. `add` may be called without asking and before the answer. Main thread only.
    virtual void requestAuthorization(
        std::uint32_t options, std::function<void(bool granted)> completionHandler) = 0;

    /// Posts a notification and returns at once. One that cannot be shown is dropped without
    /// notice to the caller. From any thread.
    virtual void add(const UserNotification& notification) = 0;
};

} // namespace stemvault
