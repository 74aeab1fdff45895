#include "LinuxDesktop/Windows/ListArea.h"

#include <QLayout>

namespace stemvault::windows {

ListArea::ListArea()
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus); // Its rows take the focus.
    viewport()->setAutoFillBackground(false);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void ListArea::setLimit(int height)
{
    limit = height;
    updateGeometry();
}

int ListArea::wholeHeight(int width) const
{
    if (!widget() || !widget()->layout())
        return 0;
    return widget()->layout()->totalHeightForWidth(width);
}

int ListArea::heightForWidth(int width) const
{
    const int whole = wholeHeight(width);
    if (whole <= limit)
        return whole;
    return limit;
}

QSize ListArea::sizeHint() const
{
    return { 100, heightForWidth(width()) };
}

} // namespace stemvault::windows
