"""Waits for observable conditions; a wait that times out names its condition."""

import time

DEADLINE = 10.0


class TimedOut(AssertionError):
    pass


def wait_for(what, condition, seconds=None):
    """Waits until the condition returns a true value, and returns it.

    The longer it takes, the less often the condition is asked, which the programs have to answer as well.
    """
    seconds = seconds or DEADLINE
    begin = time.monotonic()
    while not (answer := condition()):
        waited = time.monotonic() - begin
        if waited > seconds:
            raise TimedOut(f"waited {seconds:g} s for {what}")
        time.sleep(min(max(0.01, waited / 10), 0.1))
    return answer


def soon(condition, seconds):
    """The condition's first answer that is true, or None when none comes in time."""
    try:
        return wait_for("what may not come", condition, seconds)
    except TimedOut:
        return None
