#pragma once

#include "LinuxDesktop/StatusBar/DBusMenuTypes.h"
#include "Platform/Image.h"

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>

#include <optional>

namespace stemvault::status_bar {

/// The status item on the bus, for panels in other processes. The icon is passed by name, so that a
/// panel can colour it for its own background.
class StatusNotifierItem final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(int WindowId READ windowId)
    Q_PROPERTY(QString IconThemePath READ iconThemePath)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(QString IconAccessibleDesc READ iconAccessibleDesc)
    Q_PROPERTY(QList<stemvault::status_bar::DBusPixmap> IconPixmap READ noPixmap)
    Q_PROPERTY(QString OverlayIconName READ noText)
    Q_PROPERTY(QList<stemvault::status_bar::DBusPixmap> OverlayIconPixmap READ noPixmap)
    Q_PROPERTY(QString AttentionIconName READ noText)
    Q_PROPERTY(QList<stemvault::status_bar::DBusPixmap> AttentionIconPixmap READ noPixmap)
    Q_PROPERTY(QString AttentionMovieName READ noText)
    Q_PROPERTY(stemvault::status_bar::DBusToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
    Q_PROPERTY(QDBusObjectPath Menu READ menu)
public:
    StatusNotifierItem(QObject* node, QString menuPath);

    void setImage(const std::optional<Image>& shown);

    [[nodiscard]] QString category() const { return QStringLiteral("ApplicationStatus"); }
    [[nodiscard]] QString id() const;
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString status() const { return QStringLiteral("Active"); }
    [[nodiscard]] int windowId() const { return 0; }
    [[nodiscard]] QString iconThemePath() const;
    [[nodiscard]] QString iconName() const;
    [[nodiscard]] QString iconAccessibleDesc() const;
    [[nodiscard]] QList<stemvault::status_bar::DBusPixmap> noPixmap() const { return {}; }
    [[nodiscard]] QString noText() const { return {}; }
    [[nodiscard]] stemvault::status_bar::DBusToolTip toolTip() const;
    [[nodiscard]] bool itemIsMenu() const { return true; }
    [[nodiscard]] QDBusObjectPath menu() const { return QDBusObjectPath(pathOfMenu); }

public Q_SLOTS:
    // Panels that cannot show the menu themselves call one of the first three to request it.
    void ContextMenu(int x, int y);
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    void Scroll(int delta, const QString& orientation);
    void ProvideXdgActivationToken(const QString& token);

Q_SIGNALS:
    void NewIcon();
    void NewTitle();
    void NewToolTip();
    void NewStatus(const QString& status);
    void menuWanted(int x, int y); ///< Used inside this program only; not part of the interface.

private:
    QString pathOfMenu;
    std::optional<Image> image;
};

} // namespace stemvault::status_bar
