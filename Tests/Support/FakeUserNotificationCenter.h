#pragma once

#include "Platform/UserNotificationCenter.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace stemvault {

struct FakeUserNotificationCenter : UserNotificationCenter {
    explicit FakeUserNotificationCenter(Dispatch& queues) : dispatch(queues) { }
    void setDelegate(UserNotificationCenterDelegate* newDelegate) override
    {
        delegate = newDelegate;
    }
    void requestAuthorization(
        std::uint32_t options, std::function<void(bool)> completionHandler) override
    {
        requestedOptions = options;
        dispatch.mainAsync([answer = std::move(completionHandler)] { answer(true); });
    }
    void add(const UserNotification& notification) override;

    // What a test may look at and do.
    [[nodiscard]] std::vector<std::string> bodies() const
    {
        std::vector<std::string> all;
        for (const UserNotification& notification : posted)
            all.push_back(notification.body);
        return all;
    }

    UserNotificationCenterDelegate* delegate = nullptr;
    std::optional<std::uint32_t> requestedOptions;
    std::vector<UserNotification> posted; ///< As shown, after the delegate's decision.
    bool isInFront = false; ///< If the program is in front, the delegate decides.

private:
    Dispatch& dispatch;
};

} // namespace stemvault
