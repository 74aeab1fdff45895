#pragma once

#include "Platform/View.h"

#include <QLabel>

class QTextLayout;

namespace stemvault::windows {

/// Plain text, either in as many lines as its width requires, in which names without blanks are
/// broken too, or in one line that is elided in the middle if there is no room.
class ViewText final : public QLabel {
public:
    void show(const Text& text);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] bool hasHeightForWidth() const override;
    [[nodiscard]] int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void updateToolTip();
    void setUp(QTextLayout& layout, qreal width) const;
    [[nodiscard]] bool isOneLine() const;

    Text shown;
    QString whole; ///< The whole text; a very long one is shown without its middle.
};

/// A title with a symbol in front.
class ViewLabel final : public QLabel {
public:
    void show(const Label& label);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QString displayed() const;

    Label shown;
};

/// A symbol without a title.
class ViewSymbol final : public QWidget {
public:
    void show(const Symbol& symbol);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Symbol shown;
};

} // namespace stemvault::windows
