#pragma once

#include <QSocketNotifier>
#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>

namespace stemvault::workspace {

/// A window in the window manager's list.
struct ClientWindow {
    pid_t process = 0; ///< 0 if it is unknown, as for a window of another machine.
    std::string instance;
    std::string className;
    bool isOrdinary = false; ///< A task bar shows this window.
};

/// The windows of an X display and the active one, as published by the window manager. Uses a
/// separate connection. After connecting, nothing blocks on the server: the event loop handles each
/// answer when it arrives. Main thread only.
class X11Windows {
public:
    struct Change {
        bool list = false;
        bool active = false; ///< Another window is active; not set if none is.
        bool title = false; ///< The title of a window that is followed.
    };

    /// `changed` is called once for all changes that arrive together. `lost` is called once, when
    /// the server is gone; the list is empty then. Null if there is no such display.
    [[nodiscard]] static std::unique_ptr<X11Windows> connect(const std::string& display,
        std::function<void(Change)> changed, std::function<void()> lost);

    [[nodiscard]] const std::map<xcb_window_t, ClientWindow>& windows() const { return listed; }

    /// Whether a window manager publishes its list of windows or the active window. Some publish
    /// neither. True until the server has answered. If this changes, Change::list is reported.
    [[nodiscard]] bool isPublished() const { return hasClientList || hasActiveWindow; }

    /// Reports changes of the window's title from now on, for as long as the window is listed.
    void followTitle(xcb_window_t window);

private:
    struct Disconnect {
        void operator()(xcb_connection_t* ended) const { xcb_disconnect(ended); }
    };
    using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

    enum AtomName : std::size_t {
        ClientList,
        ActiveWindow,
        WindowPid,
        WindowType,
        WindowTypeNormal,
        WindowState,
        SkipTaskbar,
        WindowName,
        AtomCount,
    };

    /// A request whose answer is pending. Answers arrive in the order of the requests.
    struct Question {
        unsigned sequence;
        std::function<void(const void* reply)> answered; ///< `reply` is null for an error.
    };

    X11Windows(Connection made, int screen, std::function<void(Change)> onChange,
        std::function<void()> onLost);

    void internAtoms();
    void watchRootWindow(int screen);
    void handleSocket();
    [[nodiscard]] bool processAvailable();
    [[nodiscard]] bool takeAnswer();
    [[nodiscard]] bool takeEvent(xcb_generic_event_t* polled);
    void handleLoss();

    using PropertyAnswer = std::function<void(const xcb_get_property_reply_t* reply)>;
    void askProperty(xcb_window_t window, xcb_atom_t property, PropertyAnswer answered);
    void askClientList();
    void askActiveWindow();
    void askAbout(xcb_window_t window);
    void askOwner(xcb_window_t window);
    void askTitle(xcb_window_t window, xcb_atom_t property);
    void takeClientList(const xcb_get_property_reply_t* reply);
    void takeActiveWindow(const xcb_get_property_reply_t* reply);
    void takeState(xcb_window_t window, const xcb_get_property_reply_t* reply);

    struct Asked {
        ClientWindow found;
        pid_t claimedProcess = 0;
    };

    /// A title from one of the two properties that can hold one.
    struct Title {
        std::optional<std::string> text; ///< Absent until it has been read.
        bool isAsked = false;
        bool isOutdated = false; ///< The title has changed since it was requested.
    };
    using TitleKey = std::pair<xcb_window_t, xcb_atom_t>;

    void noteTitleChange(xcb_window_t window, xcb_atom_t property);
    void takeTitle(const TitleKey& key, const xcb_get_property_reply_t* reply);

    std::function<void(Change)> changed;
    std::function<void()> lost;
    Connection connection;
    xcb_window_t root = 0;
    std::array<xcb_atom_t, AtomCount> atoms {};
    bool canAskOwner = false;
    std::string machine;
    std::deque<Question> questions;
    std::map<xcb_window_t, Asked> asked;
    std::map<xcb_window_t, ClientWindow> listed;
    std::map<TitleKey, Title> titles;
    xcb_window_t active = 0;
    bool hasClientList = true;
    bool hasActiveWindow = true;
    Change pending;
    std::unique_ptr<QSocketNotifier> notifier;
};

} // namespace stemvault::workspace
