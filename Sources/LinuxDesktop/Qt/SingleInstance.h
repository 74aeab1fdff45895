#pragma once

#include "Foundation/FileDescriptor.h"

#include <functional>
#include <memory>
#include <string>

class QObject;

namespace stemvault {

/// Sees to it that a user runs the program once in a session: by the program's name on the session
/// bus, or without a bus, by a lock in the user's runtime folder.
class SingleInstance {
public:
    /// `activate` is called on the main thread when the user starts the program once more.
    explicit SingleInstance(std::function<void()> activate);
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;
    ~SingleInstance();

    /// Claims the name. False when another instance has it: that one has then been told, and this
    /// one is to end.
    [[nodiscard]] bool claim();

private:
    [[nodiscard]] bool claimLock();

    std::unique_ptr<QObject> node;
    FileDescriptor lock;
};

} // namespace stemvault
