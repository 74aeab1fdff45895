#pragma once

#include "LinuxDesktop/Windows/ViewTree.h"
#include "Platform/Windows.h"

#include <QDialog>

#include <functional>
#include <memory>

namespace stemvault::windows {

/// A window that shows a view. It is as large as the view requires, if the screen allows. Otherwise
/// the lists in it scroll, or the whole view does if it is too high even with short lists. A window
/// that grows is moved up so that it stays on the screen.
class ViewWindow final : public QDialog {
public:
    explicit ViewWindow(std::function<View()> content);
    ~ViewWindow() override;

    void draw();

    /// Draws from the event loop, once for any number of calls. A hidden window is not drawn until
    /// it is shown.
    void drawSoon();

protected:
    void showEvent(QShowEvent* event) override;
    bool event(QEvent* event) override;

private:
    void fit();
    [[nodiscard]] bool shortenLists(int available);
    void limitLists(int height);
    void moveOntoScreen();
    [[nodiscard]] int frameHeight() const;
    [[nodiscard]] int availableHeight() const;
    [[nodiscard]] int wholeHeight() const;
    void keepTabOrder();
    void keepInSight(QWidget* focused);

    std::function<View()> body;
    std::unique_ptr<ViewTree> tree;
    QScrollArea* scroll;
    bool isDrawingDue = false;
    bool isFontOutdated = false; ///< The tree was made for a font that is no longer in use.
};

} // namespace stemvault::windows
