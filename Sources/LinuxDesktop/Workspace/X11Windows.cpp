#include "LinuxDesktop/Workspace/X11Windows.h"

#include <QObject>
#include <xcb/res.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <set>
#include <span>
#include <string_view>
#include <sys/utsname.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace stemvault {

namespace {

constexpr std::uint32_t mostWords = 16384; // Of a property: more windows than anyone has.

template <typename Reply> using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply> Owned<Reply> owned(Reply* reply)
{
    return { reply, &std::free };
}

/// The values of a property of 32-bit items; none when it is absent or of another form.
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

std::string_view beforeNul(std::string_view text)
{
    return text.substr(0, text.find('\0'));
}

std::string hostName()
{
    utsname name {};
    return ::uname(&name) == 0 ? name.nodename : std::string();
}

} // namespace

std::unique_ptr<X11Windows> X11Windows::connect(
    const std::string& display, std::function<void(Change)> changed, std::function<void()> lost)
{
    int screen = 0;
    Connection connection(xcb_connect(display.c_str(), &screen));
    if (xcb_connection_has_error(connection.get()) != 0)
        return nullptr;
    return std::unique_ptr<X11Windows>(
        new X11Windows(std::move(connection), screen, std::move(changed), std::move(lost)));
}

X11Windows::X11Windows(
    Connection made, int screen, std::function<void(Change)> onChange, std::function<void()> onLost)
    : changed(std::move(onChange)), lost(std::move(onLost)), connection(std::move(made)),
      machine(hostName()), notifier(std::make_unique<QSocketNotifier>(
                               xcb_get_file_descriptor(connection.get()), QSocketNotifier::Read))
{
    xcb_prefetch_extension_data(connection.get(), &xcb_res_id);
    internAtoms();
    const auto* const extension = xcb_get_extension_data(connection.get(), &xcb_res_id);
    canAskOwner = extension != nullptr && extension->present != 0;
    QObject::connect(
        notifier.get(), &QSocketNotifier::activated, notifier.get(), [this] { handleSocket(); });
    watchRootWindow(screen);
}

void X11Windows::internAtoms()
{
    constexpr std::array<std::string_view, AtomCount> names { "_NET_CLIENT_LIST",
        "_NET_ACTIVE_WINDOW", "_NET_WM_PID", "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_NORMAL",
        "_NET_WM_STATE", "_NET_WM_STATE_SKIP_TASKBAR" };
    std::array<xcb_intern_atom_cookie_t, AtomCount> cookies {};
    for (std::size_t i = 0; i < AtomCount; ++i)
        cookies[i] = xcb_intern_atom(
            connection.get(), 0, static_cast<std::uint16_t>(names[i].size()), names[i].data());
    for (std::size_t i = 0; i < AtomCount; ++i)
        if (const auto reply = owned(xcb_intern_atom_reply(connection.get(), cookies[i], nullptr)))
            atoms[i] = reply->atom;
}

void X11Windows::watchRootWindow(int screen)
{
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
    for (; screen > 0 && screens.rem > 1; --screen)
        xcb_screen_next(&screens);
    if (screens.rem == 0)
        return;
    root = screens.data->root;
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection.get(), root, XCB_CW_EVENT_MASK, &mask);
    askClientList();
    askActiveWindow();
    xcb_flush(connection.get());
    // What xcb read meanwhile is in its own memory, where the socket does not tell of it.
    QMetaObject::invokeMethod(
        notifier.get(), [this] { handleSocket(); }, Qt::QueuedConnection);
}

void X11Windows::handleSocket()
{
    if (!notifier->isEnabled())
        return;
    while (takeWhatIsThere()) { }
    if (xcb_connection_has_error(connection.get()) != 0)
        return handleLoss();
    const Change news = std::exchange(pending, {});
    if (news.list || news.active)
        changed(news);
}

/// Each of these calls may read from the socket what only another one hands out; what is left in
/// xcb's memory then would lie there until the server sends more. So the last round of all is one
/// in which neither has anything after the other's reading.
bool X11Windows::takeWhatIsThere()
{
    xcb_flush(connection.get());
    bool isAnything = false;
    while (takeEvent(xcb_poll_for_event(connection.get())))
        isAnything = true;
    while (takeAnswer())
        isAnything = true;
    while (takeEvent(xcb_poll_for_queued_event(connection.get())))
        isAnything = true;
    return isAnything;
}

bool X11Windows::takeAnswer()
{
    if (questions.empty())
        return false;
    void* reply = nullptr;
    xcb_generic_error_t* refusal = nullptr;
    if (xcb_poll_for_reply(connection.get(), questions.front().sequence, &reply, &refusal) == 0)
        return false;
    const auto answer = owned(reply);
    const auto ownedRefusal = owned(refusal);
    const Question question = std::move(questions.front());
    questions.pop_front();
    question.answered(answer.get());
    return true;
}

bool X11Windows::takeEvent(xcb_generic_event_t* polled)
{
    const auto event = owned(polled);
    if (!event)
        return false;
    if ((event->response_type & 0x7fU) == XCB_PROPERTY_NOTIFY) {
        const auto& property = *reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
        if (property.window == root && property.atom == atoms[ClientList])
            askClientList();
        if (property.window == root && property.atom == atoms[ActiveWindow])
            askActiveWindow();
    }
    return true;
}

void X11Windows::handleLoss()
{
    notifier->setEnabled(false);
    questions.clear();
    asked.clear();
    listed.clear();
    lost();
}

void X11Windows::askProperty(xcb_window_t window, xcb_atom_t property, PropertyAnswer answered)
{
    const auto cookie = xcb_get_property(
        connection.get(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, mostWords);
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
    const auto list = words(reply);
    const std::set<xcb_window_t> present(list.begin(), list.end());
    const auto isGone = [&](const auto& window) { return !present.contains(window.first); };
    std::erase_if(asked, isGone);
    if (std::erase_if(listed, isGone) > 0)
        pending.list = true;
    for (const xcb_window_t window : present)
        if (!listed.contains(window) && asked.emplace(window, Asked {}).second)
            askAbout(window);
}

void X11Windows::takeActiveWindow(const xcb_get_property_reply_t* reply)
{
    // A switch passes through "none", and a menu can lead back to where one was.
    const auto window = words(reply).empty() ? xcb_window_t { 0 } : words(reply).front();
    if (window == 0 || window == active)
        return;
    active = window;
    pending.active = true;
}

void X11Windows::askAbout(xcb_window_t window)
{
    // A window can be gone and be listed anew before its answers are here.
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
        // The number means something on the machine that gave it out only.
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

/// The server knows who is at the other end of the window's connection, whatever sandbox that is
/// in.
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

/// The last of a window's answers: now it is listed.
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

} // namespace stemvault
