#include "LinuxDesktop/Windows/QtWindows.h"

#include "LinuxDesktop/Windows/DisplayText.h"
#include "LinuxDesktop/Windows/SymbolImage.h"
#include "LinuxDesktop/Windows/ViewWindow.h"
#include "LinuxDesktop/Windows/WindowActivation.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QShortcut>

#include <utility>

namespace stemvault::windows {

namespace {

class QtWindow final : public Window {
public:
    explicit QtWindow(std::function<View()> body) : window(std::move(body))
    {
        QObject::connect(new QShortcut(QKeySequence::Close, &window), &QShortcut::activated,
            &window, &QDialog::reject);
    }

    void setTitle(const std::string& title) override { window.setWindowTitle(displayLine(title)); }

    void setStyleMask(std::uint32_t mask) override
    {
        Qt::WindowFlags frame = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowSystemMenuHint;
        frame.setFlag(Qt::WindowTitleHint, mask & WindowStyleMask::Titled);
        frame.setFlag(Qt::WindowCloseButtonHint, mask & WindowStyleMask::Closable);
        window.setWindowFlags(frame);
    }

    // Uses the screen that holds the pointer.
    void center() override
    {
        window.draw();
        QScreen* under = QGuiApplication::screenAt(QCursor::pos());
        const QRect area = (under ? under : QGuiApplication::primaryScreen())->availableGeometry();
        window.move(area.center() - window.rect().center());
    }

    void makeKeyAndOrderFront() override
    {
        if (!window
                 .isVisible()) // Since Qt 6.8 a dialog that is visible is shown, and drawn, again.
            window.show();
        bringToFront(window);
    }

    void setNeedsDisplay() override { window.drawSoon(); }

    [[nodiscard]] QWidget& widget() { return window; }

private:
    ViewWindow window;
};

} // namespace

QtWindows::QtWindows(std::string symbolFolder, std::function<void(QWidget& window)> prepare)
    : symbols(std::move(symbolFolder)), prepareWindow(std::move(prepare))
{
}

std::unique_ptr<Window> QtWindows::window(std::function<View()> body)
{
    setSymbolFolder(symbols);
    auto made = std::make_unique<QtWindow>(std::move(body));
    prepareWindow(made->widget());
    return made;
}

} // namespace stemvault::windows
