#pragma once

#include "Foundation/FileDescriptor.h"

#include <QDBusConnection>

#include <functional>
#include <memory>

class QObject;

namespace stemvault {

class ApplicationAdaptor;

/// Sees to it that a user runs the program once in a session: by the program's name on the session
/// bus, or without a bus, by a lock in the user's runtime folder.
class SingleInstance {
public:
    explicit SingleInstance(QDBusConnection sessionBus);
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;
    ~SingleInstance();

    enum class Claim {
        Granted,
        OtherInstance, ///< Has the name, and has been told. This one is to end.
        ForeignProgram, ///< Has the name, and does not answer as an instance would.
    };

    [[nodiscard]] Claim claim();

    /// Lets go of the name: who starts the program from now on gets a new one.
    void release();

    /// Called on the main thread when the user starts the program once more.
    void onActivate(std::function<void()> work);

private:
    [[nodiscard]] Claim claimLock();

    QDBusConnection bus;
    std::unique_ptr<QObject> node;
    ApplicationAdaptor& adaptor;
    FileDescriptor lock;
};

} // namespace stemvault
