#pragma once

#include "Platform/View.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace stemvault {

/// What a window's frame offers; combined with |. A window manager may offer more.
namespace WindowStyleMask {
inline constexpr std::uint32_t Titled = 0x1;
inline constexpr std::uint32_t Closable = 0x2;
} // namespace WindowStyleMask

/// A window that shows a view. Its size follows the view and is limited by the screen. When the
/// user closes it, it is hidden, keeps its content and can be shown again. Main thread only. The
/// caller owns it; destroying it removes it from the screen.
class Window {
public:
    Window() = default;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    virtual ~Window() = default;

    virtual void setTitle(const std::string& title) = 0;

    /// Sets what the frame offers; called before the window is shown for the first time.
    virtual void setStyleMask(std::uint32_t mask) = 0;

    /// Draws the view to determine its size and moves the window to the middle of the screen that
    /// the pointer is on. Desktops that place windows themselves ignore the move. The window then
    /// stays where the user leaves it.
    virtual void center() = 0;

    /// Shows the window in front of the program's other windows, redrawn if it was hidden, and
    /// gives it the keyboard focus. A desktop may refuse the focus to a program that is not in
    /// front.
    virtual void makeKeyAndOrderFront() = 0;

    /// Schedules a redraw of a visible window from the event loop, never inside this call; several
    /// calls in a row cause one redraw. The keyboard focus and the scroll position are kept. Does
    /// nothing for a hidden window, because showing it redraws it.
    virtual void setNeedsDisplay() = 0;
};

/// Creates windows. Main thread only.
class Windows {
public:
    virtual ~Windows() = default;

    /// Creates a window, not yet shown; never null. `body` is kept as long as the window exists and
    /// called on the main thread for every drawing. It returns a Stack, must be quick, and must not
    /// draw or destroy the window.
    [[nodiscard]] virtual std::unique_ptr<Window> window(std::function<View()> body) = 0;
};

} // namespace stemvault
