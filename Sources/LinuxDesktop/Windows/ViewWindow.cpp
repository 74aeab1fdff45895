#include "LinuxDesktop/Windows/ViewWindow.h"

#include <QApplication>
#include <QEvent>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace stemvault::windows {

namespace {

constexpr int frameAllowance = 56; ///< For a title bar of unknown height, and a small margin.
constexpr int screenMargin = 8; ///< Between the screen's edge and a window that was moved up.
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

// The focus still changes while the base class is being destroyed.
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
    if (tree && !std::exchange(isFontOutdated, false) && tree->canShow(view)) {
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

// The height of the window manager's frame, which is known once the window has been shown.
int ViewWindow::frameHeight() const
{
    return frameGeometry().height() - geometry().height();
}

int ViewWindow::availableHeight() const
{
    return screen()->availableGeometry().height() - std::max(frameAllowance, frameHeight());
}

int ViewWindow::wholeHeight() const
{
    const QLayout& layout = *tree->widget()->layout();
    return layout.hasHeightForWidth() ? layout.totalHeightForWidth(width())
                                      : layout.totalSizeHint().height();
}

void ViewWindow::limitLists(int height)
{
    for (ListArea* list : tree->lists())
        list->setLimit(height);
    tree->settle();
}

// Returns whether the view fits then.
bool ViewWindow::shortenLists(int available)
{
    for (ListArea* list : tree->lists()) {
        const int excess = wholeHeight() - available;
        if (excess <= 0)
            return true;
        list->setLimit(std::max(shortestList, list->wholeHeight(list->width()) - excess));
        tree->settle();
    }
    return wholeHeight() <= available;
}

void ViewWindow::fit()
{
    const int available = availableHeight();
    limitLists(QWIDGETSIZE_MAX);
    const bool isTooHigh = !shortenLists(available);
    // One scroll bar is enough: if the whole view scrolls, the lists in it do not.
    if (isTooHigh)
        limitLists(QWIDGETSIZE_MAX);
    const int height = wholeHeight();
    scroll->setVerticalScrollBarPolicy(isTooHigh ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    tree->widget()->setMinimumHeight(height);
    const int before = this->height();
    setFixedHeight(isTooHigh ? available : height);
    if (this->height() > before)
        moveOntoScreen();
}

// Window managers keep the top of a growing window in place, even if its lower part leaves the
// screen. Where programs may not place their windows, the move has no effect.
void ViewWindow::moveOntoScreen()
{
    const QRect area = screen()->availableGeometry();
    const int excess = frameGeometry().bottom() - area.bottom();
    if (excess > 0)
        move(x(), std::max(area.top(), y() - excess - screenMargin));
}

// Sets the tab order to the reading order, as a control that came later may belong before others.
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
    // The view itself gets the focus, so no control is marked until Tab is pressed.
    if (!focusWidget())
        tree->widget()->setFocus();
    QDialog::showEvent(event);
}

bool ViewWindow::event(QEvent* event)
{
    const bool isHandled = QDialog::event(event);
    if (event->type() == QEvent::ApplicationFontChange || event->type() == QEvent::FontChange) {
        isFontOutdated = true;
        drawSoon();
    }
    return isHandled;
}

} // namespace stemvault::windows
