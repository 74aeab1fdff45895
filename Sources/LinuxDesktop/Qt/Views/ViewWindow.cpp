#include "LinuxDesktop/Qt/Views/ViewWindow.h"

#include <QApplication>
#include <QEvent>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace stemvault {

namespace {

constexpr int frameAllowance = 56; ///< For the title bar, and a little air.
constexpr int shortestList = 132;

} // namespace

ViewWindow::ViewWindow(std::function<View()> content)
    : body(std::move(content)), scroll(new QScrollArea(this))
{
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroll);
    connect(qApp, &QApplication::focusChanged, this,
        [this](QWidget*, QWidget* now) { keepInSight(now); });
}

// The focus still moves while the widget below this class is being destroyed.
ViewWindow::~ViewWindow()
{
    qApp->disconnect(this);
}

void ViewWindow::drawSoon()
{
    if (!isVisible() || std::exchange(isDrawingDue, true))
        return;
    QMetaObject::invokeMethod(
        this, [this] { draw(); }, Qt::QueuedConnection);
}

void ViewWindow::draw()
{
    isDrawingDue = false;
    const View view = body();
    if (tree && !std::exchange(isOfAnotherFont, false) && tree->canShow(view)) {
        tree->show(view);
    } else {
        tree = std::make_unique<ViewTree>(view);
        scroll->setWidget(tree->widget());
        tree->widget()->setAutoFillBackground(false);
    }
    setFixedWidth(view.width ? qRound(*view.width) : sizeHint().width());
    fit();
    keepTabOrder();
}

int ViewWindow::availableHeight() const
{
    return screen()->availableGeometry().height() - frameAllowance;
}

int ViewWindow::wholeHeight() const
{
    const QLayout& layout = *tree->widget()->layout();
    return layout.hasHeightForWidth() ? layout.totalHeightForWidth(width())
                                      : layout.totalSizeHint().height();
}

void ViewWindow::fit()
{
    const auto lists = tree->lists();
    for (ListArea* list : lists)
        list->setLimit(QWIDGETSIZE_MAX);
    tree->settle();
    int height = wholeHeight();
    for (ListArea* list : lists) {
        const int excess = height - availableHeight();
        if (excess <= 0)
            break;
        const int whole = list->wholeHeight(list->width());
        list->setLimit(std::max(shortestList, whole - excess));
        tree->settle();
        height = wholeHeight();
    }
    const bool isTooHigh = height > availableHeight();
    scroll->setVerticalScrollBarPolicy(isTooHigh ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    tree->widget()->setMinimumHeight(height);
    setFixedHeight(isTooHigh ? availableHeight() : height);
}

// As the views are read: a control that came later may belong before the others.
void ViewWindow::keepTabOrder()
{
    QWidget* before = nullptr;
    for (QWidget* control : tree->controls()) {
        if (before)
            setTabOrder(before, control);
        before = control;
    }
}

void ViewWindow::keepInSight(QWidget* focused)
{
    if (!focused || !isAncestorOf(focused) || focused == tree->widget())
        return;
    for (QWidget* around = focused->parentWidget(); around && around != this;
         around = around->parentWidget())
        if (auto* area = qobject_cast<QScrollArea*>(around))
            area->ensureWidgetVisible(focused, 0, 12);
}

void ViewWindow::showEvent(QShowEvent* event)
{
    draw();
    // The keyboard's place is marked from the first press of Tab on.
    if (!focusWidget())
        tree->widget()->setFocus();
    QDialog::showEvent(event);
}

bool ViewWindow::event(QEvent* event)
{
    const bool isHandled = QDialog::event(event);
    if (event->type() == QEvent::ApplicationFontChange || event->type() == QEvent::FontChange) {
        isOfAnotherFont = true;
        drawSoon();
    }
    return isHandled;
}

} // namespace stemvault
