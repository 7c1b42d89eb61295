#!/usr/bin/env python3
"""From a click in a panel's menu to the window in front, in each panel on X11: panels_bench.py BUILD [PANEL...]

The time begins when the program that clicks is started, with the pointer on the row. It ends when the window manager
says that the window is active. Needs what tests/desktop/panels_test.py needs.
"""

import pathlib
import statistics
import subprocess
import sys
import threading
import time

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE.parent / 'tests/desktop'), str(HERE.parent / 'tests/session')]

import panels_test
from waiting import wait_until

CLICKS = 30
PANELS = ('LXQt', 'Mate', 'Cinnamon', 'Budgie', 'Plasma')


class Changes:
    """When the window manager named another active window."""

    def __init__(self, environment):
        self.times = []
        self.spy = subprocess.Popen(['xprop', '-spy', '-root', '_NET_ACTIVE_WINDOW'], env=environment,
                                    stdout=subprocess.PIPE, text=True)
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.spy.stdout:
            self.times.append((time.monotonic(), line.rsplit(' ', 1)[-1].strip()))

    def first(self, wanted, known):
        """The first time of this window, without those of before."""
        return next((when for when, window in self.times[known:] if window == wanted), None)

    def end(self):
        self.spy.kill()
        self.spy.wait()


def measure(panel):
    spot = panel.place_of_bell()[0]
    panel.two_sounds()
    changes = Changes(panel.screen.environment)
    panel.addCleanup(changes.end)
    numbers = {name: hex(int(panel.screen.output('xdotool', 'search', '--onlyvisible', '--name', f'^{name}$')))
               for name in ('Wall Clock', 'Pocket Calculator')}
    taken = []
    for number in range(CLICKS):
        name = list(numbers)[number % 2]
        panel.open_panels_menu(spot)
        row = next(each for each in panel.shown(panel.panel) if name in each['name'] and each['showing'])
        left, top, width, height = row['place']
        panel.screen.point(left + min(width // 2, 60), top + height // 2)
        known = len(changes.times)
        begin = time.monotonic()
        panel.screen.output('xdotool', 'click', '1')
        end = wait_until(lambda: changes.first(numbers[name], known), f'the window {name} in front')
        taken.append((end - begin) * 1000)
        wait_until(lambda: panel.screen.in_front() == name, 'its title')
    return taken


for name in sys.argv[1:] or PANELS:
    case = getattr(panels_test, f'{name}Test')
    case.setUpClass()
    panel = case('run')
    try:
        panel.setUp()
        taken = measure(panel)
        print(f'{name}: click in the menu to window in front: median {statistics.median(taken):.0f} ms, '
              f'slowest {max(taken):.0f} ms of {len(taken)}', flush=True)
    finally:
        panel.doCleanups()
        case.doClassCleanups()
