"""The desktops by the names that scripts/desktops uses."""

from .cinnamon import Cinnamon
from .gnome import Gnome
from .lxqt import Lxqt
from .mate import Mate
from .plasma import PlasmaWayland, PlasmaX11
from .xfce import Xfce

DESKTOPS = {"gnome": Gnome, "plasma-x11": PlasmaX11, "plasma-wayland": PlasmaWayland,
            "cinnamon": Cinnamon, "mate": Mate, "xfce": Xfce, "lxqt": Lxqt}
