"""The Debian packages of each desktop: packages.py RELEASE NAME prints them."""

import sys

PLASMA = """breeze dolphin kde-cli-tools kde-style-breeze plasma-desktop plasma-integration
    plasma-workspace systemsettings xdg-desktop-portal-kde"""

PACKAGES = {
    "gnome": """gjs gnome-control-center gnome-session-bin gnome-settings-daemon gnome-shell
        gnome-shell-extension-appindicator nautilus python3-nautilus xdg-desktop-portal-gnome""",
    "plasma-x11": f"{PLASMA} kwin-x11",
    "plasma-wayland": f"{PLASMA} kwin-wayland plasma-workspace-wayland wl-clipboard",
    "cinnamon": "cinnamon librsvg2-common nemo xapp-sn-watcher xdg-desktop-portal-gtk",
    "mate": """caja gnome-themes-extra marco mate-applets mate-control-center mate-notification-daemon
        mate-panel mate-settings-daemon python3-caja mate-themes xdg-desktop-portal-gtk""",
    "xfce": """gnome-themes-extra librsvg2-common thunar xdg-desktop-portal-gtk xfce4-notifyd xfce4-panel
        xfce4-settings xfconf xfdesktop4 xfwm4""",
    "lxqt": """lxqt-config lxqt-globalkeys lxqt-notificationd lxqt-panel lxqt-qtplugin lxqt-themes
        openbox papirus-icon-theme pcmanfm-qt""",
}

# Packages with another name in a release.
RENAMED = {"trixie": {"plasma-workspace-wayland": "plasma-workspace"}}


def packages_of(release, name):
    renamed = RENAMED.get(release, {})
    return sorted({renamed.get(package, package) for package in PACKAGES[name].split()})


if __name__ == "__main__":
    print(*packages_of(*sys.argv[1:]))
