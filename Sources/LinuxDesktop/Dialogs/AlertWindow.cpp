#include "LinuxDesktop/Dialogs/AlertWindow.h"

#include "LinuxDesktop/Dialogs/AlertIcon.h"
#include "LinuxDesktop/Dialogs/TextBlock.h"
#include "LinuxDesktop/Windows/DisplayText.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QBoxLayout>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <array>

namespace stemvault::dialogs {

namespace {

constexpr int margin = 24;
constexpr int gap = 20;
constexpr int iconSize = 64;
constexpr int narrowestColumn = 320;
constexpr int columnCharacters = 50;
constexpr int narrowestButton = 84;
constexpr int buttonPadding = 16;

/// Ignores the wheel, because scrolling meant for the window below must not change where a file
/// goes. Leaves Return to the alert's default button; on most desktops it would open the list.
class SteadyComboBox final : public QComboBox {
protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }

    void keyPressEvent(QKeyEvent* event) override
    {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            event->ignore();
        else
            QComboBox::keyPressEvent(event);
    }
};

int controlHeight(const QWidget& window)
{
    return window.fontMetrics().height() + 13;
}

/// Elides an item that is too long for the box in the middle. The style would cut off its ending,
/// which often distinguishes names.
QString fitting(const QString& item, const QWidget& box, int width)
{
    constexpr int frameAndArrow = 48;
    return box.fontMetrics().elidedText(item, Qt::ElideMiddle, width - frameAndArrow);
}

/// Makes a text that is too long for the screen scroll, so that the buttons below it stay visible.
QScrollArea* scrollArea(TextBlock* text, int height)
{
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidget(text);
    text->setAutoFillBackground(false);
    area->viewport()->setAutoFillBackground(false);
    area->setFixedSize(text->width() + gap + area->verticalScrollBar()->sizeHint().width(), height);
    return area;
}

bool isScrollKey(const QKeyEvent& event)
{
    constexpr std::array keys = { Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End };
    return std::ranges::find(keys, event.key()) != keys.end();
}

QFont messageFont(QFont font)
{
    font.setBold(true);
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * 1.15);
    return font;
}

/// Makes screen readers announce the window as an alert: at once, and with its texts.
QAccessibleInterface* makeAccessible(const QString& className, QObject* object)
{
    if (className != QLatin1String(AlertWindow::staticMetaObject.className()))
        return nullptr;
    return new QAccessibleWidget(static_cast<QWidget*>(object), QAccessible::AlertMessage);
}

} // namespace

AlertWindow::AlertWindow(const Alert& alert, const QIcon& icon)
    : texts(alert.messageText + "\n\n" + alert.informativeText)
{
    static const bool installed = (QAccessible::installFactory(makeAccessible), true);
    Q_UNUSED(installed);
    setWindowTitle(windows::displayLine(alert.messageText));
    setAccessibleDescription(windows::displayLines(alert.informativeText));

    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(margin, margin, margin, margin - 4);
    rows->setSpacing(gap);
    rows->setSizeConstraint(QLayout::SetFixedSize);
    auto* content = new QHBoxLayout;
    content->setSpacing(gap);
    content->addWidget(new AlertIcon(icon, alert.style, iconSize), 0, Qt::AlignTop);
    auto* column = new QVBoxLayout;
    column->setSpacing(0);
    addTexts(alert, *column);
    if (alert.accessoryView)
        std::visit(
            [&](const auto& accessory) { addAccessory(accessory, *column); }, *alert.accessoryView);
    column->addStretch();
    content->addLayout(column);
    rows->addLayout(content);
    addButtons(alert.buttons.empty() ? std::vector<std::string> { "OK" } : alert.buttons, *rows);
    if (popUp)
        popUp->setFocus();
}

void AlertWindow::addTexts(const Alert& alert, QBoxLayout& column)
{
    const int width =
        std::max(narrowestColumn, fontMetrics().averageCharWidth() * columnCharacters);
    message = new TextBlock(windows::displayLine(alert.messageText), width, messageFont(font()));
    column.addWidget(message);
    if (alert.informativeText.empty())
        return;
    column.addSpacing(6);
    auto* text = new TextBlock(windows::displayLines(alert.informativeText), width, font());
    const int highest = screen()->availableGeometry().height() / 2;
    if (text->height() <= highest)
        return column.addWidget(text);
    QScrollArea* area = scrollArea(text, highest);
    scrollBar = area->verticalScrollBar();
    column.addWidget(area);
}

void AlertWindow::addAccessory(const PopUpButton& accessory, QBoxLayout& column)
{
    popUp = new SteadyComboBox;
    popUp->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    addControl(*popUp, accessory.frame, column);
    for (const std::string& item : accessory.items) {
        const QString name = windows::displayLine(item);
        popUp->addItem(fitting(name, *popUp, std::max(popUp->minimumWidth(), message->width())));
        popUp->setItemData(popUp->count() - 1, windows::toolTipText(name), Qt::ToolTipRole);
    }
}

void AlertWindow::addAccessory(const TextField& accessory, QBoxLayout& column)
{
    initialText = accessory.text;
    shownText = windows::displayWholeLine(accessory.text);
    textField = new QLineEdit(shownText);
    addControl(*textField, accessory.frame, column);
    if (!accessory.isInitialFirstResponder)
        return;
    textField->setFocus();
    textField->selectAll();
}

// Makes the control at least as large as the frame; the column may make it larger.
void AlertWindow::addControl(QWidget& control, const Frame& frame, QBoxLayout& column)
{
    control.setMinimumSize(static_cast<int>(frame.width),
        std::max(static_cast<int>(frame.height), controlHeight(*this)));
    message->nameControl(control);
    column.addSpacing(gap - 4);
    column.addWidget(&control);
}

// The default button is the rightmost, where reading ends. The keyboard and screen readers go
// through the buttons in the alert's own order.
void AlertWindow::addButtons(const std::vector<std::string>& titles, QBoxLayout& rows)
{
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    for (const std::string& title : titles) {
        auto* button = new QPushButton(windows::displayTitle(title), this);
        const int text = fontMetrics().horizontalAdvance(windows::displayLine(title));
        button->setMinimumSize(
            std::max(narrowestButton, text + 2 * buttonPadding), controlHeight(*this));
        const int response = ModalResponse::alertFirstButton + static_cast<int>(buttons.size());
        connect(button, &QPushButton::clicked, this, [this, response] { done(response); });
        row->insertWidget(0, button);
        buttons.push_back(button);
        if (title == "Cancel" || titles.size() == 1)
            escapeButton = button;
    }
    row->insertStretch(0);
    buttons.front()->setDefault(true);
    rows.addLayout(row);
}

int AlertWindow::indexOfSelectedItem() const
{
    return popUp ? popUp->currentIndex() : -1;
}

std::string AlertWindow::text() const
{
    const bool isUnchanged = !textField || textField->text() == shownText;
    return isUnchanged ? initialText : textField->text().toStdString();
}

void AlertWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy)) {
        QGuiApplication::clipboard()->setText(QString::fromStdString(texts));
        return;
    }
    if (scrollBar && isScrollKey(*event)) {
        QCoreApplication::sendEvent(scrollBar, event);
        return;
    }
    if (!event->matches(QKeySequence::Cancel))
        return QDialog::keyPressEvent(event);
    if (escapeButton)
        escapeButton->click();
}

void AlertWindow::reject()
{
    if (buttons.size() == 1)
        buttons.front()->click();
    else
        QDialog::reject();
}

} // namespace stemvault::dialogs
