#include "LinuxDesktop/Workspace/X11Windows.h"

#include <xcb/res.h>

#include <algorithm>
#include <set>
#include <span>
#include <string_view>
#include <utility>

namespace stemvault::workspace {

namespace {

constexpr std::uint32_t maxWords = 16384; // Per property; more windows than any user has.

/// The values of a property of 32-bit items; none if it is absent or has another format.
std::span<const std::uint32_t> words(const xcb_get_property_reply_t* reply)
{
    if (reply == nullptr || reply->format != 32)
        return {};
    const auto* const first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply));
    return { first, reply->value_len };
}

std::string_view bytes(const xcb_get_property_reply_t* reply)
{
    if (reply == nullptr || reply->format != 8)
        return {};
    return { static_cast<const char*>(xcb_get_property_value(reply)), reply->value_len };
}

bool holds(const xcb_get_property_reply_t* reply, xcb_atom_t atom)
{
    return std::ranges::find(words(reply), atom) != words(reply).end();
}

bool isThere(const xcb_get_property_reply_t* reply)
{
    return reply != nullptr && reply->type != XCB_NONE;
}

std::string_view beforeNul(std::string_view text)
{
    return text.substr(0, text.find('\0'));
}

} // namespace

void X11Windows::askProperty(xcb_window_t window, xcb_atom_t property, PropertyAnswer answered)
{
    const auto cookie = xcb_get_property(
        connection.get(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, maxWords);
    questions.push_back({ cookie.sequence, [answered = std::move(answered)](const void* reply) {
                             answered(static_cast<const xcb_get_property_reply_t*>(reply));
                         } });
}

void X11Windows::askClientList()
{
    askProperty(root, atoms[ClientList], [this](const auto* reply) { takeClientList(reply); });
}

void X11Windows::askActiveWindow()
{
    askProperty(root, atoms[ActiveWindow], [this](const auto* reply) { takeActiveWindow(reply); });
}

void X11Windows::takeClientList(const xcb_get_property_reply_t* reply)
{
    const bool wasTold = isPublished();
    hasClientList = isThere(reply);
    const auto list = words(reply);
    const std::set<xcb_window_t> present(list.begin(), list.end());
    const auto isGone = [&](const auto& window) { return !present.contains(window.first); };
    std::erase_if(asked, isGone);
    std::erase_if(titles, [&](const auto& title) { return !present.contains(title.first.first); });
    if (std::erase_if(listed, isGone) > 0 || isPublished() != wasTold)
        pending.list = true;
    for (const xcb_window_t window : present)
        if (!listed.contains(window) && asked.emplace(window, Asked {}).second)
            askAbout(window);
}

void X11Windows::takeActiveWindow(const xcb_get_property_reply_t* reply)
{
    const bool wasTold = isPublished();
    hasActiveWindow = isThere(reply);
    if (isPublished() != wasTold)
        pending.list = true;
    // A switch passes through "none", and closing a menu can return to the same window.
    const auto window = words(reply).empty() ? xcb_window_t { 0 } : words(reply).front();
    if (window == 0 || window == active)
        return;
    active = window;
    pending.active = true;
}

void X11Windows::askAbout(xcb_window_t window)
{
    // A window may disappear, and be listed again, before its answers arrive.
    const auto ask = [&](xcb_atom_t property, auto taken) {
        askProperty(window, property, [this, window, taken](const auto* reply) {
            if (const auto at = asked.find(window); at != asked.end() && reply != nullptr)
                taken(at->second, reply);
        });
    };
    if (canAskOwner)
        askOwner(window);
    ask(atoms[WindowPid], [](Asked& about, const auto* reply) {
        if (!words(reply).empty())
            about.claimedProcess = static_cast<pid_t>(words(reply).front());
    });
    ask(XCB_ATOM_WM_CLIENT_MACHINE, [this](Asked& about, const auto* reply) {
        // The number is valid only on the machine that assigned it.
        if (about.found.process == 0 && beforeNul(bytes(reply)) == machine)
            about.found.process = about.claimedProcess;
    });
    ask(XCB_ATOM_WM_CLASS, [](Asked& about, const auto* reply) {
        const auto both = bytes(reply);
        about.found.instance = beforeNul(both);
        about.found.className =
            beforeNul(both.substr(std::min(about.found.instance.size() + 1, both.size())));
    });
    ask(atoms[WindowType], [this](Asked& about, const auto* reply) {
        about.found.isOrdinary = words(reply).empty() || holds(reply, atoms[WindowTypeNormal]);
    });
    askProperty(window, atoms[WindowState],
        [this, window](const auto* reply) { takeState(window, reply); });
}

/// The server knows the process at the other end of the window's connection, even if that process
/// is in a sandbox.
void X11Windows::askOwner(xcb_window_t window)
{
    const xcb_res_client_id_spec_t which { window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID };
    const auto cookie = xcb_res_query_client_ids(connection.get(), 1, &which);
    questions.push_back(
        { cookie.sequence, [this, window](const void* answer) {
             const auto at = asked.find(window);
             const auto* const reply = static_cast<const xcb_res_query_client_ids_reply_t*>(answer);
             if (at == asked.end() || reply == nullptr)
                 return;
             for (auto ids = xcb_res_query_client_ids_ids_iterator(reply); ids.rem > 0;
                  xcb_res_client_id_value_next(&ids))
                 if ((ids.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0
                     && xcb_res_client_id_value_value_length(ids.data) > 0)
                     at->second.found.process =
                         static_cast<pid_t>(*xcb_res_client_id_value_value(ids.data));
         } });
}

void X11Windows::followTitle(xcb_window_t window)
{
    if (!listed.contains(window) || titles.contains({ window, XCB_ATOM_WM_NAME }))
        return;
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection.get(), window, XCB_CW_EVENT_MASK, &mask);
    for (const xcb_atom_t property : { atoms[WindowName], xcb_atom_t { XCB_ATOM_WM_NAME } })
        askTitle(window, property);
    xcb_flush(connection.get());
}

void X11Windows::askTitle(xcb_window_t window, xcb_atom_t property)
{
    const TitleKey key { window, property };
    titles[key].isAsked = true;
    askProperty(window, property, [this, key](const auto* reply) { takeTitle(key, reply); });
}

/// Keeps at most one request for a title pending, however often the title changes.
void X11Windows::noteTitleChange(xcb_window_t window, xcb_atom_t property)
{
    const auto at = titles.find({ window, property });
    if (at == titles.end())
        return;
    at->second.isOutdated = at->second.isAsked;
    if (!at->second.isAsked)
        askTitle(window, property);
}

void X11Windows::takeTitle(const TitleKey& key, const xcb_get_property_reply_t* reply)
{
    const auto at = titles.find(key);
    if (at == titles.end())
        return;
    Title& title = at->second;
    const auto before = std::exchange(title.text, std::string(bytes(reply)));
    if (before && before != title.text)
        pending.title = true;
    title.isAsked = false;
    if (std::exchange(title.isOutdated, false))
        askTitle(key.first, key.second);
}

/// Handles the last of a window's answers, after which the window is listed.
void X11Windows::takeState(xcb_window_t window, const xcb_get_property_reply_t* reply)
{
    auto about = asked.extract(window);
    if (about.empty())
        return;
    ClientWindow& found = about.mapped().found;
    found.isOrdinary = found.isOrdinary && !holds(reply, atoms[SkipTaskbar]);
    listed.insert_or_assign(window, std::move(found));
    pending.list = true;
}

} // namespace stemvault::workspace
