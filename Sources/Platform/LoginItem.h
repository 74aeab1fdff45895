#pragma once

#include "Foundation/Result.h"

namespace stemvault {

enum class LoginItemStatus {
    NotRegistered = 0, ///< The program is not started at login, or the user switched that off.
    Enabled = 1,
    RequiresApproval = 2, ///< Registered, but the user must allow it in the desktop's settings.
    NotFound = 3, ///< The desktop cannot start programs at login.
};

/// Whether the desktop starts the program when the user logs in. Main thread only. Every method
/// reads or writes one small file in the user's configuration.
class LoginItem {
public:
    virtual ~LoginItem() = default;

    /// The status at this moment: nothing is cached, since the user may also change it in the
    /// desktop's own settings. Only `Enabled` means that the program will be started.
    [[nodiscard]] virtual LoginItemStatus status() const = 0;

    /// Has the program started at login, from where it runs now. Calling it while registered is a
    /// success and useful: it enables an entry that the desktop has switched off, and corrects the
    /// path of a program that was moved. On failure the status is as before, and the error says
    /// why.
    virtual Result<void> registerItem() = 0;

    /// Has it no longer started. Calling it while not registered is a success, since the result is
    /// what was asked for. On failure the status is as before, and the error says why.
    virtual Result<void> unregisterItem() = 0;
};

} // namespace stemvault
