"""Scripts that KWin runs. They see its windows, and can bring them forward."""

import itertools
import pathlib

from waiting import wait_until

SCRIPTING = ('org.kde.KWin', '/Scripting', 'org.kde.kwin.Scripting')
numbers = itertools.count()


def run_script(session, body, stays=False):
    """Returns what the script returns, as text. KWin's log in the session is `wayland`."""
    file = session.root / 'tmp/test.js'
    mark = f'answer-{next(numbers)}:'
    file.write_text(f'print("{mark}" + (function() {{ {body} }})());')
    file.chmod(0o644)
    session.bus.call(*SCRIPTING, 'loadScript', 'ss', file, mark)
    session.bus.call(*SCRIPTING, 'start')
    log = pathlib.Path(session.facts['log']) / 'wayland'
    answer = wait_until(lambda: [line for line in log.read_text(errors='replace').splitlines() if mark in line],
                        'an answer of KWin')
    if not stays:
        session.bus.call(*SCRIPTING, 'unloadScript', 's', mark)
    return answer[0].split(mark, 1)[1].strip().rstrip('"')
