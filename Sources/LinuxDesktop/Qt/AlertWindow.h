#pragma once

#include "Platform/Dialogs.h"

#include <QDialog>
#include <QIcon>

#include <vector>

class QBoxLayout;
class QComboBox;
class QPushButton;

namespace stemvault {

class TextBlock;

/// An alert on the screen. Its result is a response of the alert, or 0 when it was closed without a
/// button. Return presses the default button, Escape the one titled "Cancel". A lone button is also
/// pressed by Escape and by closing the window.
class AlertWindow final : public QDialog {
    Q_OBJECT
public:
    AlertWindow(const Alert& alert, const QIcon& icon);

    /// The accessory view's; -1 without one.
    [[nodiscard]] int indexOfSelectedItem() const;

    /// Escape, and closing by the window manager, come here.
    void reject() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void addTexts(const Alert& alert, QBoxLayout& column);
    void addPopUp(const PopUpButton& accessory, QBoxLayout& column);
    void addButtons(const std::vector<std::string>& titles, QBoxLayout& rows);

    std::vector<QPushButton*> buttons; ///< In the alert's order.
    QPushButton* escapeButton = nullptr;
    QComboBox* popUp = nullptr;
    TextBlock* message = nullptr;
};

} // namespace stemvault
