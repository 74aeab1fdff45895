"""Waits for observable conditions; a wait that times out names its condition."""

import time

DEADLINE = 10.0


class TimedOut(AssertionError):
    pass


def wait_for(what, condition, seconds=None):
    """Waits until the condition returns a true value, and returns it."""
    seconds = seconds or DEADLINE
    end = time.monotonic() + seconds
    while not (answer := condition()):
        if time.monotonic() > end:
            raise TimedOut(f"waited {seconds:g} s for {what}")
        time.sleep(0.01)
    return answer


def soon(condition, seconds):
    """The condition's first answer that is true, or None when none comes in time."""
    try:
        return wait_for("what may not come", condition, seconds)
    except TimedOut:
        return None
