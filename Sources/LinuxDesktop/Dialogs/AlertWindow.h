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

namespace stemvault::dialogs {

class TextBlock;

/// The window of an alert. Its result is a response of the alert, or 0 if it was closed without a
/// button. Return presses the default button, Escape the one titled "Cancel". A single button is
/// also pressed by Escape and by closing the window. The copy shortcut copies the texts. A long
/// text scrolls, also with the page keys.
class AlertWindow final : public QDialog {
    Q_OBJECT
public:
    AlertWindow(const Alert& alert, const QIcon& icon);

    /// The index of the pop-up button's selected item; -1 without a pop-up button.
    [[nodiscard]] int indexOfSelectedItem() const;

    /// The text of the text field. If the user did not change it, this is the exact initial text,
    /// including characters that the field cannot show.
    [[nodiscard]] std::string text() const;

    /// Called when the window is closed without a button, for example by the window manager.
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
    QScrollBar* scrollBar = nullptr; ///< Exists only if the text is too long for the screen.
    std::string initialText;
    QString shownText; ///< The initial text as the field shows it.
    TextBlock* message = nullptr;
};

} // namespace stemvault::dialogs
