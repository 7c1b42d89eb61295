"""Waits for conditions, with a deadline that only a broken program reaches."""

import time

DEADLINE = 90.0  # seconds: a browser on a busy machine takes long to start


def wait_until(condition, what, deadline=DEADLINE, pause=0.02):
    """Returns the first true value of condition(); if the deadline passes, raises TimeoutError with `what` in it."""
    end = time.monotonic() + deadline
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise TimeoutError(f'this did not happen within {deadline:.0f} s: {what}')
        time.sleep(pause)
