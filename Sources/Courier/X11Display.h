#pragma once

#include "Foundation/Owned.h"

#include <xcb/xcb.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace stemvault {

using Deadline = std::chrono::steady_clock::time_point;

struct X11Property {
    xcb_atom_t type = XCB_NONE;
    std::uint8_t bits = 8; ///< Of each item.
    std::string bytes;
};

/// A connection to the X server, with an invisible window.
class X11Display {
public:
    /// Null when there is no X server.
    [[nodiscard]] static std::unique_ptr<X11Display> connect();

    [[nodiscard]] xcb_connection_t* get() const { return connection.get(); }
    [[nodiscard]] xcb_window_t rootWindow() const { return root; }
    [[nodiscard]] xcb_window_t ownWindow() const { return own; }

    [[nodiscard]] xcb_atom_t atom(std::string_view name) const;
    [[nodiscard]] std::string atomName(xcb_atom_t atom) const;

    /// Absent when the window has no such property, or when it is larger than largestProperty().
    [[nodiscard]] std::optional<X11Property> property(
        xcb_window_t window, xcb_atom_t name, bool isDeleted = false) const;
    /// The first item of a property that holds windows or atoms; 0 without one.
    [[nodiscard]] std::uint32_t firstItem(xcb_window_t window, std::string_view name) const;
    /// The number of bytes that fit into one request to the server.
    [[nodiscard]] std::size_t largestProperty() const;

    using Event = Owned<xcb_generic_event_t>;
    /// Null when the deadline has passed or the server is gone.
    [[nodiscard]] Event nextEvent(std::optional<Deadline> deadline) const;

    /// The server's current time, which some requests need.
    [[nodiscard]] xcb_timestamp_t time() const;

private:
    struct Disconnect {
        void operator()(xcb_connection_t* ended) const { xcb_disconnect(ended); }
    };
    using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

    X11Display(Connection made, int screen);

    Connection connection;
    xcb_window_t root = XCB_NONE;
    xcb_window_t own = XCB_NONE;
};

/// The type of an event, without the flag that marks an event sent by another client.
[[nodiscard]] inline std::uint8_t kindOf(const xcb_generic_event_t& event)
{
    return event.response_type & 0x7F;
}

} // namespace stemvault
