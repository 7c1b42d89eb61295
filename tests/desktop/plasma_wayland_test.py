#!/usr/bin/env python3
"""Tollvane in Plasma's panel on Wayland, for real: plasma_wayland_test.py BUILD [TEST...]

KWin shows its screen in a window, which covers the screen of an X server. Pictures come from there; no other program
of the session knows of that server. Texts and states are read as a screen reader reads them. Pointer and keyboard are
KWin's, which takes them from kwin_input.py.
"""

import json
import pathlib
import subprocess
import sys
import unittest

from panel_session import BUILD, HERE
from PIL import ImageChops
from kwin_scripts import run_script
from client import Lines
from panel_screen import STEPS, XScreen
from panels_test import PlasmaTest
from waiting import wait_until

SIZE, SOCKET = '1024x768', 'wayland-0'
BUTTONS = {1: 0x110, 3: 0x111}  # as in linux/input-event-codes.h, by their numbers on X11
KEYS = {'Escape': 1, 'Down': 108}
ARROW = ('Expand System Tray', 'Show hidden icons')  # the tray's last button, in Plasma 5 and 6
ICON = (4, 4, 34, 32)  # where a title bar has its icon


class KWinScreen(XScreen):
    """Starts KWin, which has the windows."""
    nowhere = (900, 600)
    every = 'const every = workspace.windowList ? workspace.windowList() : workspace.clientList();'

    def __init__(self, session):
        super().__init__(session)
        width, height = SIZE.split('x')
        kwin = session.start('wayland', ['kwin_wayland', '--x11-display', self.environment['DISPLAY'], '--width', width,
                                         '--height', height, '--socket', SOCKET, '--no-lockscreen'],
                             env={**self.environment, 'QT_QPA_PLATFORM': '', 'KWIN_COMPOSE': 'Q',
                                  'KWIN_WAYLAND_NO_PERMISSION_CHECKS': '1', 'TOLLVANE_PART_OF_SESSION': '1'})
        del session.environment['DISPLAY']
        socket = pathlib.Path(self.environment['XDG_RUNTIME_DIR']) / SOCKET
        wait_until(lambda: kwin.poll() is not None or socket.exists() and session.bus.has('org.kde.KWin'), 'KWin')
        self.input = Lines(session, 'input', [sys.executable, '-B', str(HERE / 'kwin_input.py')],
                           WAYLAND_DISPLAY=SOCKET, TOLLVANE_PART_OF_SESSION='1')

    def send(self, *words):
        if self.input.ask(' '.join(map(str, words))) != 'obeyed':
            raise RuntimeError(f'KWin has not taken {words}')

    def point(self, x, y):
        for each in range(x - STEPS, x + 1):
            self.send('move', each, y)

    def click(self, x, y, button=1):
        self.point(x, y)
        for is_down in (1, 0):
            self.send('button', BUTTONS[button], is_down)

    def key(self, name):
        for is_down in (1, 0):
            self.send('key', KEYS[name], is_down)

    def window(self, title):
        found = run_script(self.session, f"""{self.every}
            const found = every.find(w => w.caption === {json.dumps(title)});
            return JSON.stringify({{entry: String(found.desktopFileName),
              place: [found.frameGeometry.x, found.frameGeometry.y]}});""")
        return json.loads(found)

    def in_front(self):
        return run_script(self.session, 'const front = workspace.activeWindow || workspace.activeClient; '
                                        'return front ? front.caption : "";')

    def bring_forward(self, title):
        run_script(self.session, f"""{self.every}
            const found = every.find(w => w.caption === {json.dumps(title)});
            if (found && workspace.windowList) workspace.activeWindow = found;
            else if (found) workspace.activeClient = found;""")


class PlasmaWaylandTest(PlasmaTest):
    options = ('--screen', SIZE)
    program_with_window = BUILD / 'tests/probes/desktop_probe'

    @classmethod
    def make_screen(cls):
        return KWinScreen(cls.session)

    @classmethod
    def variables(cls):
        return {**super().variables(), 'QT_QPA_PLATFORM': 'wayland', 'WAYLAND_DISPLAY': SOCKET,
                'XDG_SESSION_TYPE': 'wayland', 'QT_WAYLAND_CLIENT_BUFFER_INTEGRATION': 'none'}

    def setUp(self):
        wait_until(lambda: any(each['name'] in ARROW and each['showing'] for each in self.shown(self.panel)),
                   'the system tray')
        super().setUp()

    def window(self, name):
        process = self.session.start(name, [str(self.program(name))], stdin=subprocess.PIPE,
                                     stdout=subprocess.PIPE, text=True)

        def end():
            process.kill()
            process.communicate()
        self.addCleanup(end)
        self.assertEqual(process.stdout.readline(), 'ready\n')
        process.stdin.write(f'alert I am here|{name}|OK\ntitle {name}\n')
        process.stdin.flush()
        self.assertEqual(process.stdout.readline(), 'ok\n')
        wait_until(lambda: self.screen.in_front() == name, f'the window {name} in front', pause=0.2)
        return process

    def two_sounds(self):
        super().two_sounds()
        self.icon_without_entry = self.icon('Pocket Calculator')

    def icon(self, title):
        """The icon in the title bar of a window that is in front."""
        left, top = map(round, self.screen.window(title)['place'])
        picture = self.picture_at_rest()
        return picture.crop((left + ICON[0], top + ICON[1], left + ICON[2], top + ICON[3]))

    def assert_has_name_and_icon(self, title):
        self.assertEqual(self.screen.window(title)['entry'], 'tollvane')
        icon = self.icon(title)
        self.assertIsNotNone(ImageChops.difference(icon, self.icon_without_entry).getbbox(), 'a window without an icon')
        self.assertGreater(len(icon.getcolors(10000)), 10, 'an empty icon')


if __name__ == '__main__':
    unittest.main(verbosity=2)
