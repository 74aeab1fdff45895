#pragma once

#include "LinuxDesktop/StatusBar/TrayMenu.h"
#include "Platform/StatusBar.h"

#include <QObject>
#include <QString>

#include <memory>

class QSystemTrayIcon;

namespace stemvault::status_bar {

class PopUpMenu;
class StatusNotifierItem;
class TrayHost;

class QtStatusItem final : public QObject, public StatusItem {
public:
    QtStatusItem();
    ~QtStatusItem() override;

    void setImage(const std::optional<Image>& image) override;
    void setMenu(Menu menu, MenuDelegate* delegate) override;
    void setMenuNeedsUpdate() override;
    [[nodiscard]] bool isVisible() const override;

    void addKeyEquivalents(QWidget& window);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void refreshIcon();
    void offerOnBus();
    void setHostIsThere(bool there);
    void showInOlderTray();
    [[nodiscard]] PopUpMenu& popUpMenu();

    TrayMenu trayMenu;
    std::optional<Image> icon;
    QObject itemNode;
    QObject menuNode;
    StatusNotifierItem* notifierItem = nullptr; ///< Owned by `itemNode`.
    std::unique_ptr<TrayHost> host;
    bool isHostThere = false;
    std::unique_ptr<PopUpMenu> popUp;
    std::unique_ptr<QSystemTrayIcon> olderTray;
};

} // namespace stemvault::status_bar
