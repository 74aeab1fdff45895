#include "LinuxDesktop/Application/ActivationToken.h"

#include "Foundation/Owned.h"

#include <QByteArray>
#include <QGuiApplication>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

namespace stemvault::application {

namespace {

constexpr qsizetype maxTokenSize = 1024;

// A longer token, which any program on the bus may send, would exceed the size limit of a Wayland
// message, and that ends the program.
bool isUsable(const QByteArray& token)
{
    return !token.isEmpty() && token.size() <= maxTokenSize
        && std::ranges::all_of(token, [](char c) { return c >= ' ' && c <= '~'; });
}

bool isOn(const char* platform)
{
    return QGuiApplication::platformName().startsWith(QLatin1String(platform));
}

QByteArray escaped(QByteArray text)
{
    return text.replace('\\', "\\\\").replace('"', "\\\"");
}

/// Uses a separate, short-lived X connection, so that the toolkit's connection is not touched.
class StartupMessage {
public:
    StartupMessage() : connection(xcb_connect(nullptr, nullptr), &xcb_disconnect) { }

    // The startup notification protocol: the text is broadcast to the root window in pieces of
    // 20 bytes.
    void broadcast(const QByteArray& text)
    {
        if (xcb_connection_has_error(connection.get()))
            return;
        const xcb_window_t root =
            xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root;
        xcb_client_message_event_t piece {};
        piece.response_type = XCB_CLIENT_MESSAGE;
        piece.format = 8;
        piece.window = xcb_generate_id(connection.get());
        piece.type = atom("_NET_STARTUP_INFO_BEGIN");
        const xcb_atom_t following = atom("_NET_STARTUP_INFO");
        xcb_create_window(connection.get(), XCB_COPY_FROM_PARENT, piece.window, root, -1, -1, 1, 1,
            0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        const qsizetype size = text.size() + 1; // The receiver waits for the NUL.
        for (qsizetype start = 0; start < size; start += pieceSize) {
            std::memset(piece.data.data8, 0, pieceSize);
            std::memcpy(piece.data.data8, text.constData() + start,
                static_cast<std::size_t>(std::min(pieceSize, size - start)));
            xcb_send_event(connection.get(), 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE,
                reinterpret_cast<const char*>(&piece));
            piece.type = following;
        }
        xcb_destroy_window(connection.get(), piece.window);
        // When the connection closes, the server may drop unread requests, so wait for a reply.
        static_cast<void>(atom("_NET_STARTUP_INFO"));
    }

private:
    static constexpr qsizetype pieceSize = 20;

    [[nodiscard]] xcb_atom_t atom(std::string_view name)
    {
        const auto asked = xcb_intern_atom(
            connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
        const auto answer = takeOwnership(xcb_intern_atom_reply(connection.get(), asked, nullptr));
        return answer ? answer->atom : xcb_atom_t { XCB_ATOM_NONE };
    }

    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection;
};

} // namespace

void takeActivationToken(const QByteArray& token)
{
    if (!isUsable(token))
        return;
    if (isOn("wayland"))
        qputenv("XDG_ACTIVATION_TOKEN", token);
    else if (isOn("xcb"))
        StartupMessage().broadcast("remove: ID=\"" + escaped(token) + '"');
}

// On X11 the token is used up by then, and child processes must not inherit it.
void takeActivationTokenOfStart()
{
    if (!isOn("xcb"))
        return;
    takeActivationToken(qgetenv("XDG_ACTIVATION_TOKEN"));
    qunsetenv("XDG_ACTIVATION_TOKEN");
}

} // namespace stemvault::application
