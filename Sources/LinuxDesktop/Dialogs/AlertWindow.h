#pragma once

#include "Platform/Dialogs.h"

#include <QDialog>
#include <QIcon>

#include <string>
#include <vector>

class QBoxLayout;
class QComboBox;
class QLineEdit;
class QPushButton;
class QScrollBar;

namespace stemvault {

class TextBlock;

/// An alert on the screen. Its result is a response of the alert, or 0 when it was closed without a
/// button. Return presses the default button, Escape the one titled "Cancel". A lone button is also
/// pressed by Escape and by closing the window. Copying copies the texts. A long text scrolls, by
/// the page keys too.
class AlertWindow final : public QDialog {
    Q_OBJECT
public:
    AlertWindow(const Alert& alert, const QIcon& icon);

    /// The pop-up button's; -1 without one.
    [[nodiscard]] int indexOfSelectedItem() const;

    /// The text field's. One that the user left alone keeps what no control can show.
    [[nodiscard]] std::string text() const;

    /// Escape, and closing by the window manager, come here.
    void reject() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void addTexts(const Alert& alert, QBoxLayout& column);
    void addAccessory(const PopUpButton& accessory, QBoxLayout& column);
    void addAccessory(const TextField& accessory, QBoxLayout& column);
    void addControl(QWidget& control, const Frame& frame, QBoxLayout& column);
    void addButtons(const std::vector<std::string>& titles, QBoxLayout& rows);

    const std::string texts;
    std::vector<QPushButton*> buttons; ///< In the alert's order.
    QPushButton* escapeButton = nullptr;
    QComboBox* popUp = nullptr;
    QLineEdit* textField = nullptr;
    QScrollBar* scrollBar = nullptr; ///< Of a text that is too long for the screen.
    std::string initialText;
    QString shownText; ///< The initial text as the field shows it.
    TextBlock* message = nullptr;
};

} // namespace stemvault
