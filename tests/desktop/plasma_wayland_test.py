#!/usr/bin/env python3
"""Tollvane in Plasma's panel on Wayland, for real: plasma_wayland_test.py BUILD [TEST...]

KWin has a virtual screen. Texts and states are read as a screen reader reads them; the bell and the icons of windows
are compared in pictures of the screen. Pointer and keyboard are KWin's own.
"""

import subprocess
import unittest

from panel_session import BUILD
from PIL import ImageChops
from kwin_screen import KWinScreen
from panels_test import PlasmaTest
from waiting import wait_until

ARROW = ('Expand System Tray', 'Show hidden icons')  # the tray's last button, in Plasma 5 and 6
ICON = (4, 4, 34, 32)  # where a title bar has its icon


class PlasmaWaylandTest(PlasmaTest):
    options = ('--screen', '1024x768', '--wayland', 'kwin')
    program_with_window = BUILD / 'tests/probes/desktop_probe'

    @classmethod
    def make_screen(cls):
        return KWinScreen(cls.session)

    @classmethod
    def variables(cls):
        return {**super().variables(), 'QT_QPA_PLATFORM': 'wayland', 'XDG_SESSION_TYPE': 'wayland'}

    def setUp(self):
        wait_until(lambda: any(each['name'] in ARROW and each['showing'] for each in self.shown(self.panel)),
                   'the system tray')
        super().setUp()

    def window(self, name):
        process = self.session.start(name, self.session.as_user(self.program(name)), stdin=subprocess.PIPE,
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
        left, top, _, _ = self.screen.window(title)['place']
        picture = self.picture_at_rest()
        return picture.crop((left + ICON[0], top + ICON[1], left + ICON[2], top + ICON[3]))

    def assert_comes_forward(self, title):
        super().assert_comes_forward(title)
        self.assertEqual(self.screen.window(title)['entry'], 'tollvane')
        icon = self.icon(title)
        self.assertIsNotNone(ImageChops.difference(icon, self.icon_without_entry).getbbox(), 'a window without an icon')
        self.assertGreater(len(icon.getcolors(10000)), 10, 'an empty icon')


if __name__ == '__main__':
    unittest.main(verbosity=2)
