#pragma once

#include "Platform/View.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace stemvault {

/// What a window's frame offers.
namespace WindowStyleMask {
inline constexpr std::uint32_t Titled = 0x1;
inline constexpr std::uint32_t Closable = 0x2;
} // namespace WindowStyleMask

/// A window that is drawn from a view. It is as large as the view asks, closing it hides it, and
/// the program goes on. Main thread only.
class Window {
public:
    Window() = default;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    virtual ~Window() = default;

    virtual void setTitle(const std::string& title) = 0;
    virtual void setStyleMask(std::uint32_t mask) = 0;

    /// Puts it in the middle of the screen. From then on it stays where the user leaves it.
    virtual void center() = 0;

    /// Shows it in front of the program's other windows and gives it the keyboard.
    virtual void makeKeyAndOrderFront() = 0;

    /// Has it drawn again once the main queue comes to it; several calls in a row draw it once. The
    /// keyboard's place and the scroll position stay. A hidden window is drawn when it is shown.
    virtual void setNeedsDisplay() = 0;
};

class Windows {
public:
    virtual ~Windows() = default;

    /// A window, not yet shown, with this content. `body` is called for every drawing. Main thread
    /// only.
    [[nodiscard]] virtual std::unique_ptr<Window> window(std::function<View()> body) = 0;
};

} // namespace stemvault
