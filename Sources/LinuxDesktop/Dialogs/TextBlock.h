#pragma once

#include <QLabel>

class QTextLayout;

namespace stemvault::dialogs {

/// A plain-text label of fixed width. Unlike QLabel, it breaks long names that contain no space,
/// and no character of its text has a special meaning.
class TextBlock final : public QLabel {
public:
    TextBlock(QString shown, int width, const QFont& font);

    /// Makes this text the accessible name of a control.
    void nameControl(QWidget& control);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void setUp(QTextLayout& layout) const;

    QString content;
};

} // namespace stemvault::dialogs
