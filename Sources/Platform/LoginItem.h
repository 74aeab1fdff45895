#pragma once

#include "Foundation/Result.h"

namespace stemvault {

enum class LoginItemStatus {
    NotRegistered = 0, ///< The program is not started at login, or the user has disabled that.
    Enabled = 1,
    RequiresApproval = 2, ///< Registered, but the user must allow it in the desktop's settings.
    NotFound = 3, ///< The desktop cannot start programs at login.
};

/// Whether the desktop starts the program when the user logs in. Main thread only. Every method
/// reads or writes one small file in the user's configuration.
class LoginItem {
public:
    virtual ~LoginItem() = default;

    /// The current status. It is never cached, because the user may also change it in the desktop's
    /// own settings. Only `Enabled` means that the program will be started.
    [[nodiscard]] virtual LoginItemStatus status() const = 0;

    /// Makes the desktop start the program at login, from its current path. Calling it while
    /// registered succeeds and is useful: it enables an entry that was disabled in the desktop's
    /// settings, and corrects the path of a program that was moved. On failure the status is
    /// unchanged, and the error says why.
    virtual Result<void> registerItem() = 0;

    /// Stops the desktop from starting the program at login. Calling it while not registered
    /// succeeds. On failure the status is unchanged, and the error says why.
    virtual Result<void> unregisterItem() = 0;
};

} // namespace stemvault
