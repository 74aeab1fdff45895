#include "LinuxDesktop/Workspace/X11Windows.h"

#include "Foundation/Owned.h"

#include <QObject>
#include <xcb/res.h>
#include <xcb/xcbext.h>

#include <array>
#include <string_view>
#include <sys/utsname.h>
#include <unistd.h>
#include <utility>

namespace stemvault::workspace {

namespace {

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
        "_NET_WM_STATE", "_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_NAME" };
    std::array<xcb_intern_atom_cookie_t, AtomCount> cookies {};
    for (std::size_t i = 0; i < AtomCount; ++i)
        cookies[i] = xcb_intern_atom(
            connection.get(), 0, static_cast<std::uint16_t>(names[i].size()), names[i].data());
    for (std::size_t i = 0; i < AtomCount; ++i)
        if (const auto reply =
                takeOwnership(xcb_intern_atom_reply(connection.get(), cookies[i], nullptr)))
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
    // Data that xcb has read meanwhile is in its own buffer, so the socket does not signal it.
    QMetaObject::invokeMethod(
        notifier.get(), [this] { handleSocket(); }, Qt::QueuedConnection);
}

void X11Windows::handleSocket()
{
    if (!notifier->isEnabled())
        return;
    while (processAvailable()) { }
    if (xcb_connection_has_error(connection.get()) != 0)
        return handleLoss();
    const Change news = std::exchange(pending, {});
    if (news.list || news.active || news.title)
        changed(news);
}

/// Each of these calls may read data from the socket into xcb's buffer that only another one
/// returns. Data left in the buffer would stay there until the server sends more. So the caller
/// repeats this until a whole round has found nothing.
bool X11Windows::processAvailable()
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
    const auto answer = takeOwnership(reply);
    const auto ownedRefusal = takeOwnership(refusal);
    const Question question = std::move(questions.front());
    questions.pop_front();
    question.answered(answer.get());
    return true;
}

bool X11Windows::takeEvent(xcb_generic_event_t* polled)
{
    const auto event = takeOwnership(polled);
    if (!event)
        return false;
    if ((event->response_type & 0x7fU) == XCB_PROPERTY_NOTIFY) {
        const auto& property = *reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
        if (property.window == root && property.atom == atoms[ClientList])
            askClientList();
        if (property.window == root && property.atom == atoms[ActiveWindow])
            askActiveWindow();
        noteTitleChange(property.window, property.atom);
    }
    return true;
}

void X11Windows::handleLoss()
{
    notifier->setEnabled(false);
    questions.clear();
    asked.clear();
    titles.clear();
    listed.clear();
    lost();
}

} // namespace stemvault::workspace
