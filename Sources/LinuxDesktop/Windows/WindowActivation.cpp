#include "LinuxDesktop/Windows/WindowActivation.h"

#include "Foundation/Owned.h"

#include <QEvent>
#include <QGuiApplication>
#include <QWidget>
#include <QWindow>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <poll.h>
#include <string_view>
#include <utility>
#include <vector>

namespace stemvault::windows {

namespace {

constexpr int millisecondsToAnswer = 500;

/// Uses a separate, short-lived X connection, so that the toolkit's connection is not touched.
class WindowManagerMessage {
public:
    WindowManagerMessage() : connection(xcb_connect(nullptr, nullptr), &xcb_disconnect) { }

    void activate(xcb_window_t window)
    {
        if (xcb_connection_has_error(connection.get()))
            return;
        root = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root;
        const std::optional<xcb_timestamp_t> time = serverTime();
        if (!time)
            return;
        bringHere(window);
        setUserTime(window, *time);
        // Asks as a pager does (source 2); for an ordinary program's request, window managers may
        // only mark the window.
        send(window, "_NET_ACTIVE_WINDOW", 2, *time);
        xcb_flush(connection.get());
    }

private:
    [[nodiscard]] xcb_atom_t atom(std::string_view name)
    {
        const auto asked = xcb_intern_atom(
            connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
        const auto answer = takeOwnership(xcb_intern_atom_reply(connection.get(), asked, nullptr));
        return answer ? answer->atom : xcb_atom_t { XCB_ATOM_NONE };
    }

    // The server reports its time with each property change, even one that changes nothing.
    [[nodiscard]] std::optional<xcb_timestamp_t> serverTime()
    {
        const xcb_window_t probe = xcb_generate_id(connection.get());
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_create_window(connection.get(), XCB_COPY_FROM_PARENT, probe, root, 0, 0, 1, 1, 0,
            XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
        xcb_change_property(connection.get(), XCB_PROP_MODE_APPEND, probe, XCB_ATOM_WM_NAME,
            XCB_ATOM_STRING, 8, 0, nullptr);
        xcb_flush(connection.get());
        while (const auto event = nextEvent())
            if ((event->response_type & 0x7F) == XCB_PROPERTY_NOTIFY)
                return reinterpret_cast<const xcb_property_notify_event_t*>(event.get())->time;
        return std::nullopt;
    }

    // Null if the server does not respond in time; then the window is left where it is.
    [[nodiscard]] Owned<xcb_generic_event_t> nextEvent()
    {
        auto event = takeOwnership(xcb_poll_for_event(connection.get()));
        pollfd socket { xcb_get_file_descriptor(connection.get()), POLLIN, 0 };
        while (!event && ::poll(&socket, 1, millisecondsToAnswer) == 1
            && !xcb_connection_has_error(connection.get()))
            event = takeOwnership(xcb_poll_for_event(connection.get()));
        return event;
    }

    void setUserTime(xcb_window_t window, xcb_timestamp_t time)
    {
        xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, window,
            atom("_NET_WM_USER_TIME"), XCB_ATOM_CARDINAL, 32, 1, &time);
    }

    // To activate a window, some window managers neither switch to its workspace nor restore it
    // if it is minimised. So the window is moved to the user's workspace and mapped, which also
    // restores it.
    void bringHere(xcb_window_t window)
    {
        constexpr std::uint32_t onEveryWorkspace = 0xFFFFFFFF;
        const auto here = number(root, "_NET_CURRENT_DESKTOP");
        const auto there = number(window, "_NET_WM_DESKTOP");
        if (here && there && *there != *here && *there != onEveryWorkspace)
            send(window, "_NET_WM_DESKTOP", *here, 2);
        xcb_map_window(connection.get(), window);
    }

    [[nodiscard]] std::optional<std::uint32_t> number(xcb_window_t window, std::string_view name)
    {
        const auto asked =
            xcb_get_property(connection.get(), 0, window, atom(name), XCB_ATOM_CARDINAL, 0, 1);
        const auto answer = takeOwnership(xcb_get_property_reply(connection.get(), asked, nullptr));
        if (!answer || answer->format != 32 || answer->value_len == 0)
            return std::nullopt;
        return *static_cast<const std::uint32_t*>(xcb_get_property_value(answer.get()));
    }

    void send(xcb_window_t window, std::string_view type, std::uint32_t first, std::uint32_t second)
    {
        xcb_client_message_event_t message {};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = atom(type);
        message.data.data32[0] = first;
        message.data.data32[1] = second;
        xcb_send_event(connection.get(), 0, root,
            XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
            reinterpret_cast<const char*>(&message));
    }

    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection;
    xcb_window_t root = XCB_WINDOW_NONE;
};

void activateNow(QWindow& window)
{
    window.raise();
    window.requestActivate();
    if (QGuiApplication::platformName() == QLatin1String("xcb"))
        WindowManagerMessage().activate(static_cast<xcb_window_t>(window.winId()));
}

/// Tracks whether the window manager manages a window. It does so once the window has been on the
/// screen, even while it is minimised or on another workspace, where no exposure would come.
class MappedTracker final : public QObject {
public:
    using Action = void (*)(QWindow&);

    static MappedTracker& of(QWindow& window)
    {
        for (QObject* child : window.children())
            if (auto* tracker = dynamic_cast<MappedTracker*>(child))
                return *tracker;
        return *new MappedTracker(window);
    }

    /// Runs the action at once if the window is managed, or else as soon as it is.
    void whenManaged(Action action)
    {
        if (isManaged)
            action(window);
        else if (std::ranges::find(waiting, action) == waiting.end())
            waiting.push_back(action);
    }

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        if (event->type() == QEvent::Hide)
            isManaged = false;
        if (event->type() == QEvent::Expose && window.isExposed()) {
            isManaged = true;
            for (const Action action : std::exchange(waiting, {}))
                action(window);
        }
        return false;
    }

private:
    explicit MappedTracker(QWindow& watched)
        : QObject(&watched), window(watched), isManaged(watched.isExposed())
    {
        watched.installEventFilter(this);
    }

    QWindow& window;
    std::vector<Action> waiting;
    bool isManaged;
};

} // namespace

void bringToFront(QWidget& window)
{
    window.winId(); // Creates the native window.
    MappedTracker::of(*window.windowHandle()).whenManaged(&activateNow);
}

// The toolkit requests the keyboard focus for every modal window, whatever its attributes. Window
// managers do not give it to a window that does not accept it.
void showWithoutKeyboard(QWidget& window)
{
    window.setAttribute(Qt::WA_ShowWithoutActivating);
    window.setWindowFlag(Qt::WindowDoesNotAcceptFocus);
    window.winId();
    MappedTracker::of(*window.windowHandle()).whenManaged([](QWindow& shown) {
        shown.setFlag(Qt::WindowDoesNotAcceptFocus, false);
    });
}

} // namespace stemvault::windows
