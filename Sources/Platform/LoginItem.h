#pragma once

#include "Foundation/Result.h"

namespace stemvault {

enum class LoginItemStatus {
    NotRegistered = 0,
    Enabled = 1,
    RequiresApproval = 2,
    NotFound = 3,
};

/// Whether the desktop starts the program when the user logs in. Main thread only.
class LoginItem {
public:
    virtual ~LoginItem() = default;

    /// As the desktop has it now; the user may change it there as well.
    [[nodiscard]] virtual LoginItemStatus status() const = 0;

    virtual Result<void> registerItem() = 0;
    virtual Result<void> unregisterItem() = 0;
};

} // namespace stemvault
