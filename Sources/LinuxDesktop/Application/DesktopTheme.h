#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <xcb/xcb.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace stemvault {

/// The name of the theme in the settings that an X11 desktop publishes
/// (XSETTINGS); absent where there is none, or the text is malformed.
[[nodiscard]] std::optional<std::string> themeOfXSettings(std::string_view settings);

/// Whether a theme of this name is a dark one: the word is a part of its name,
/// as in Adwaita-dark.
[[nodiscard]] bool isDarkTheme(std::string_view name);

/// The theme of GTK's windows, as desktops that know no other light and dark
/// announce it: by XSETTINGS, where changes are followed over a connection of
/// its own, and by GTK's own settings file. Main thread only.
class DesktopTheme final : public QObject {
    Q_OBJECT
public:
    DesktopTheme();

    [[nodiscard]] bool isDark() const { return dark; }

Q_SIGNALS:
    void changed();

private:
    void handleSocket();
    void findManager();
    void read();
    [[nodiscard]] xcb_atom_t atom(std::string_view name) const;

    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection;
    std::unique_ptr<QSocketNotifier> notifier;
    xcb_window_t manager = XCB_WINDOW_NONE;
    xcb_atom_t selection = XCB_ATOM_NONE;
    xcb_atom_t settings = XCB_ATOM_NONE;
    bool dark = false;
};

} // namespace stemvault
