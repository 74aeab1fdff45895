#include "LinuxDesktop/Windows/ViewStyle.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontMetrics>

#include <algorithm>

namespace stemvault::windows {

namespace {

QColor mixed(const QColor& top, const QColor& bottom, double share)
{
    const auto channel = [share](int a, int b) { return qRound(a * share + b * (1 - share)); };
    return { channel(top.red(), bottom.red()), channel(top.green(), bottom.green()),
        channel(top.blue(), bottom.blue()) };
}

QColor faded(const QPalette& palette, double share)
{
    return mixed(palette.color(QPalette::WindowText), palette.color(QPalette::Window), share);
}

double relativeSize(TextStyle style)
{
    switch (style) {
    case TextStyle::Headline:
        return 1.2;
    case TextStyle::Body:
    case TextStyle::Callout:
        return 1.0;
    case TextStyle::Caption:
        return 0.9;
    }
    return 1.0;
}

QFont::Weight weightOf(const Font& role)
{
    if (role.style == TextStyle::Headline || role.weight == FontWeight::Semibold)
        return QFont::DemiBold;
    return role.weight == FontWeight::Medium ? QFont::Medium : QFont::Normal;
}

bool hasMediumStyle(const QString& family)
{
    const QStringList styles = QFontDatabase::styles(family);
    return std::ranges::any_of(styles, [&family](const QString& style) {
        return QFontDatabase::weight(family, style) == QFont::Medium;
    });
}

// If a family such as DejaVu has no medium style, its normal one would be used, and the names of
// folders would look like any other text.
QFont::Weight nextWeightOf(const QFont& font, QFont::Weight asked)
{
    if (asked == QFont::Medium && !hasMediumStyle(font.family()))
        return QFont::DemiBold;
    return asked;
}

QFont resized(QFont font, double factor)
{
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else
        font.setPixelSize(qRound(font.pixelSize() * factor));
    return font;
}

} // namespace

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::WindowText).lightness()
        > palette.color(QPalette::Window).lightness();
}

// The shades have enough contrast on either background, even for small text.
QColor color(Color role, const QPalette& palette)
{
    const bool dark = isDark(palette);
    switch (role) {
    case Color::Label:
        return palette.color(QPalette::WindowText);
    case Color::SecondaryLabel:
        return faded(palette, dark ? 0.66 : 0.64);
    case Color::TertiaryLabel:
        return faded(palette, dark ? 0.52 : 0.54);
    case Color::Accent:
        return dark ? QColor(0x98, 0xA4, 0xFF) : QColor(0x45, 0x4F, 0xD6);
    case Color::SystemGreen:
        return dark ? QColor(0x3D, 0xD6, 0x7B) : QColor(0x1C, 0x93, 0x45);
    case Color::SystemYellow:
        return dark ? QColor(0xF6, 0xC9, 0x4A) : QColor(0x9A, 0x66, 0x00);
    }
    return palette.color(QPalette::WindowText);
}

QFont font(const Font& role)
{
    QFont made = resized(QApplication::font(), relativeSize(role.style));
    made.setWeight(nextWeightOf(made, weightOf(role)));
    return made;
}

QFont controlFont(ControlSize size)
{
    return resized(QApplication::font(), size == ControlSize::Small ? 0.92 : 1.0);
}

int symbolSize(const QFont& font)
{
    return QFontMetrics(font).height();
}

int standingSymbolSize(const QFont& font)
{
    return qRound(symbolSize(font) * 1.2);
}

QColor lineColor(const QPalette& palette)
{
    return faded(palette, isDark(palette) ? 0.18 : 0.16);
}

} // namespace stemvault::windows
