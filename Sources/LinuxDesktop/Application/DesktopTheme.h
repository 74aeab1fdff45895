#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <xcb/xcb.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace stemvault::application {

/// The name of the theme in the settings that an X11 desktop publishes
/// (XSETTINGS); absent if there is none or the text is malformed.
[[nodiscard]] std::optional<std::string> themeOfXSettings(std::string_view settings);

/// Whether a theme of this name is dark: the name contains the word "dark", as
/// in Adwaita-dark.
[[nodiscard]] bool isDarkTheme(std::string_view name);

/// The GTK theme, for desktops without another setting for light and dark. Reads
/// XSETTINGS, and follows its changes over a separate X connection, and GTK's
/// settings file. Main thread only.
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

} // namespace stemvault::application
