"""Reads the browser from a test program's command line."""

import signal
import sys

from chromium import Chromium
from firefox import Firefox


def browser_of_this_run():
    """The class of the browser that the first argument names. Ends with 77 if the browser is not installed.

    The other arguments are left for unittest.
    """
    kind = {kind.name: kind for kind in (Chromium, Firefox)}[sys.argv.pop(1)]
    if not kind.is_installed():
        print(f'{kind.name} is not installed')
        sys.exit(77)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # an orderly exit, which clears the session away
    return kind
