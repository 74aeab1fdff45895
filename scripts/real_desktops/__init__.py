"""Real desktops, and the program's package in them.

`scripts/desktops` makes a bare system for each and runs `enter` in it, which starts the desktop as an
ordinary user (`session.py` and a module for each desktop) and has the list of `checks.py` gone
through. They build on the virtual desktop: its display, its accessibility and its file managers.
"""
