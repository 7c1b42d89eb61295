#!/usr/bin/env python3
"""What screen readers are told about the settings window and an alert, over a real accessibility bus:
accessibility_test.py. Prints the two trees. (An open menu is in no tree, because the toolkit leaves popups out; screen
readers hear of each entry that is chosen.)

The application is the one in TOLLVANE_BUNDLE. It needs no browser, but at-spi2-core, which the browsers' tests use, too.
"""

import os
import pathlib
import sys
import unittest
import wave

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / 'session'))

from client import PrivateSession
from tollvane import Tollvane

BUNDLE = os.environ['TOLLVANE_BUNDLE']
SESSION = ('--sound', 'pipewire', '--screen', '1280x900', '--window-manager', 'openbox', '--panel', 'xfce4')
LINE_END = '\u200b'  # where a long word may be broken


def setUpModule():
    session = unittest.enterModuleContext(PrivateSession(*SESSION))
    tollvane = Tollvane(session, BUNDLE)
    tollvane.start()
    with wave.open(str(session.root / 'ding.wav'), 'wb') as file:
        file.setparams((1, 2, 8000, 0, 'NONE', ''))
        file.writeframes(bytes(8000))
    session.start('player', ['pw-play', str(session.root / 'ding.wav')])
    tollvane.await_entry('pw-play')
    AccessibilityTest.session, AccessibilityTest.tollvane = session, tollvane


class AccessibilityTest(unittest.TestCase):
    def tree(self, element, level=0):
        """A list of (level, role, name), from top to bottom; what has neither name nor role of its own is left out."""
        role, name = element.role(), element.name()
        says = name or role not in ('filler', 'panel', 'label', 'scroll pane', 'viewport', 'scroll bar')
        found = [(level, role, name)] if says and element.is_shown() else []
        for child in element.children():
            found += self.tree(child, level + bool(found))
        return found

    def read(self, what, element):
        found = self.tree(element)
        print(f'\n{what}:', *('  ' * (level + 1) + f'{role} "{name}"' for level, role, name in found), sep='\n')
        for _, _, name in found:
            self.assertNotIn(LINE_END, name)
        return [(role, name) for _, role, name in found]

    def assert_order(self, wanted, found):
        """Each of `wanted` is in `found`, in this order."""
        rest = iter(found)
        for each in wanted:
            self.assertIn(each, rest, found)

    def test_settings_window(self):
        window = self.tollvane.open_settings()
        found = self.read('The settings window', window)
        self.assertIn(found[0][0], ('frame', 'window'))
        self.assertEqual(found[0][1], 'Tollvane Settings')
        self.assert_order([
            ('label', 'Tollvane'), ('label', 'General'), ('panel', 'General'),
            ('check box', 'Start Tollvane when you log in'), ('check box', 'Mark browser tabs that made a sound'),
            ('panel', 'Browser extensions'), ('check box', 'Google Chrome'), ('check box', 'Microsoft Edge'),
            ('panel', 'Other browsers'), ('check box', 'Suggest the extension under browser sounds'),
        ], found)

    def test_alert(self):
        self.tollvane.choose(self.tollvane.await_entry('pw-play'))
        self.tollvane.await_alert()
        found = self.read('An alert', self.tollvane.window('Tollvane'))
        self.assertEqual([role for role, _ in found], ['alert message', 'label', 'label', 'push button'])
        self.assertEqual(found[1][1], 'Nothing to open')
        self.assertIn('is a background part of the system', found[2][1])
        self.assertEqual(found[3][1], 'OK')
        self.tollvane.dismiss_alert()


if __name__ == '__main__':
    unittest.main(verbosity=2)
