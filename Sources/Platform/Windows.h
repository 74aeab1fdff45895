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

    /// Draws the view to know its size and moves the window to the middle of the screen that the
    /// pointer is on. Desktops that place windows themselves ignore the move. Afterwards it stays
    /// where the user leaves it.
    virtual void center() = 0;

    /// Shows it, drawn anew if it was hidden, in front of the program's other windows, and gives it
    /// the keyboard. A desktop may refuse the keyboard to a program that is not in front.
    virtual void makeKeyAndOrderFront() = 0;

    /// Has a visible window drawn again from the event loop, never inside this call; several calls
    /// in a row draw it once. The keyboard's focus and the scroll position stay. On a hidden window
    /// it does nothing, because showing one draws it.
    virtual void setNeedsDisplay() = 0;
};

/// Makes windows. Main thread only.
class Windows {
public:
    virtual ~Windows() = default;

    /// Makes a window, not yet shown; never null. `body` is kept as long as the window, and called
    /// on the main thread for every drawing. It returns a Stack, must be quick, and must not draw
    /// or destroy the window.
    [[nodiscard]] virtual std::unique_ptr<Window> window(std::function<View()> body) = 0;
};

} // namespace stemvault
