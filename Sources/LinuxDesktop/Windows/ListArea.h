#pragma once

#include <QScrollArea>

namespace stemvault::windows {

/// A scroll area that is as high as its rows, up to a limit; beyond that it scrolls.
class ListArea final : public QScrollArea {
public:
    ListArea();
    void setLimit(int height);
    [[nodiscard]] int wholeHeight(int width) const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;

private:
    int limit = QWIDGETSIZE_MAX;
};

} // namespace stemvault::windows
