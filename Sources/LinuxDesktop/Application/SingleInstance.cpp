#include "LinuxDesktop/Application/SingleInstance.h"

#include "LinuxDesktop/Application/ApplicationAdaptor.h"
#include "LinuxDesktop/Application/Identity.h"

#include <QDBusMessage>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace stemvault::application {

namespace {

constexpr int activationTimeout = 5000; ///< Milliseconds to wait for the running instance's answer.

QVariantMap platformData()
{
    QVariantMap data;
    for (const auto& [key, variable] : { std::pair("desktop-startup-id", "DESKTOP_STARTUP_ID"),
             std::pair("activation-token", "XDG_ACTIVATION_TOKEN") })
        if (const QString value = qEnvironmentVariable(variable); !value.isEmpty())
            data.insert(QLatin1String(key), value);
    return data;
}

bool activateOther(QDBusConnection& bus)
{
    auto call = QDBusMessage::createMethodCall(identity::applicationId, identity::objectPath,
        QStringLiteral("org.freedesktop.Application"), QStringLiteral("Activate"));
    call << platformData();
    call.setAutoStartService(false);
    return bus.call(call, QDBus::Block, activationTimeout).type() == QDBusMessage::ReplyMessage;
}

bool isOurs(int descriptor)
{
    struct stat status { };
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)
        && status.st_uid == ::geteuid();
}

} // namespace

SingleInstance::SingleInstance(QDBusConnection sessionBus)
    : bus(std::move(sessionBus)), node(std::make_unique<QObject>()),
      adaptor(*new ApplicationAdaptor(node.get()))
{
}

SingleInstance::~SingleInstance() = default;

// Registers the object before the name, so that a program that sees the name gets an answer.
SingleInstance::Claim SingleInstance::claim()
{
    if (!bus.isConnected())
        return claimLock();
    bus.registerObject(identity::objectPath, node.get());
    if (bus.registerService(identity::applicationId))
        return Claim::Granted;
    return activateOther(bus) ? Claim::OtherInstance : Claim::ForeignProgram;
}

void SingleInstance::release()
{
    bus.unregisterService(identity::applicationId);
    lock = FileDescriptor();
}

void SingleInstance::onActivate(std::function<void()> work)
{
    adaptor.onActivate = std::move(work);
}

// Without a runtime folder there is no session in which another instance could run. A lock file of
// another user, or behind a link that another user made, proves nothing and is ignored.
SingleInstance::Claim SingleInstance::claimLock()
{
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
    if (folder.isEmpty())
        return Claim::Granted;
    const QByteArray path = folder + "/stemvault-connect.lock";
    lock =
        FileDescriptor(::open(path.constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    const bool isAlone =
        !lock.isOpen() || !isOurs(lock.get()) || ::flock(lock.get(), LOCK_EX | LOCK_NB) == 0;
    return isAlone ? Claim::Granted : Claim::OtherInstance;
}

} // namespace stemvault::application
