#include "LinuxDesktop/Dialogs/AlertIcon.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyle>

#include <utility>

namespace stemvault::dialogs {

namespace {

QIcon standardIcon(const QWidget& widget, AlertStyle style)
{
    const auto picture = style == AlertStyle::Informational ? QStyle::SP_MessageBoxInformation
                                                            : QStyle::SP_MessageBoxWarning;
    return widget.style()->standardIcon(picture, nullptr, &widget);
}

QPainterPath triangle(const QRectF& box)
{
    QPainterPath path;
    path.moveTo(box.center().x(), box.top());
    path.lineTo(box.right(), box.bottom());
    path.lineTo(box.left(), box.bottom());
    path.closeSubpath();
    return path;
}

// A triangle with round corners, because the pen that draws its edge has round joins.
void drawBadge(QPainter& painter, const QRectF& box, const QColor& fill, const QColor& rim)
{
    const qreal corner = box.width() * 0.16;
    const QPainterPath path = triangle(box.adjusted(corner, corner, -corner, -corner * 1.2));
    for (const auto& [color, extra] : { std::pair(rim, corner * 0.9), std::pair(fill, 0.0) }) {
        painter.setPen(QPen(color, corner + extra, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(color);
        painter.drawPath(path);
    }
    const qreal x = box.center().x();
    painter.setPen(QPen(QColor(0x3B, 0x24, 0x00), box.width() * 0.1, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(
        QPointF(x, box.top() + box.height() * 0.38), QPointF(x, box.top() + box.height() * 0.58));
    painter.drawPoint(QPointF(x, box.top() + box.height() * 0.76));
}

} // namespace

AlertIcon::AlertIcon(QIcon shown, AlertStyle alertStyle, int size)
    : icon(std::move(shown)), style(alertStyle)
{
    setFixedSize(size, size);
}

void AlertIcon::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    if (icon.isNull())
        return standardIcon(*this, style).paint(&painter, rect());
    icon.paint(&painter, rect());
    if (style == AlertStyle::Informational)
        return;
    const qreal side = width() * 0.5;
    const QColor fill =
        style == AlertStyle::Critical ? QColor(0xF2, 0x60, 0x4B) : QColor(0xFF, 0xC2, 0x33);
    drawBadge(painter, QRectF(width() - side, height() - side, side, side), fill,
        palette().color(backgroundRole()));
}

} // namespace stemvault::dialogs
