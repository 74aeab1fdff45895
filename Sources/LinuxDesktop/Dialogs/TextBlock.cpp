#include "LinuxDesktop/Dialogs/TextBlock.h"

#include <QPaintEvent>
#include <QPainter>
#include <QTextLayout>
#include <QtMath>

#include <utility>

namespace stemvault {

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

// The text of a label with a buddy has its ampersands taken for marks of shortcuts.
void TextBlock::nameControl(QWidget& control)
{
    setText(QString(content).replace(u'&', QStringLiteral("&&")));
    setBuddy(&control);
}

// The layout is made anew for each painting: a label is painted a few times.
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

} // namespace stemvault
