"""Every wait is for something that can be seen, and says what it was when it did not come."""

import time

DEADLINE = 10.0


class TimedOut(AssertionError):
    pass


def wait_for(what, condition, seconds=None):
    """Returns the condition's first answer that is true."""
    seconds = seconds or DEADLINE
    end = time.monotonic() + seconds
    while not (answer := condition()):
        if time.monotonic() > end:
            raise TimedOut(f"waited {seconds:g} s for {what}")
        time.sleep(0.01)
    return answer
