"""Tests the program's package in real desktops.

`scripts/desktops` makes a bare system for each and runs `enter` in it. That starts the desktop as an
ordinary user (`session.py` and a module for each desktop) and performs the checks in `checks.py`. They
use parts of the virtual desktop: its display, its accessibility and its file managers.
"""
