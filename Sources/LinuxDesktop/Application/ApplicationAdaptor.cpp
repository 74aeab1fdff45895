#include "LinuxDesktop/Application/ApplicationAdaptor.h"

#include "LinuxDesktop/Application/ActivationToken.h"

namespace stemvault::application {

// Launchers that support both kinds of token send the same token as both.
void ApplicationAdaptor::Activate(const QVariantMap& platformData)
{
    const QByteArray token = platformData.value("activation-token").toByteArray();
    takeActivationToken(
        token.isEmpty() ? platformData.value("desktop-startup-id").toByteArray() : token);
    if (onActivate)
        onActivate();
}

void ApplicationAdaptor::Open(const QStringList& /*uris*/, const QVariantMap& platformData)
{
    Activate(platformData);
}

void ApplicationAdaptor::ActivateAction(
    const QString& /*name*/, const QVariantList& /*parameter*/, const QVariantMap& platformData)
{
    Activate(platformData);
}

} // namespace stemvault::application
