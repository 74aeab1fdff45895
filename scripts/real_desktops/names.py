"""The names of the desktops and the checks in the table."""

DESKTOPS = {"gnome": "GNOME", "plasma-x11": "Plasma, X11", "plasma-wayland": "Plasma, Wayland",
            "cinnamon": "Cinnamon", "mate": "MATE", "xfce": "XFCE", "lxqt": "LXQt"}

CHECKS = {
    "tray_item": "A visible icon in the tray",
    "menu": "Its menu opens at a click, with the right rows",
    "prompt": "The prompt comes up in front of a focused window, with the keyboard focus",
    "return_adds": "Return adds the file",
    "notification": "The notification of a copy is on the screen",
    "courier_error": "The notification of an error of the file manager's entry is on the screen",
    "entry": "The entry in the file manager adds a file",
    "preferences_light": "The preferences on a light desktop",
    "hotkey_page": "*Set Up Hotkey…* opens the desktop's page for shortcuts, and the service is listed there",
    "hotkey": "A key assigned there adds the selection",
    "preferences_live": "The preferences, when the desktop turns dark and light again",
    "preferences_dark": "The preferences on a dark desktop",
    "tray_item_again": "The icon after three more starts, in the dark where it can be set",
}
