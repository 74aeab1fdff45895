#include "LinuxDesktop/Qt/ApplicationAdaptor.h"

#include "LinuxDesktop/Qt/WindowActivation.h"

namespace stemvault {

void ApplicationAdaptor::Activate(const QVariantMap& platformData)
{
    takeActivationToken(platformData.value("activation-token").toByteArray());
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

} // namespace stemvault
