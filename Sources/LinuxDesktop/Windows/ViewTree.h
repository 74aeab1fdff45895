#pragma once

#include "LinuxDesktop/Windows/ListArea.h"
#include "Platform/View.h"

#include <QBoxLayout>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

namespace stemvault {

/// One view on the screen, and those within it. Shown anew it changes what differs and leaves the
/// rest alone: the keyboard's place and the scroll position stay.
class ViewTree {
public:
    explicit ViewTree(const View& view);
    ViewTree(const ViewTree&) = delete;
    ViewTree& operator=(const ViewTree&) = delete;
    ~ViewTree();

    /// Of the same kind and identity as the view before; see `canShow`.
    void show(const View& view);
    [[nodiscard]] bool canShow(const View& view) const;

    /// Belongs to this object unless a parent has taken it. Null for a spacer.
    [[nodiscard]] QWidget* widget() const { return outer; }

    /// Lets every layout know, from the inside out, what has changed: they would learn it from each
    /// other only step by step, and the window is to have its size now.
    void settle();

    /// The lists within it, which scroll, and the controls in the order in which they are read.
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
    QWidget* inner = nullptr; ///< What holds the children of a stack.
    std::vector<std::unique_ptr<ViewTree>> children;
};

} // namespace stemvault
