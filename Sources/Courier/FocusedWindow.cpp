#include "Courier/FocusedWindow.h"

#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <array>
#include <cctype>

namespace stemvault {

namespace {

constexpr std::array<std::string_view, 12> otherTerminalNames { "konsole", "yakuake", "guake",
    "tilda", "tilix", "alacritty", "kitty", "urxvt", "rxvt", "st-256color", "org.gnome.console",
    "ghostty" };

constexpr xcb_keysym_t controlKey = 0xFFE3;
constexpr xcb_keysym_t letterC = 'c';

xcb_window_t inputFocus(const X11Display& display)
{
    const auto reply = takeOwnership(
        xcb_get_input_focus_reply(display.get(), xcb_get_input_focus(display.get()), nullptr));
    const xcb_window_t window = reply ? reply->focus : static_cast<xcb_window_t>(XCB_NONE);
    return window == XCB_INPUT_FOCUS_POINTER_ROOT ? display.rootWindow() : window;
}

xcb_window_t parentOf(const X11Display& display, xcb_window_t window)
{
    const auto reply = takeOwnership(
        xcb_query_tree_reply(display.get(), xcb_query_tree(display.get(), window), nullptr));
    return reply ? reply->parent : static_cast<xcb_window_t>(XCB_NONE);
}

/// Prefers the window manager's answer to the server's: toolkits give the focus to child windows.
xcb_window_t activeWindow(const X11Display& display)
{
    if (display.firstItem(display.rootWindow(), "_NET_SUPPORTING_WM_CHECK") != XCB_NONE)
        return display.firstItem(display.rootWindow(), "_NET_ACTIVE_WINDOW");
    return inputFocus(display);
}

std::string windowClass(const X11Display& display, xcb_window_t window)
{
    const auto names = display.property(window, XCB_ATOM_WM_CLASS);
    if (!names)
        return {};
    std::string text = names->bytes;
    std::ranges::replace(text, '\0', ' ');
    return text;
}

/// The active group of the keyboard layout. Each group has two columns in the keyboard mapping.
std::size_t currentGroup(const X11Display& display)
{
    const auto reply = takeOwnership(xcb_query_pointer_reply(
        display.get(), xcb_query_pointer(display.get(), display.rootWindow()), nullptr));
    return reply ? (reply->mask >> 13) & 3 : 0;
}

/// The key that produces a symbol, preferably in `group`; 0 if there is none.
xcb_keycode_t keyOf(const X11Display& display, xcb_keysym_t symbol, std::size_t group)
{
    const xcb_setup_t* const setup = xcb_get_setup(display.get());
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto reply = takeOwnership(xcb_get_keyboard_mapping_reply(display.get(),
        xcb_get_keyboard_mapping(display.get(), setup->min_keycode, count), nullptr));
    if (!reply)
        return 0;
    const std::size_t width = reply->keysyms_per_keycode;
    const xcb_keysym_t* const symbols = xcb_get_keyboard_mapping_keysyms(reply.get());
    std::size_t found = 0;
    for (std::size_t key = 0; key < count; ++key)
        for (std::size_t column = 0; column < width; ++column) {
            if (symbols[key * width + column] != symbol)
                continue;
            if (column / 2 == group)
                return static_cast<xcb_keycode_t>(setup->min_keycode + key);
            if (found == 0)
                found = setup->min_keycode + key;
        }
    return static_cast<xcb_keycode_t>(found);
}

bool isAnyKeyDown(const X11Display& display)
{
    const auto reply = takeOwnership(
        xcb_query_keymap_reply(display.get(), xcb_query_keymap(display.get()), nullptr));
    return reply && std::ranges::any_of(reply->keys, [](auto keys) { return keys != 0; });
}

/// Selects raw events: they arrive even while another client has grabbed the keyboard, as window
/// managers do while a hotkey is held.
void watchKeys(const X11Display& display)
{
    const auto version = xcb_input_xi_query_version(display.get(), 2, 1);
    takeOwnership(xcb_input_xi_query_version_reply(display.get(), version, nullptr));
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } const events { { XCB_INPUT_DEVICE_ALL_MASTER, 1 }, XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE };
    xcb_input_xi_select_events(display.get(), display.rootWindow(), 1, &events.head);
}

} // namespace

std::optional<FocusedWindow> FocusedWindow::of(const X11Display& display)
{
    for (xcb_window_t window = activeWindow(display);
         window != XCB_NONE && window != display.rootWindow(); window = parentOf(display, window))
        if (std::string name = windowClass(display, window); !name.empty())
            return FocusedWindow(display, std::move(name));
    return std::nullopt;
}

bool FocusedWindow::isTerminal() const
{
    return isTerminalClass(className);
}

bool FocusedWindow::waitForKeyboard(Deadline deadline) const
{
    watchKeys(*display);
    while (isAnyKeyDown(*display))
        if (!display->nextEvent(deadline))
            return false;
    return true;
}

bool FocusedWindow::pressCopy() const
{
    xcb_connection_t* const connection = display->get();
    const auto* const extension = xcb_get_extension_data(connection, &xcb_test_id);
    const xcb_keycode_t control = keyOf(*display, controlKey, 0);
    const xcb_keycode_t letter = keyOf(*display, letterC, currentGroup(*display));
    if (extension == nullptr || extension->present == 0 || control == 0 || letter == 0)
        return false;
    const struct {
        std::uint8_t kind;
        xcb_keycode_t key;
    } steps[] = { { XCB_KEY_PRESS, control }, { XCB_KEY_PRESS, letter },
        { XCB_KEY_RELEASE, letter }, { XCB_KEY_RELEASE, control } };
    for (const auto& step : steps)
        xcb_test_fake_input(connection, step.kind, step.key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    xcb_flush(connection);
    return true;
}

bool isTerminalClass(std::string_view windowClass)
{
    std::string name(windowClass);
    std::ranges::transform(
        name, name.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return name.find("term") != std::string::npos
        || std::ranges::any_of(otherTerminalNames,
            [&name](std::string_view other) { return name.find(other) != std::string::npos; });
}

} // namespace stemvault
