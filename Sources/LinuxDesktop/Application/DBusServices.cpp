#include "LinuxDesktop/Application/DBusServices.h"

#include "Foundation/FileURI.h"
#include "LinuxDesktop/Application/Identity.h"
#include "Platform/Application.h"

#include <QDBusError>

#include <utility>

namespace stemvault::application {

namespace {

// A service that asks the user something runs inside the event loop of the previous one, so the
// nesting must be limited. Users do not answer this many questions at once; further calls wait.
constexpr int maxUnderWay = 8;

Pasteboard pasteboardOf(const QStringList& uris)
{
    std::vector<std::string> paths;
    for (const QString& uri : uris)
        if (auto path = pathOfFileURI(uri.toStdString()))
            paths.push_back(std::move(*path));
    return paths.empty() ? Pasteboard {} : Pasteboard { std::move(paths) };
}

} // namespace

DBusServices::DBusServices(QDBusConnection sessionBus) : bus(std::move(sessionBus))
{
    bus.registerObject(identity::servicesPath, this, QDBusConnection::ExportScriptableSlots);
}

void DBusServices::setProvider(ServicesProvider* chosen)
{
    provider = chosen;
    performNextLater();
}

QString DBusServices::Perform(const QString& /*service*/, const QStringList& /*uris*/)
{
    setDelayedReply(true);
    waiting.push_back(message());
    performNextLater();
    return {};
}

void DBusServices::performNextLater()
{
    QMetaObject::invokeMethod(this, &DBusServices::performNext, Qt::QueuedConnection);
}

void DBusServices::performNext()
{
    if (!provider || waiting.empty() || underWay == maxUnderWay)
        return;
    const QDBusMessage call = waiting.front();
    waiting.pop_front();
    performNextLater();
    ++underWay;
    bus.send(perform(call));
    --underWay;
    performNextLater();
}

QDBusMessage DBusServices::perform(const QDBusMessage& call)
{
    const QString service = call.arguments().at(0).toString();
    const Pasteboard pasteboard = pasteboardOf(call.arguments().at(1).toStringList());
    std::string error;
    if (!provider->perform(service.toStdString(), pasteboard, {}, error))
        return call.createErrorReply(
            QDBusError::InvalidArgs, QStringLiteral("There is no service of that name."));
    return call.createReply(QString::fromStdString(error));
}

} // namespace stemvault::application
