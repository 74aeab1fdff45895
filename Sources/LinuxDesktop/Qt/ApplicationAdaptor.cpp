#include "LinuxDesktop/Qt/ApplicationAdaptor.h"

namespace stemvault {

// The token of the click that started us is what lets a Wayland desktop put our window in front;
// the toolkit looks for it in the environment.
void ApplicationAdaptor::Activate(const QVariantMap& platformData)
{
    if (const QByteArray token = platformData.value("activation-token").toByteArray();
        !token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token);
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
