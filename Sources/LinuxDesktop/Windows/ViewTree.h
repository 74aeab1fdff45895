#pragma once

#include "LinuxDesktop/Windows/ListArea.h"
#include "Platform/View.h"

#include <QBoxLayout>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

namespace stemvault::windows {

/// The widgets of a view and of the views within it. Showing a new view changes only what differs,
/// so the keyboard focus and the scroll position are kept.
class ViewTree {
public:
    explicit ViewTree(const View& view);
    ViewTree(const ViewTree&) = delete;
    ViewTree& operator=(const ViewTree&) = delete;
    ~ViewTree();

    /// `view` must have the same kind and identity as the previous one; see `canShow`.
    void show(const View& view);
    [[nodiscard]] bool canShow(const View& view) const;

    /// Owned by this object unless a parent has taken it. Null for a spacer.
    [[nodiscard]] QWidget* widget() const { return outer; }

    /// Notifies every layout of changes, from the inside out. The layouts would notify each other
    /// only step by step, but the window needs its size at once.
    void settle();

    /// The lists in this view, which scroll, and its controls in reading order.
    [[nodiscard]] std::vector<ListArea*> lists() const;
    [[nodiscard]] std::vector<QWidget*> controls() const;

private:
    void make();
    void apply(const Stack& stack);
    void apply(const Text& text);
    void apply(const Symbol& symbol);
    void apply(const Label& label);
    void apply(const Button& button);
    void apply(const Toggle& toggle);
    void apply(const Divider& divider);
    void apply(const Spacer& spacer);
    void applyPadding(QBoxLayout& layout) const;
    [[nodiscard]] std::unique_ptr<ViewTree> takeMatch(const View& child);
    [[nodiscard]] bool needsShowing(const View& view) const;
    void layOut(const Stack& stack);
    void visit(const std::function<void(QWidget&)>& work) const;

    View shown;
    QPointer<QWidget> outer;
    QWidget* inner = nullptr; ///< The widget that holds the children of a stack.
    std::vector<std::unique_ptr<ViewTree>> children;
};

} // namespace stemvault::windows
