#include "LinuxDesktop/StatusBar/MenuRow.h"

#include "LinuxDesktop/Windows/DisplayText.h"

#include <QPainter>

namespace stemvault::status_bar {

namespace {

// Large enough for rows at 200 percent; hosts scale it down to the height of their text.
constexpr int iconSize = 48;
constexpr double dotDiameter = 24;
constexpr double ringWidth = 5;
constexpr QChar filledDot(0x25CF);
constexpr QChar hollowDot(0x25CB);

// Shades that stand out on a light menu and on a dark one, because the menu's colour is unknown.
QColor shade(Color color)
{
    return color == Color::SystemGreen ? QColor(0x2E, 0xB8, 0x57) : QColor(0x8E, 0x8E, 0x93);
}

QImage drawnMark(QChar mark, const QColor& color)
{
    QImage image(iconSize, iconSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const double inset = mark == hollowDot ? ringWidth / 2 : 0;
    if (mark == hollowDot) {
        painter.setPen(QPen(color, ringWidth));
    } else {
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
    }
    const double radius = dotDiameter / 2 - inset;
    painter.drawEllipse(QPointF(iconSize / 2.0, iconSize / 2.0), radius, radius);
    return image;
}

} // namespace

QKeySequence commandKey(const std::string& keyEquivalent)
{
    return { QStringLiteral("Ctrl+") + QString::fromStdString(keyEquivalent) };
}

MenuRow menuRow(const MenuItem& item)
{
    const auto& attributed = item.attributedTitle;
    const QString whole = windows::displayLine(attributed ? attributed->string : item.title);
    if (!attributed || !attributed->foregroundColor || attributed->foregroundColor->location != 0
        || whole.isEmpty() || (whole.front() != filledDot && whole.front() != hollowDot))
        return { whole, whole, {} };
    const auto& range = *attributed->foregroundColor;
    return { whole.mid(static_cast<qsizetype>(range.length)), whole,
        drawnMark(whole.front(), shade(range.color)) };
}

} // namespace stemvault::status_bar
