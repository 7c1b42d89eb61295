"""What a test program is told on its command line."""

import signal
import sys

from chromium import Chromium
from firefox import Firefox


def browser_of_this_run():
    """The kind of browser that the first argument names; the others are unittest's. Ends where it is not installed."""
    kind = {kind.name: kind for kind in (Chromium, Firefox)}[sys.argv.pop(1)]
    if not kind.is_installed():
        print(f'{kind.name} is not installed')
        sys.exit(77)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that the session is cleared away
    return kind
