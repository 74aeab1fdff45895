#include "LinuxDesktop/Windows/ViewControls.h"

#include "LinuxDesktop/Windows/DisplayText.h"
#include "LinuxDesktop/Windows/SymbolImage.h"
#include "LinuxDesktop/Windows/ViewStyle.h"

#include <QKeyEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QtMath>

namespace stemvault::windows {

namespace {

constexpr double focusRingWidth = 2;
constexpr int gapBeforeSwitch = 8;

QString shownTitle(const Button& button)
{
    const auto* text = std::get_if<Text>(&button.label);
    return text ? displayLine(text->string) : QString();
}

void drawFocusRing(QPainter& painter, const QRectF& around, double radius, const QPalette& palette)
{
    QColor ring = color(Color::Accent, palette);
    ring.setAlphaF(0.75F);
    painter.setPen(QPen(ring, focusRingWidth));
    painter.setBrush(Qt::NoBrush);
    const double inset = focusRingWidth / 2;
    painter.drawRoundedRect(around.adjusted(inset, inset, -inset, -inset), radius, radius);
}

} // namespace

ViewButton::ViewButton()
{
    setAutoDefault(false);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(this, &QPushButton::clicked, this, [this] {
        // A copy, because the action may redraw the view and destroy this button before it ends.
        if (const Action action = shown.action)
            action();
    });
}

void ViewButton::show(const Button& button)
{
    shown = button;
    const auto* text = std::get_if<Text>(&button.label);
    const bool hasOwnFont = text && button.style == Button::Style::Plain;
    setFont(hasOwnFont ? windows::font(text->font) : controlFont(button.size));
    setText(shownTitle(button).replace(u'&', QStringLiteral("&&")));
    const QString help = displayLine(button.help);
    setAccessibleName(symbol() ? help : shownTitle(button));
    setAccessibleDescription(symbol() ? QString() : help);
    setToolTip(toolTipText(help));
    updateGeometry();
    update();
}

// The margins around the label, within the frame.
QMargins ViewButton::margins() const
{
    constexpr int overhang = ViewMetrics::overhang;
    if (shown.style == Button::Style::Bordered)
        return shown.size == ControlSize::Small ? QMargins(11, 4, 11, 4) : QMargins(14, 6, 14, 6);
    // A text button is no higher than its line, so a title next to it stays aligned with others.
    return symbol() ? QMargins(overhang, overhang, overhang, overhang)
                    : QMargins(overhang, 0, overhang, 0);
}

// A border is always drawn, so it must end where the labels of other controls end.
QRect ViewButton::frame() const
{
    const bool hasBorder = shown.style == Button::Style::Bordered;
    return rect().adjusted(0, 0, hasBorder ? -ViewMetrics::overhang : 0, 0);
}

QSize ViewButton::sizeHint() const
{
    const int side = symbolSize(font());
    const QSize content = symbol()
        ? QSize(side, side)
        : QSize(fontMetrics().horizontalAdvance(shownTitle(shown)) + 1, fontMetrics().height());
    return content.grownBy(margins()) + (rect().size() - frame().size());
}

QColor ViewButton::ink() const
{
    const Color role = std::visit([](const auto& label) { return label.color; }, shown.label);
    // A button without a border changes its colour under the pointer, to show that it is a button.
    const bool isAlive = shown.style == Button::Style::Plain && underMouse();
    return color(isAlive && role == Color::SecondaryLabel ? Color::Label : role, palette());
}

void ViewButton::paintFrame(QPainter& painter) const
{
    const QRectF border = QRectF(frame()).adjusted(0.5, 0.5, -0.5, -0.5);
    const QColor text = palette().color(QPalette::WindowText);
    QColor fill = isDark(palette()) ? QColor(255, 255, 255, 24) : QColor(255, 255, 255, 235);
    if (shown.style == Button::Style::Plain)
        fill = Qt::transparent;
    if (isDown() || underMouse()) {
        fill = text;
        fill.setAlphaF(isDown() ? 0.16F : 0.07F);
    }
    painter.setBrush(fill);
    painter.setPen(shown.style == Button::Style::Bordered ? QPen(lineColor(palette())) : Qt::NoPen);
    painter.drawRoundedRect(border, ViewMetrics::cornerRadius, ViewMetrics::cornerRadius);
}

void ViewButton::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintFrame(painter);
    if (hasFocus())
        drawFocusRing(painter, frame(), ViewMetrics::cornerRadius, palette());
    const QRect content = frame().marginsRemoved(margins());
    if (const Symbol* drawn = symbol()) {
        painter.drawPixmap(content.topLeft(),
            symbolPixmap(drawn->systemName, symbolSize(font()), devicePixelRatioF(), ink()));
        return;
    }
    painter.setPen(ink());
    painter.drawText(frame(), Qt::AlignCenter | Qt::TextSingleLine, shownTitle(shown));
}

void ViewButton::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QPushButton::keyPressEvent(event);
}

void ViewButton::enterEvent(QEnterEvent* event)
{
    update();
    QPushButton::enterEvent(event);
}

void ViewButton::leaveEvent(QEvent* event)
{
    update();
    QPushButton::leaveEvent(event);
}

ViewToggle::ViewToggle()
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    // Not `clicked`: a screen reader toggles without a click.
    connect(this, &QCheckBox::toggled, this, [this](bool isOn) {
        if (const auto onChange = shown.onChange)
            onChange(isOn);
    });
}

void ViewToggle::show(const Toggle& toggle)
{
    shown = toggle;
    setFont(controlFont(toggle.size));
    setText(displayTitle(toggle.title));
    setAccessibleName(displayLine(toggle.title));
    const QSignalBlocker notByTheUser(this);
    setChecked(toggle.isOn);
    updateGeometry();
    update();
}

QSize ViewToggle::sizeHint() const
{
    const int text = fontMetrics().horizontalAdvance(displayLine(shown.title)) + 1;
    const QSizeF pill = track().size();
    return { text + gapBeforeSwitch + qCeil(pill.width()) + ViewMetrics::overhang,
        qMax(fontMetrics().height(), static_cast<int>(pill.height())) + 6 };
}

bool ViewToggle::hitButton(const QPoint& position) const
{
    return rect().contains(position);
}

QRectF ViewToggle::track() const
{
    const double height = shown.size == ControlSize::Small ? 18 : 22;
    const double pillWidth = height * 1.75;
    return { width() - pillWidth - ViewMetrics::overhang, (this->height() - height) / 2, pillWidth,
        height };
}

void ViewToggle::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(color(Color::Label, palette()));
    painter.drawText(
        rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, displayLine(shown.title));

    const QRectF pill = track();
    const double radius = pill.height() / 2;
    QColor off = palette().color(QPalette::WindowText);
    off.setAlphaF(isDark(palette()) ? 0.30F : 0.24F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isChecked() ? QColor(0x5A, 0x63, 0xE8) : off);
    painter.drawRoundedRect(pill, radius, radius);
    const double knob = radius - 2;
    const double middle = isChecked() ? pill.right() - radius : pill.left() + radius;
    painter.setBrush(QColor(0, 0, 0, 40));
    painter.drawEllipse(QPointF(middle, pill.center().y() + 0.8), knob, knob);
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(middle, pill.center().y()), knob, knob);
    if (hasFocus())
        drawFocusRing(painter, pill.adjusted(-3, -3, 3, 3), radius + 3, palette());
}

} // namespace stemvault::windows
