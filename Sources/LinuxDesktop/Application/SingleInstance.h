#pragma once

#include "Foundation/FileDescriptor.h"

#include <QDBusConnection>

#include <functional>
#include <memory>

class QObject;

namespace stemvault::application {

class ApplicationAdaptor;

/// Ensures that the program runs only once in a session, by its name on the session bus or, without
/// a bus, by a lock file in the user's runtime folder.
class SingleInstance {
public:
    explicit SingleInstance(QDBusConnection sessionBus);
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;
    ~SingleInstance();

    enum class Claim {
        Granted,
        OtherInstance, ///< Already runs; has been activated if there is a bus. This one must end.
        ForeignProgram, ///< Owns the name, but does not answer as an instance would.
    };

    [[nodiscard]] Claim claim();

    /// Releases the name and the lock. Starting the program after that creates a new instance.
    void release();

    /// Sets the function to call on the main thread when the user starts the program again.
    void onActivate(std::function<void()> work);

private:
    [[nodiscard]] Claim claimLock();

    QDBusConnection bus;
    std::unique_ptr<QObject> node;
    ApplicationAdaptor& adaptor;
    FileDescriptor lock;
};

} // namespace stemvault::application
