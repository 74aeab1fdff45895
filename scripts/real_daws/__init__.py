"""Tests the program's package with real audio programs.

`scripts/daws` installs them in a bare system. `check.py` starts each there on a virtual desktop, using
the module for that program. `trial.py` records how the program reacts, and presses *Add* as soon as a
prompt comes up. `table.py` writes the results into the documentation.
"""
