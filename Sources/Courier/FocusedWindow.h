#pragma once

#include "Courier/X11Display.h"

#include <optional>
#include <string>
#include <string_view>

namespace stemvault {

/// The X window that the user works in.
class FocusedWindow {
public:
    /// Absent when no window has the keyboard, or one of Wayland's own. `display` must outlive it.
    [[nodiscard]] static std::optional<FocusedWindow> of(const X11Display& display);

    /// A terminal takes Ctrl+C for an order to stop what runs in it.
    [[nodiscard]] bool isTerminal() const;

    /// Waits until the user has let go of all keys: those of the hotkey would mix with ours.
    [[nodiscard]] bool waitForKeyboard(Deadline deadline) const;

    /// Presses Ctrl+C. False when the server or the keyboard's layout does not allow it.
    [[nodiscard]] bool pressCopy() const;

private:
    FocusedWindow(const X11Display& xDisplay, std::string itsClass)
        : display(&xDisplay), className(std::move(itsClass))
    {
    }

    const X11Display* display;
    std::string className;
};

/// By the name of its class, as "WM_CLASS" has it.
[[nodiscard]] bool isTerminalClass(std::string_view windowClass);

} // namespace stemvault
