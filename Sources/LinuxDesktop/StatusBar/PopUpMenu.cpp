#include "LinuxDesktop/StatusBar/PopUpMenu.h"

#include "LinuxDesktop/StatusBar/MenuRow.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPalette>

#include <algorithm>

namespace stemvault::status_bar {

namespace {

// The colour has a meaning, so the icon of a disabled row keeps it.
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

// Disabled rows are information to read, so they are only fainter than the others, without the
// light shadow with which the style would blur them.
QPalette readablePalette()
{
    QPalette palette = QGuiApplication::palette();
    QColor faint = palette.color(QPalette::Text);
    faint.setAlphaF(0.62F);
    for (const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText })
        palette.setColor(QPalette::Disabled, role, faint);
    palette.setColor(QPalette::Disabled, QPalette::Light, Qt::transparent);
    return palette;
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
    connect(this, &QMenu::aboutToHide, this, [this] { menu.setOpen(false); });
}

// The toolkit shows the shortcuts of the rows but handles them only in windows, and this program
// may have none.
void PopUpMenu::keyPressEvent(QKeyEvent* event)
{
    const QKeySequence pressed(event->keyCombination());
    const auto row = std::ranges::find(rows, pressed, &QAction::shortcut);
    if (pressed.isEmpty() || row == rows.end())
        return QMenu::keyPressEvent(event);
    close();
    (*row)->trigger();
}

// The texts contain file names, in which an ampersand must not become a mnemonic.
void PopUpMenu::refresh()
{
    menu.setOpen(true);
    setPalette(readablePalette());
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

} // namespace stemvault::status_bar
