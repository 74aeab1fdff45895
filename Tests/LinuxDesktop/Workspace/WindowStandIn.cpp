// Stands in for an X11 application: prints its process ID, then reads commands, one per line, from
// the pipe that its argument names. "open" opens a window and prints "opened", "close" closes the
// latest one, and "title TEXT" changes the title of the first one. Pairs of a property and its
// value may follow "open"; the process ID "own" is the program's own.

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/utsname.h>
#include <unistd.h>
#include <vector>

namespace {

void setText(
    xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property, std::string_view text)
{
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, property, XCB_ATOM_STRING, 8,
        static_cast<std::uint32_t>(text.size()), text.data());
}

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name)
{
    const auto cookie =
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    auto* const reply = xcb_intern_atom_reply(connection, cookie, nullptr);
    const xcb_atom_t found = reply == nullptr ? xcb_atom_t { XCB_ATOM_NONE } : reply->atom;
    std::free(reply); // NOLINT(*-no-malloc): xcb allocates replies with malloc.
    return found;
}

void setProperty(xcb_connection_t* connection, xcb_window_t window, const std::string& name,
    const std::string& value)
{
    if (name.starts_with("WM_"))
        return setText(connection, window, atom(connection, name), value);
    const auto set = [&](xcb_atom_t type, std::uint32_t word) {
        xcb_change_property(
            connection, XCB_PROP_MODE_REPLACE, window, atom(connection, name), type, 32, 1, &word);
    };
    if (name == "_NET_WM_PID")
        set(XCB_ATOM_CARDINAL,
            static_cast<std::uint32_t>(value == "own" ? getpid() : std::stoi(value)));
    else
        set(XCB_ATOM_ATOM, atom(connection, value));
}

void open(xcb_connection_t* connection, xcb_window_t window, std::istream& properties)
{
    const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen.root, 0, 0, 200, 100, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual, 0, nullptr);
    setText(connection, window, XCB_ATOM_WM_CLASS, { "stand-in\0Stand-In\0", 18 });
    utsname machine {};
    uname(&machine);
    setText(connection, window, XCB_ATOM_WM_CLIENT_MACHINE, machine.nodename);
    for (std::string name, value; properties >> name >> value;)
        setProperty(connection, window, name, value);
    xcb_map_window(connection, window);
}

} // namespace

int main(int /*count*/, char** arguments)
{
    std::cout << getpid() << std::endl;
    std::fstream commands(arguments[1]); // Open for writing too, so that it never ends.
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    std::vector<xcb_window_t> windows;
    constexpr std::string_view opening = "open";
    constexpr std::string_view title = "title ";
    for (std::string line; std::getline(commands, line); xcb_flush(connection)) {
        if (line.starts_with(opening)) {
            windows.push_back(xcb_generate_id(connection));
            std::istringstream properties(line.substr(opening.size()));
            open(connection, windows.back(), properties);
            atom(connection, "WM_NAME"); // Waits until the server has done all this.
            std::cout << "opened" << std::endl;
        } else if (line.starts_with(title)) {
            setText(connection, windows.front(), atom(connection, "_NET_WM_NAME"),
                line.substr(title.size()));
        } else {
            xcb_destroy_window(connection, windows.back());
            windows.pop_back();
        }
    }
}
