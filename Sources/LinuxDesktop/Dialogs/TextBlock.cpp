#include "LinuxDesktop/Dialogs/TextBlock.h"

#include <QPaintEvent>
#include <QPainter>
#include <QTextLayout>
#include <QtMath>

#include <utility>

namespace stemvault::dialogs {

TextBlock::TextBlock(QString shown, int width, const QFont& font) : content(std::move(shown))
{
    setTextFormat(Qt::PlainText);
    setFont(font);
    setText(content);
    setFixedWidth(width);
    QTextLayout layout;
    setUp(layout);
    setFixedHeight(qCeil(layout.boundingRect().height()));
}

// In a label with a buddy, a single ampersand would mark a shortcut.
void TextBlock::nameControl(QWidget& control)
{
    setText(QString(content).replace(u'&', QStringLiteral("&&")));
    setBuddy(&control);
}

// The layout is not kept between paintings, because a label is painted only a few times.
void TextBlock::setUp(QTextLayout& layout) const
{
    QTextOption option(Qt::AlignLeft);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.setFont(font());
    layout.setText(QString(content).replace(u'\n', QChar::LineSeparator));
    layout.beginLayout();
    qreal top = 0;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width());
        line.setPosition({ 0, top });
        top += line.height() + line.leading();
    }
    layout.endLayout();
}

void TextBlock::paintEvent(QPaintEvent* event)
{
    QTextLayout layout;
    setUp(layout);
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    layout.draw(&painter, { 0, 0 }, {}, event->rect());
}

} // namespace stemvault::dialogs
