#include "LinuxDesktop/Qt/WindowActivation.h"

#include <QEvent>
#include <QGuiApplication>
#include <QWidget>
#include <QWindow>
#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

namespace stemvault {

namespace {

template <typename T> using Owned = std::unique_ptr<T, decltype(&std::free)>;
template <typename T> Owned<T> owned(T* answer)
{
    return { answer, &std::free };
}

/// A connection of our own for a moment, so that nothing of the toolkit's is touched.
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
        setUserTime(window, *time);
        sendActivate(window, *time);
        xcb_flush(connection.get());
    }

private:
    [[nodiscard]] xcb_atom_t atom(std::string_view name)
    {
        const auto asked = xcb_intern_atom(
            connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
        const auto answer = owned(xcb_intern_atom_reply(connection.get(), asked, nullptr));
        return answer ? answer->atom : xcb_atom_t { XCB_ATOM_NONE };
    }

    // The server tells its time with the change of a property, even one that changes nothing.
    [[nodiscard]] std::optional<xcb_timestamp_t> serverTime()
    {
        const xcb_window_t probe = xcb_generate_id(connection.get());
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_create_window(connection.get(), XCB_COPY_FROM_PARENT, probe, root, 0, 0, 1, 1, 0,
            XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
        xcb_change_property(connection.get(), XCB_PROP_MODE_APPEND, probe, XCB_ATOM_WM_NAME,
            XCB_ATOM_STRING, 8, 0, nullptr);
        xcb_flush(connection.get());
        while (const auto event = owned(xcb_wait_for_event(connection.get())))
            if ((event->response_type & 0x7F) == XCB_PROPERTY_NOTIFY)
                return reinterpret_cast<const xcb_property_notify_event_t*>(event.get())->time;
        return std::nullopt;
    }

    void setUserTime(xcb_window_t window, xcb_timestamp_t time)
    {
        xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, window,
            atom("_NET_WM_USER_TIME"), XCB_ATOM_CARDINAL, 32, 1, &time);
    }

    // As a pager would ask (source 2): an ordinary program's request may only be marked as waiting.
    void sendActivate(xcb_window_t window, xcb_timestamp_t time)
    {
        xcb_client_message_event_t message {};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = atom("_NET_ACTIVE_WINDOW");
        message.data.data32[0] = 2;
        message.data.data32[1] = time;
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

/// Does something with a window once it is on the screen, and so known to the window manager.
class OnceExposed final : public QObject {
public:
    using Action = void (*)(QWindow&);

    OnceExposed(QWindow& awaited, Action then) : QObject(&awaited), action(then)
    {
        awaited.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto& window = static_cast<QWindow&>(*watched);
        if (event->type() == QEvent::Expose && window.isExposed()) {
            window.removeEventFilter(this);
            deleteLater();
            action(window);
        }
        return false;
    }

private:
    Action action;
};

} // namespace

void bringToFront(QWidget& window)
{
    window.winId(); // Makes the native window.
    if (window.windowHandle()->isExposed())
        activateNow(*window.windowHandle());
    else
        new OnceExposed(*window.windowHandle(), &activateNow);
}

// The toolkit asks for the keyboard on behalf of every modal window, whatever it was told; a window
// manager gives it to none that does not take it.
void showWithoutKeyboard(QWidget& window)
{
    window.setAttribute(Qt::WA_ShowWithoutActivating);
    window.setWindowFlag(Qt::WindowDoesNotAcceptFocus);
    window.winId();
    new OnceExposed(*window.windowHandle(),
        [](QWindow& shown) { shown.setFlag(Qt::WindowDoesNotAcceptFocus, false); });
}

} // namespace stemvault
