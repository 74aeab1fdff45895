#include "LinuxDesktop/Windows/ViewText.h"

#include "LinuxDesktop/Windows/DisplayText.h"
#include "LinuxDesktop/Windows/SymbolImage.h"
#include "LinuxDesktop/Windows/ViewStyle.h"

#include <QPainter>
#include <QTextLayout>
#include <QtMath>

#include <algorithm>

namespace stemvault::windows {

namespace {

constexpr int narrowestLine = 48;
constexpr double capitalSpacing = 104; ///< In percent; capitals need a little more space.

// Titles begin where the texts of rows begin, next to the rows' symbols.
int symbolColumnWidth()
{
    return standingSymbolSize(font(Font {}));
}

int titleStart()
{
    return symbolColumnWidth() + ViewMetrics::spacing;
}

} // namespace

void ViewText::show(const Text& text)
{
    shown = text;
    setTextFormat(Qt::PlainText);
    setFont(windows::font(text.font));
    whole = displayWholeLine(text.string);
    setText(displayLine(text.string));
    setAccessibleDescription(whole == this->text() ? QString() : whole);
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

// A text of several lines ends where the controls end. The size comes from the layout that draws
// the text, because the font metrics may give a little less, which would wrap the last word.
QSize ViewText::sizeHint() const
{
    QTextLayout layout;
    setUp(layout, QWIDGETSIZE_MAX);
    return QSize(qCeil(layout.maximumWidth()) + 1 + ViewMetrics::overhang, fontMetrics().height())
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
    setUp(layout, width - ViewMetrics::overhang);
    const QMargins margins = contentsMargins();
    return qCeil(layout.boundingRect().height()) + margins.top() + margins.bottom();
}

// The layout is not kept between paintings, because a label paints a few lines a few times.
void ViewText::setUp(QTextLayout& layout, qreal width) const
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
    setUp(layout, width() - ViewMetrics::overhang);
    layout.draw(&painter, contentsRect().topLeft());
}

void ViewText::resizeEvent(QResizeEvent* /*event*/)
{
    updateToolTip();
}

// Shows the whole text in a tool tip if it is cut.
void ViewText::updateToolTip()
{
    const bool isCut = whole != text() || (isOneLine() && width() < sizeHint().width() - 1);
    setToolTip(isCut ? toolTipText(whole) : QString());
}

void ViewLabel::show(const Label& label)
{
    shown = label;
    QFont titleFont = windows::font(label.font);
    if (label.isUppercase)
        titleFont.setLetterSpacing(QFont::PercentageSpacing, capitalSpacing);
    setTextFormat(Qt::PlainText);
    setFont(titleFont);
    setText(displayLine(label.title)); // As a screen reader should say it.
    updateGeometry();
    update();
}

QString ViewLabel::displayed() const
{
    return shown.isUppercase ? text().toUpper() : text();
}

QSize ViewLabel::sizeHint() const
{
    return { titleStart() + fontMetrics().horizontalAdvance(displayed()) + 2, symbolSize(font()) };
}

void ViewLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    const QColor ink = color(shown.color, palette());
    const int side = symbolSize(font());
    // Centred above the larger symbols of rows, so that the title begins where their texts begin.
    const QPoint place((symbolColumnWidth() - side) / 2, (height() - side) / 2);
    painter.drawPixmap(place, symbolPixmap(shown.systemImage, side, devicePixelRatioF(), ink));
    painter.setPen(ink);
    painter.drawText(rect().adjusted(titleStart(), 0, 0, 0),
        Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, displayed());
}

void ViewSymbol::show(const Symbol& symbol)
{
    shown = symbol;
    setFont(windows::font(symbol.font));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    updateGeometry();
    update();
}

QSize ViewSymbol::sizeHint() const
{
    const int side = standingSymbolSize(font());
    return { side, side };
}

void ViewSymbol::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.drawPixmap(0, 0,
        symbolPixmap(shown.systemName, standingSymbolSize(font()), devicePixelRatioF(),
            color(shown.color, palette())));
}

} // namespace stemvault::windows
