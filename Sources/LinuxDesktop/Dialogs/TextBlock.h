#pragma once

#include <QLabel>

class QTextLayout;

namespace stemvault {

/// A label of plain text as wide as it is told to be. Unlike its base it breaks a long name that
/// has no blank in it, and takes no character of its text for a sign.
class TextBlock final : public QLabel {
public:
    TextBlock(QString shown, int width, const QFont& font);

    /// Gives a control its accessible name: this text.
    void nameControl(QWidget& control);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void setUp(QTextLayout& layout) const;

    QString content;
};

} // namespace stemvault
