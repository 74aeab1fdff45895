#include "LinuxDesktop/Windows/ViewTree.h"

#include "LinuxDesktop/Windows/ViewControls.h"
#include "LinuxDesktop/Windows/ViewStyle.h"
#include "LinuxDesktop/Windows/ViewText.h"

#include <QFrame>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace stemvault::windows {

namespace {

/// A line from edge to edge that covers whole pixels of the screen. At a fractional scale, lines
/// between pixels would differ in thickness.
class DividerLine final : public QFrame {
public:
    DividerLine() { setFixedHeight(1); }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        const qreal ratio = devicePixelRatioF();
        const qreal top = mapTo(window(), QPointF(0, 0)).y() * ratio;
        const QRectF line(0, (std::ceil(top) - top) / ratio, width(), std::floor(ratio) / ratio);
        QPainter(this).fillRect(line, lineColor(palette()));
    }
};

int points(const std::optional<double>& given, int standard)
{
    return given ? qRound(*given) : standard;
}

/// The alignment of a child across the stack's axis. A child with a natural size keeps it.
Qt::Alignment placeOf(const Stack& stack, const View& child)
{
    if (stack.axis == Stack::Axis::Horizontal)
        return std::holds_alternative<Stack>(child.content) ? Qt::Alignment() : Qt::AlignVCenter;
    const bool keepsSize = std::holds_alternative<Button>(child.content)
        || std::holds_alternative<Toggle>(child.content)
        || std::holds_alternative<Symbol>(child.content);
    return keepsSize ? Qt::AlignLeft : Qt::Alignment();
}

} // namespace

ViewTree::ViewTree(const View& view) : shown(view)
{
    make();
    show(view);
}

ViewTree::~ViewTree()
{
    children.clear();
    if (!outer)
        return;
    // The destructor may be called from within a signal of the widget.
    outer->hide();
    outer->deleteLater();
}

bool ViewTree::canShow(const View& view) const
{
    if (view.content.index() != shown.content.index() || view.id != shown.id)
        return false;
    // A button that does something else must be a new one, which does not inherit the focus.
    if (const auto* button = std::get_if<Button>(&view.content))
        return button->label == std::get<Button>(shown.content).label
            && button->help == std::get<Button>(shown.content).help;
    const auto* before = std::get_if<Stack>(&shown.content);
    const auto* now = std::get_if<Stack>(&view.content);
    return !before || (before->axis == now->axis && before->isList == now->isList);
}

void ViewTree::make()
{
    if (const auto* stack = std::get_if<Stack>(&shown.content)) {
        inner = new QWidget;
        new QBoxLayout(stack->axis == Stack::Axis::Vertical ? QBoxLayout::TopToBottom
                                                            : QBoxLayout::LeftToRight,
            inner);
        outer = inner;
        if (stack->isList) {
            auto* area = new ListArea;
            area->setWidget(inner);
            inner->setAutoFillBackground(false);
            outer = area;
        }
    } else if (std::holds_alternative<Text>(shown.content)) {
        outer = new ViewText;
    } else if (std::holds_alternative<Symbol>(shown.content)) {
        outer = new ViewSymbol;
    } else if (std::holds_alternative<Label>(shown.content)) {
        outer = new ViewLabel;
    } else if (std::holds_alternative<Button>(shown.content)) {
        outer = new ViewButton;
    } else if (std::holds_alternative<Toggle>(shown.content)) {
        outer = new ViewToggle;
    } else if (std::holds_alternative<Divider>(shown.content)) {
        outer = new DividerLine;
    }
}

void ViewTree::show(const View& view)
{
    shown = view;
    std::visit([this](const auto& content) { apply(content); }, view.content);
}

void ViewTree::apply(const Text& text)
{
    static_cast<ViewText*>(outer.data())->show(text);
    const int margin = points(shown.padding.vertical, ViewMetrics::groupMargin);
    outer->setContentsMargins(0, margin, 0, margin);
}

