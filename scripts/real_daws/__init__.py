"""Real audio programs, and the program's package beside them.

`scripts/daws` installs them in a bare system. `check.py` starts each there on a virtual desktop, by a
module of its own, and notes what the program makes of it: by `trial.py`, which presses *Add* as soon
as it is asked. `table.py` makes the document of it.
"""
