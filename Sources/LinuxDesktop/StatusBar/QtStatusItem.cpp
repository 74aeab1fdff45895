#include "LinuxDesktop/StatusBar/QtStatusItem.h"

#include "LinuxDesktop/StatusBar/DBusMenu.h"
#include "LinuxDesktop/StatusBar/MenuRow.h"
#include "LinuxDesktop/StatusBar/PopUpMenu.h"
#include "LinuxDesktop/StatusBar/QtStatusBar.h"
#include "LinuxDesktop/StatusBar/StatusNotifierItem.h"
#include "LinuxDesktop/StatusBar/TrayHost.h"
#include "LinuxDesktop/Windows/SymbolImage.h"

#include <QCursor>
#include <QDBusConnection>
#include <QEvent>
#include <QGuiApplication>
#include <QShortcut>
#include <QSystemTrayIcon>
#include <QTimer>

#include <chrono>

namespace stemvault::status_bar {

namespace {

const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString menuPath = QStringLiteral("/MenuBar");

// Some panels, such as MATE's, pass the item's place in the panel instead of its place on the
// screen. A click is never far from the pointer, so the pointer's place is used then. On Wayland
// the pointer's place is unknown.
QPoint placeOfClick(const QPoint& told)
{
    constexpr int sizeOfItem = 100;
    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY"))
        return told;
    const QPoint pointer = QCursor::pos();
    return (pointer - told).manhattanLength() <= sizeOfItem ? told : pointer;
}

} // namespace

std::unique_ptr<StatusItem> QtStatusBar::statusItem(double /*length*/)
{
    auto item = std::make_unique<QtStatusItem>();
    latest = item.get();
    return item;
}

void QtStatusBar::addKeyEquivalents(QWidget& window) const
{
    if (latest)
        latest->addKeyEquivalents(window);
}

QtStatusItem::QtStatusItem()
{
    qApp->installEventFilter(this);
}

QtStatusItem::~QtStatusItem()
{
    if (!host)
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterObject(itemPath);
    bus.unregisterObject(menuPath);
}

void QtStatusItem::setImage(const std::optional<Image>& image)
{
    icon = image;
    if (notifierItem)
        notifierItem->setImage(image);
}

// The item is offered to the desktop once it has its menu.
void QtStatusItem::setMenu(Menu menu, MenuDelegate* delegate)
{
    trayMenu.setMenu(std::move(menu), delegate);
    if (host || olderTray)
        return;
    if (QDBusConnection::sessionBus().isConnected())
        offerOnBus();
    else
        showInOlderTray();
}

void QtStatusItem::setMenuNeedsUpdate()
{
    trayMenu.updateUnlessOpen();
}

bool QtStatusItem::isVisible() const
{
    return isHostThere || (olderTray && QSystemTrayIcon::isSystemTrayAvailable());
}

void QtStatusItem::addKeyEquivalents(QWidget& window)
{
    for (std::size_t row = 0; row < trayMenu.items().size(); ++row) {
        const std::string& key = trayMenu.items()[row].keyEquivalent;
        if (key.empty())
            continue;
        auto* shortcut = new QShortcut(commandKey(key), &window);
        connect(shortcut, &QShortcut::activated, this, [this, row] { trayMenu.choose(row); });
    }
}

// A panel that colours the icon when it reads it must read it again after the desktop has turned
// light or dark. It is unknown when the panel has its new colours, so it is notified at once and
// again a little later.
bool QtStatusItem::eventFilter(QObject* watched, QEvent* event)
{
    constexpr std::chrono::seconds timeForPanel { 2 };
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange) {
        refreshIcon();
        QTimer::singleShot(timeForPanel, this, &QtStatusItem::refreshIcon);
    }
    return false;
}

void QtStatusItem::refreshIcon()
{
    if (notifierItem)
        notifierItem->setImage(icon);
    if (olderTray && icon)
        olderTray->setIcon(windows::symbolIcon(icon->source));
}

void QtStatusItem::offerOnBus()
{
    notifierItem = new StatusNotifierItem(&itemNode, menuPath);
    notifierItem->setImage(icon);
    new DBusMenu(&menuNode, trayMenu);
    connect(notifierItem, &StatusNotifierItem::menuWanted, this, [this](int x, int y) {
        popUpMenu().popup(placeOfClick({ x, y }));
    });
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.registerObject(itemPath, &itemNode);
    bus.registerObject(menuPath, &menuNode);
    host = std::make_unique<TrayHost>(bus, itemPath);
    connect(host.get(), &TrayHost::isThere, this, [this](bool there) { setHostIsThere(there); });
}

void QtStatusItem::setHostIsThere(bool there)
{
    isHostThere = there;
    if (!there)
        showInOlderTray();
    else if (olderTray)
        olderTray->hide();
}

// Only X11 has such trays. The toolkit chooses one of the two protocols when the first icon is
// created and keeps it. As no panel is on the bus at that moment, it chooses the older one.
void QtStatusItem::showInOlderTray()
{
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return;
    if (!olderTray) {
        olderTray = std::make_unique<QSystemTrayIcon>();
        if (icon)
            olderTray->setIcon(windows::symbolIcon(icon->source));
        olderTray->setToolTip(
            icon ? QString::fromStdString(icon->accessibilityDescription) : QString());
        olderTray->setContextMenu(&popUpMenu());
        connect(olderTray.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger)
                    popUpMenu().popup(QCursor::pos());
            });
    }
    olderTray->show();
}

PopUpMenu& QtStatusItem::popUpMenu()
{
    if (!popUp)
        popUp = std::make_unique<PopUpMenu>(trayMenu);
    return *popUp;
}

} // namespace stemvault::status_bar
