#include "LinuxDesktop/Application/ApplicationIcon.h"

#include "LinuxDesktop/Bundle/LinuxBundle.h"

#include <QApplication>

#include <utility>

namespace stemvault::application {

void ApplicationIcon::setImage(const Image& chosen)
{
    unread = chosen;
}

QIcon ApplicationIcon::icon()
{
    if (const auto image = std::exchange(unread, std::nullopt))
        QApplication::setWindowIcon(bundle::iconFromImage(*image));
    return QApplication::windowIcon();
}

} // namespace stemvault::application
