#include "Courier/X11Clipboard.h"

#include <xcb/xfixes.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace stemvault {

namespace {

// These targets are not content: they are queries about it or requests to its owner.
constexpr std::array<std::string_view, 7> questions { "TARGETS", "MULTIPLE", "TIMESTAMP",
    "SAVE_TARGETS", "DELETE", "INSERT_SELECTION", "INSERT_PROPERTY" };

std::vector<xcb_atom_t> atomsIn(const X11Property& property)
{
    std::vector<xcb_atom_t> atoms(property.bits == 32 ? property.bytes.size() / 4 : 0);
    if (!atoms.empty())
        std::memcpy(atoms.data(), property.bytes.data(), atoms.size() * 4);
    return atoms;
}

} // namespace

X11Clipboard::X11Clipboard(const X11Display& xDisplay)
    : display(xDisplay), clipboard(display.atom("CLIPBOARD")),
      place(display.atom("STEMVAULT_CLIPBOARD")), targets(display.atom("TARGETS")),
      portions(display.atom("INCR"))
{
    const auto version = xcb_xfixes_query_version(display.get(), 1, 0);
    takeOwnership(xcb_xfixes_query_version_reply(display.get(), version, nullptr));
}

bool X11Clipboard::hasOwner() const
{
    const auto reply = takeOwnership(xcb_get_selection_owner_reply(
        display.get(), xcb_get_selection_owner(display.get(), clipboard), nullptr));
    return reply && reply->owner != XCB_NONE;
}

std::optional<X11Property> X11Clipboard::read(std::string_view format, Deadline deadline) const
{
    return convert(display.atom(format), deadline);
}

std::optional<X11Property> X11Clipboard::convert(xcb_atom_t format, Deadline deadline) const
{
    xcb_delete_property(display.get(), display.ownWindow(), place);
    xcb_convert_selection(
        display.get(), display.ownWindow(), clipboard, format, place, display.time());
    while (const auto event = display.nextEvent(deadline)) {
        const auto* const notice =
            reinterpret_cast<const xcb_selection_notify_event_t*>(event.get());
        if (kindOf(*event) != XCB_SELECTION_NOTIFY || notice->target != format)
            continue;
        if (notice->property == XCB_NONE)
            return std::nullopt;
        auto value = display.property(display.ownWindow(), place, true);
        return value && value->type == portions ? readPortions(deadline) : value;
    }
    return std::nullopt;
}

// Large content arrives in portions. The owner sends the next one when the previous one has been
// deleted, and an empty one at the end.
std::optional<X11Property> X11Clipboard::readPortions(Deadline deadline) const
{
    X11Property whole;
    while (const auto event = display.nextEvent(deadline)) {
        const auto* const change =
            reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
        if (kindOf(*event) != XCB_PROPERTY_NOTIFY || change->atom != place
            || change->state != XCB_PROPERTY_NEW_VALUE)
            continue;
        const auto portion = display.property(display.ownWindow(), place, true);
        if (!portion)
            continue;
        if (portion->bytes.empty())
            return whole;
        whole.type = portion->type;
        whole.bits = portion->bits;
        whole.bytes += portion->bytes;
        if (whole.bytes.size() > display.largestProperty())
            return std::nullopt;
    }
    return std::nullopt;
}

void X11Clipboard::watch() const
{
    xcb_xfixes_select_selection_input(display.get(), display.ownWindow(), clipboard,
        XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
}

bool X11Clipboard::waitForChange(Deadline deadline) const
{
    const auto* const extension = xcb_get_extension_data(display.get(), &xcb_xfixes_id);
    if (extension == nullptr || extension->present == 0)
        return false;
    while (const auto event = display.nextEvent(deadline)) {
        const auto* const change =
            reinterpret_cast<const xcb_xfixes_selection_notify_event_t*>(event.get());
        if (kindOf(*event) == extension->first_event + XCB_XFIXES_SELECTION_NOTIFY
            && change->owner != XCB_NONE)
            return true;
    }
    return false;
}

std::vector<xcb_atom_t> X11Clipboard::formatsWorthKeeping(Deadline deadline) const
{
    const auto offered = convert(targets, deadline);
    std::vector<xcb_atom_t> formats = offered ? atomsIn(*offered) : std::vector<xcb_atom_t>();
    const bool hasPicture = std::ranges::find(formats, display.atom("image/png")) != formats.end();
    std::erase_if(formats, [&](xcb_atom_t format) {
        const std::string name = display.atomName(format);
        // Owners offer the same picture in many encodings; one is enough.
        const bool isOtherPicture = hasPicture && name.starts_with("image/") && name != "image/png";
        return isOtherPicture || std::ranges::find(questions, name) != questions.end();
    });
    return formats;
}

X11Clipboard::Content X11Clipboard::content(Deadline deadline) const
{
    Content items;
    if (!hasOwner())
        return items;
    for (const xcb_atom_t format : formatsWorthKeeping(deadline))
        if (auto value = convert(format, deadline))
            items.push_back({ format, std::move(*value) });
    return items;
}

void X11Clipboard::put(const Content& items) const
{
    const xcb_window_t owner =
        items.empty() ? static_cast<xcb_window_t>(XCB_NONE) : display.ownWindow();
    xcb_set_selection_owner(display.get(), owner, clipboard, display.time());
    xcb_flush(display.get());
}

void X11Clipboard::serve(const Content& items) const
{
    while (const auto event = display.nextEvent(std::nullopt)) {
        if (kindOf(*event) == XCB_SELECTION_CLEAR)
            return;
        if (kindOf(*event) == XCB_SELECTION_REQUEST)
            answer(*reinterpret_cast<const xcb_selection_request_event_t*>(event.get()), items);
    }
}

void X11Clipboard::answer(const xcb_selection_request_event_t& request, const Content& items) const
{
    // Old clients let the owner choose the property.
    const xcb_atom_t property = request.property == XCB_NONE ? request.target : request.property;
    const bool isGiven = give(request.requestor, property, request.target, items);
    // Every event is 32 bytes long on the wire; the struct is shorter.
    union {
        xcb_selection_notify_event_t notice;
        std::array<char, 32> bytes;
    } sent {};
    sent.notice.response_type = XCB_SELECTION_NOTIFY;
    sent.notice.time = request.time;
    sent.notice.requestor = request.requestor;
    sent.notice.selection = request.selection;
    sent.notice.target = request.target;
    sent.notice.property = isGiven ? property : static_cast<xcb_atom_t>(XCB_NONE);
    xcb_send_event(display.get(), 0, request.requestor, 0, sent.bytes.data());
}

bool X11Clipboard::give(
    xcb_window_t window, xcb_atom_t property, xcb_atom_t format, const Content& items) const
{
    if (format == targets) {
        std::vector<xcb_atom_t> formats { targets };
        for (const Item& item : items)
            formats.push_back(item.format);
        xcb_change_property(display.get(), XCB_PROP_MODE_REPLACE, window, property, XCB_ATOM_ATOM,
            32, static_cast<std::uint32_t>(formats.size()), formats.data());
        return true;
    }
    const auto item = std::ranges::find(items, format, &Item::format);
    if (item == items.end())
        return false;
    const X11Property& value = item->value;
    xcb_change_property(display.get(), XCB_PROP_MODE_REPLACE, window, property, value.type,
        value.bits, static_cast<std::uint32_t>(value.bytes.size() / (value.bits / 8)),
        value.bytes.data());
    return true;
}

} // namespace stemvault
