#include "Courier/X11Display.h"

#include <algorithm>
#include <cstring>
#include <poll.h>
#include <utility>

namespace stemvault {

namespace {

constexpr std::size_t headOfRequest = 64; ///< In bytes; a generous estimate.

xcb_window_t rootOf(xcb_connection_t* connection, int screen)
{
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screen > 0 && screens.rem > 1; --screen)
        xcb_screen_next(&screens);
    return screens.data->root;
}

/// The timeout for poll(): in milliseconds, rounded up, or -1 for none.
int timeUntil(std::optional<Deadline> deadline)
{
    if (!deadline)
        return -1;
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::max<std::int64_t>(left.count(), 0));
}

} // namespace

std::unique_ptr<X11Display> X11Display::connect()
{
    int screen = 0;
    Connection connection(xcb_connect(nullptr, &screen));
    if (xcb_connection_has_error(connection.get()) != 0)
        return nullptr;
    return std::unique_ptr<X11Display>(new X11Display(std::move(connection), screen));
}

X11Display::X11Display(Connection made, int screen)
    : connection(std::move(made)), root(rootOf(get(), screen)), own(xcb_generate_id(get()))
{
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(get(), XCB_COPY_FROM_PARENT, own, root, -1, -1, 1, 1, 0,
        XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
}

xcb_atom_t X11Display::atom(std::string_view name) const
{
    const auto cookie =
        xcb_intern_atom(get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
    const auto reply = takeOwnership(xcb_intern_atom_reply(get(), cookie, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_NONE);
}

std::string X11Display::atomName(xcb_atom_t atom) const
{
    const auto reply =
        takeOwnership(xcb_get_atom_name_reply(get(), xcb_get_atom_name(get(), atom), nullptr));
    if (!reply)
        return {};
    const auto length = static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()));
    return { xcb_get_atom_name_name(reply.get()), length };
}

std::optional<X11Property> X11Display::property(
    xcb_window_t window, xcb_atom_t name, bool isDeleted) const
{
    const auto longest = static_cast<std::uint32_t>(largestProperty() / 4);
    const auto cookie = xcb_get_property(
        get(), isDeleted ? 1 : 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, longest);
    const auto reply = takeOwnership(xcb_get_property_reply(get(), cookie, nullptr));
    if (reply && reply->bytes_after > 0 && isDeleted)
        xcb_delete_property(get(), window, name);
    if (!reply || reply->type == XCB_NONE || reply->bytes_after > 0)
        return std::nullopt;
    const auto length = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
    const auto* const value = static_cast<const char*>(xcb_get_property_value(reply.get()));
    return X11Property { reply->type, reply->format, { value, length } };
}

std::uint32_t X11Display::firstItem(xcb_window_t window, std::string_view name) const
{
    std::uint32_t item = 0;
    const auto found = property(window, atom(name));
    if (found && found->bits == 32 && found->bytes.size() >= sizeof item)
        std::memcpy(&item, found->bytes.data(), sizeof item);
    return item;
}

std::size_t X11Display::largestProperty() const
{
    return std::size_t { xcb_get_maximum_request_length(get()) } * 4 - headOfRequest;
}

X11Display::Event X11Display::nextEvent(std::optional<Deadline> deadline) const
{
    xcb_flush(get());
    while (xcb_connection_has_error(get()) == 0) {
        if (Event event { xcb_poll_for_event(get()) })
            return event;
        pollfd socket { xcb_get_file_descriptor(get()), POLLIN, 0 };
        if (::poll(&socket, 1, timeUntil(deadline)) == 0)
            return nullptr;
    }
    return nullptr;
}

// The server sends its time with an event, so a property is changed to cause one.
xcb_timestamp_t X11Display::time() const
{
    using namespace std::chrono_literals;
    const xcb_atom_t marker = atom("STEMVAULT_TIME");
    xcb_change_property(get(), XCB_PROP_MODE_APPEND, own, marker, XCB_ATOM_INTEGER, 32, 0, nullptr);
    const Deadline deadline = std::chrono::steady_clock::now() + 1s;
    while (const Event event = nextEvent(deadline)) {
        const auto* const change =
            reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
        if (kindOf(*event) == XCB_PROPERTY_NOTIFY && change->atom == marker)
            return change->time;
    }
    return XCB_CURRENT_TIME;
}

} // namespace stemvault
