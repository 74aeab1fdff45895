#include "LinuxDesktop/StatusBar/StatusNotifierItem.h"

#include "LinuxDesktop/Application/ActivationToken.h"
#include "LinuxDesktop/Application/Identity.h"

#include <QDir>
#include <QFileInfo>

#include <utility>

namespace stemvault::status_bar {

StatusNotifierItem::StatusNotifierItem(QObject* node, QString menuPath)
    : QDBusAbstractAdaptor(node), pathOfMenu(std::move(menuPath))
{
    registerDBusMenuTypes();
}

void StatusNotifierItem::setImage(const std::optional<Image>& shown)
{
    image = shown;
    Q_EMIT NewIcon();
}

QString StatusNotifierItem::id() const
{
    return identity::applicationId;
}

QString StatusNotifierItem::title() const
{
    return identity::displayName;
}

// The icons for the desktop's icon theme are in a folder next to that of the symbols. Panels that
// find the icon in the theme do not use it.
QString StatusNotifierItem::iconThemePath() const
{
    if (!image)
        return {};
    const QDir symbols = QFileInfo(QString::fromStdString(image->source)).dir();
    const QString icons = QDir::cleanPath(symbols.filePath(QStringLiteral("../icons")));
    return QFileInfo::exists(icons) ? icons : QString();
}

// Panels colour template images, which they recognise by the suffix "-symbolic" of the name.
QString StatusNotifierItem::iconName() const
{
    if (!image)
        return {};
    return image->isTemplate ? identity::applicationId + QStringLiteral("-symbolic")
                             : identity::applicationId;
}

QString StatusNotifierItem::iconAccessibleDesc() const
{
    return image ? QString::fromStdString(image->accessibilityDescription) : QString();
}

DBusToolTip StatusNotifierItem::toolTip() const
{
    return { {}, {}, identity::displayName, {} };
}

void StatusNotifierItem::ContextMenu(int x, int y)
{
    Q_EMIT menuWanted(x, y);
}

void StatusNotifierItem::Activate(int x, int y)
{
    Q_EMIT menuWanted(x, y);
}

void StatusNotifierItem::SecondaryActivate(int x, int y)
{
    Q_EMIT menuWanted(x, y);
}

void StatusNotifierItem::Scroll(int /*delta*/, const QString& /*orientation*/) { }

void StatusNotifierItem::ProvideXdgActivationToken(const QString& token)
{
    application::takeActivationToken(token.toUtf8());
}

} // namespace stemvault::status_bar
