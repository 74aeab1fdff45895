#pragma once

#include "Courier/X11Display.h"

#include <optional>
#include <string>
#include <string_view>

namespace stemvault {

/// The X window that the user is working in.
class FocusedWindow {
public:
    /// Absent when no window, or a Wayland window, has the focus. `display` must outlive it.
    [[nodiscard]] static std::optional<FocusedWindow> of(const X11Display& display);

    /// In a terminal, Ctrl+C would interrupt the program that is running there.
    [[nodiscard]] bool isTerminal() const;

    /// Waits until the user has released all keys, because those of the hotkey would combine with
    /// ours. False when that takes too long.
    [[nodiscard]] bool waitForKeyboard(Deadline deadline) const;

    /// Presses Ctrl+C. False when the server or the keyboard layout does not allow it.
    [[nodiscard]] bool pressCopy() const;

private:
    FocusedWindow(const X11Display& xDisplay, std::string itsClass)
        : display(&xDisplay), className(std::move(itsClass))
    {
    }

    const X11Display* display;
    std::string className;
};

/// Whether a window with this WM_CLASS is a terminal.
[[nodiscard]] bool isTerminalClass(std::string_view windowClass);

} // namespace stemvault
