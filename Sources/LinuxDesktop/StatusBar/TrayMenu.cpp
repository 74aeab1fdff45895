#include "LinuxDesktop/StatusBar/TrayMenu.h"

#include <utility>

namespace stemvault::status_bar {

void TrayMenu::setMenu(Menu shown, MenuDelegate* itsDelegate)
{
    menu = std::move(shown);
    delegate = itsDelegate;
    Q_EMIT changed();
}

bool TrayMenu::update()
{
    if (!delegate)
        return false;
    const Menu before = menu;
    delegate->menuWillOpen(menu);
    if (menu == before)
        return false;
    Q_EMIT changed();
    return true;
}

void TrayMenu::updateUnlessOpen()
{
    if (!isOpen)
        update();
}

void TrayMenu::setOpen(bool isOpenNow)
{
    isOpen = isOpenNow;
    update();
}

void TrayMenu::choose(std::size_t row)
{
    if (row >= menu.items.size() || !menu.items[row].isEnabled || !menu.items[row].action)
        return;
    QMetaObject::invokeMethod(
        this, [action = menu.items[row].action] { action(); }, Qt::QueuedConnection);
}

} // namespace stemvault::status_bar
