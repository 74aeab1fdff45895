"""What the desktops and the checks are called in the table."""

DESKTOPS = {"gnome": "GNOME", "plasma-x11": "Plasma, X11", "plasma-wayland": "Plasma, Wayland",
            "cinnamon": "Cinnamon", "mate": "MATE", "xfce": "XFCE", "lxqt": "LXQt"}

CHECKS = {
    "tray_item": "An icon in the tray, told from the panel",
    "menu": "Its menu opens at a click, with the right rows",
    "prompt": "The prompt comes up in front of a focused window, with the keyboard",
    "return_adds": "Return adds",
    "notification": "The notification of a copy is on the screen",
    "courier_error": "So is an error of the file manager's entry",
    "entry": "The entry in the file manager adds",
    "preferences_light": "The preferences on a light desktop",
    "hotkey_page": "*Set Up Hotkey…* opens the desktop's page for shortcuts, and the service is listed there",
    "hotkey": "A key bound there adds what is selected",
    "preferences_live": "The preferences, when the desktop turns dark and light again",
    "preferences_dark": "The preferences on a dark desktop",
    "tray_item_again": "The icon after three more starts, in the dark where it can be set",
}
