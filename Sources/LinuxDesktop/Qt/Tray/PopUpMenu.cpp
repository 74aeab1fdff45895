#include "LinuxDesktop/Qt/Tray/PopUpMenu.h"

#include "LinuxDesktop/Qt/Tray/MenuRow.h"

namespace stemvault {

namespace {

// The colour says something, so a row that cannot be chosen keeps it.
QIcon iconOf(const MenuRow& row)
{
    QIcon icon;
    if (row.icon.isNull())
        return icon;
    const QPixmap picture = QPixmap::fromImage(row.icon);
    icon.addPixmap(picture, QIcon::Normal);
    icon.addPixmap(picture, QIcon::Disabled);
    return icon;
}

} // namespace

PopUpMenu::PopUpMenu(TrayMenu& shown) : menu(shown)
{
    for (std::size_t row = 0; row < menu.items().size(); ++row) {
        const MenuItem& item = menu.items()[row];
        QAction* action = item.isSeparator ? addSeparator() : addAction(QString());
        if (!item.keyEquivalent.empty()) {
            action->setShortcut(commandKey(item.keyEquivalent));
            action->setShortcutVisibleInContextMenu(true);
        }
        connect(action, &QAction::triggered, this, [this, row] { menu.choose(row); });
        rows.push_back(action);
    }
    connect(this, &QMenu::aboutToShow, this, &PopUpMenu::refresh);
    refresh();
}

// Texts of file names: an ampersand in them is no mnemonic.
void PopUpMenu::refresh()
{
    menu.update();
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const MenuItem& item = menu.items()[row];
        const MenuRow shown = menuRow(item);
        rows[row]->setText(QString(shown.text).replace(u'&', QStringLiteral("&&")));
        rows[row]->setIcon(iconOf(shown));
        rows[row]->setIconVisibleInMenu(true);
        rows[row]->setEnabled(item.isEnabled);
        rows[row]->setVisible(!item.isHidden);
    }
}

} // namespace stemvault
