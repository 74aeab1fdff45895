#include "LinuxDesktop/Qt/Views/ViewText.h"

#include "LinuxDesktop/Qt/DisplayText.h"
#include "LinuxDesktop/Qt/Views/SymbolImage.h"
#include "LinuxDesktop/Qt/Views/ViewStyle.h"

#include <QPainter>
#include <QTextLayout>
#include <QtMath>

#include <algorithm>

namespace stemvault {

namespace {

constexpr int narrowestLine = 48;
constexpr int gapAfterSymbol = 6;
constexpr double capitalSpacing = 104; ///< Percent: capitals want a little air.

// A symbol that stands alone is a little larger than the text around it.
int sideOf(const QFont& font)
{
    return qRound(symbolSize(font) * 1.2);
}

} // namespace

void ViewText::show(const Text& text)
{
    shown = text;
    setTextFormat(Qt::PlainText);
    setFont(stemvault::font(text.font));
    setText(displayLine(text.string));
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(!isOneLine());
    setSizePolicy(policy);
    updateToolTip();
    updateGeometry();
    update();
}

bool ViewText::isOneLine() const
{
    return shown.lines == Text::Lines::OneTruncatedInTheMiddle;
}

QSize ViewText::sizeHint() const
{
    return QSize(fontMetrics().horizontalAdvance(text()) + 1, fontMetrics().height())
        .grownBy(contentsMargins());
}

QSize ViewText::minimumSizeHint() const
{
    const QSize natural = sizeHint();
    return { std::min(narrowestLine, natural.width()), natural.height() };
}

bool ViewText::hasHeightForWidth() const
{
    return !isOneLine();
}

int ViewText::heightForWidth(int width) const
{
    QTextLayout layout;
    setUp(layout, width);
    const QMargins margins = contentsMargins();
    return qCeil(layout.boundingRect().height()) + margins.top() + margins.bottom();
}

// The layout is made anew for each painting: a label shows a few lines a few times.
void ViewText::setUp(QTextLayout& layout, int width) const
{
    QTextOption option(Qt::AlignLeft);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.setFont(font());
    layout.setText(text());
    layout.beginLayout();
    qreal top = 0;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        line.setPosition({ 0, top });
        top += line.height() + line.leading();
    }
    layout.endLayout();
}

void ViewText::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setPen(color(shown.color, palette()));
    if (isOneLine()) {
        const QString elided = fontMetrics().elidedText(text(), Qt::ElideMiddle, width());
        painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, elided);
        return;
    }
    QTextLayout layout;
    setUp(layout, width());
    layout.draw(&painter, contentsRect().topLeft());
}

void ViewText::resizeEvent(QResizeEvent* /*event*/)
{
    updateToolTip();
}

// What is cut is still to be read somewhere.
void ViewText::updateToolTip()
{
    const bool isCut = isOneLine() && width() < sizeHint().width() - 1;
    setToolTip(isCut ? toolTipText(text()) : QString());
}

void ViewLabel::show(const Label& label)
{
    shown = label;
    QFont titleFont = stemvault::font(label.font);
    if (label.isUppercase)
        titleFont.setLetterSpacing(QFont::PercentageSpacing, capitalSpacing);
    setTextFormat(Qt::PlainText);
    setFont(titleFont);
    setText(displayLine(label.title)); // As a screen reader is to say it.
    updateGeometry();
    update();
}

QString ViewLabel::displayed() const
{
    return shown.isUppercase ? text().toUpper() : text();
}

QSize ViewLabel::sizeHint() const
{
    const int side = symbolSize(font());
    return { side + gapAfterSymbol + fontMetrics().horizontalAdvance(displayed()) + 2, side };
}

void ViewLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    const QColor ink = color(shown.color, palette());
    const int side = symbolSize(font());
    const int top = (height() - side) / 2;
    painter.drawPixmap(0, top, symbolPixmap(shown.systemImage, side, devicePixelRatioF(), ink));
    painter.setPen(ink);
    painter.drawText(rect().adjusted(side + gapAfterSymbol, 0, 0, 0),
        Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, displayed());
}

void ViewSymbol::show(const Symbol& symbol)
{
    shown = symbol;
    setFont(stemvault::font(symbol.font));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    updateGeometry();
    update();
}

QSize ViewSymbol::sizeHint() const
{
    const int side = sideOf(font());
    return { side, side };
}

void ViewSymbol::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.drawPixmap(0, 0,
        symbolPixmap(
            shown.systemName, sideOf(font()), devicePixelRatioF(), color(shown.color, palette())));
}

} // namespace stemvault