void ViewTree::apply(const Symbol& symbol)
{
    static_cast<ViewSymbol*>(outer.data())->show(symbol);
}

void ViewTree::apply(const Label& label)
{
    static_cast<ViewLabel*>(outer.data())->show(label);
}

void ViewTree::apply(const Button& button)
{
    static_cast<ViewButton*>(outer.data())->show(button);
}

void ViewTree::apply(const Toggle& toggle)
{
    static_cast<ViewToggle*>(outer.data())->show(toggle);
}

void ViewTree::apply(const Divider& /*divider*/) { }

void ViewTree::apply(const Spacer& /*spacer*/) { }

void ViewTree::applyPadding(QBoxLayout& layout) const
{
    const int left = points(shown.padding.horizontal, ViewMetrics::groupMargin);
    const int right =
        points(shown.padding.horizontal, ViewMetrics::groupMargin - ViewMetrics::overhang);
    const int vertical = points(shown.padding.vertical, ViewMetrics::groupMargin);
    layout.setContentsMargins(left, vertical, right, vertical);
}

std::unique_ptr<ViewTree> ViewTree::takeMatch(const View& child)
{
    for (auto& candidate : children)
        if (candidate && candidate->canShow(child))
            return std::move(candidate);
    return nullptr;
}

// If the user moved a switch and the change was not accepted, it shows another state than drawn.
bool ViewTree::needsShowing(const View& view) const
{
    return std::holds_alternative<Stack>(view.content)
        || std::holds_alternative<Toggle>(view.content) || shown != view;
}

void ViewTree::apply(const Stack& stack)
{
    std::vector<std::unique_ptr<ViewTree>> next;
    std::vector<const QWidget*> before;
    std::vector<const QWidget*> after;
    before.reserve(children.size());
    for (const auto& child : children)
        before.push_back(child->widget());
    for (const View& child : stack.children) {
        auto match = takeMatch(child);
        if (!match)
            match = std::make_unique<ViewTree>(child);
        else if (match->needsShowing(child))
            match->show(child);
        after.push_back(match->widget());
        next.push_back(std::move(match));
    }
    std::swap(children, next);
    if (before != after || before.empty())
        layOut(stack);
}

void ViewTree::layOut(const Stack& stack)
{
    auto* layout = static_cast<QBoxLayout*>(inner->layout());
    while (QLayoutItem* item = layout->takeAt(0))
        delete item;
    const bool isVertical = stack.axis == Stack::Axis::Vertical;
    applyPadding(*layout);
    layout->setSpacing(
        points(stack.spacing, isVertical ? ViewMetrics::lineSpacing : ViewMetrics::spacing));
    bool hasSpacer = false;
    for (std::size_t i = 0; i < children.size(); ++i) {
        if (QWidget* child = children[i]->widget()) {
            layout->addWidget(child, 0, placeOf(stack, stack.children[i]));
            child->show();
        } else {
            layout->addStretch(1);
            hasSpacer = true;
        }
    }
    if (!isVertical && !hasSpacer)
        layout->addStretch(1);
}

void ViewTree::settle()
{
    for (const auto& child : children)
        child->settle();
    if (!inner)
        return;
    inner->layout()->invalidate();
    inner->updateGeometry();
    outer->updateGeometry();
}

void ViewTree::visit(const std::function<void(QWidget&)>& work) const
{
    if (outer)
        work(*outer);
    for (const auto& child : children)
        child->visit(work);
}

std::vector<ListArea*> ViewTree::lists() const
{
    std::vector<ListArea*> found;
    visit([&found](QWidget& widget) {
        if (auto* list = dynamic_cast<ListArea*>(&widget))
            found.push_back(list);
    });
    return found;
}

std::vector<QWidget*> ViewTree::controls() const
{
    std::vector<QWidget*> found;
    visit([&found](QWidget& widget) {
        if (qobject_cast<QAbstractButton*>(&widget))
            found.push_back(&widget);
    });
    return found;
}

} // namespace stemvault::windows
