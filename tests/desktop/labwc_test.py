#!/usr/bin/env python3
"""Windows in labwc, for real: labwc_test.py BUILD [TEST...]

It stands for the compositors made with wlroots that have no protocol of their own: they tell titles and application
ids. `wlrctl` asks labwc which window is in front.
"""

import shutil
import unittest

from shell_session import ShellTest
from waiting import wait_until


@unittest.skipUnless(shutil.which('labwc'), 'this version of Debian has no labwc')
class LabwcTest(ShellTest):
    options = ('--wayland', 'labwc')

    def in_front(self):
        """Application id and title."""
        return self.session.output('wlrctl', 'toplevel', 'list', 'state:activated')

    def window(self, name, title):
        probe = self.start(name, program=self.session.home / name)
        self.assertEqual(probe.line(), 'ready')
        probe.process.stdin.write('alert Here I am|and here I stay|OK\n')
        probe.process.stdin.flush()
        self.assertEqual(probe.ask(f'title {title}'), 'ok')
        self.await_front(f'{name}: {title}')
        return probe

    def await_front(self, window):
        wait_until(lambda: self.in_front() == window, f'{window} in front')

    def activate(self, probe, title=''):
        return self.asker().ask(f'activate {probe.pid} {title}'.strip())

    def test_a_window_behind_another_comes_forward(self):
        one, two = self.window('one', 'First'), self.window('two', 'Second')
        self.assertEqual(self.activate(one), 'activated yes')
        self.await_front('one: First')
        self.assertEqual(self.activate(two), 'activated yes')
        self.await_front('two: Second')

    def test_a_minimised_window_comes_forward(self):
        one, _ = self.window('one', 'First'), self.window('two', 'Second')
        self.assertTrue(self.session.succeeds('wlrctl', 'toplevel', 'minimize', 'app_id:one'))
        wait_until(lambda: self.session.output('wlrctl', 'toplevel', 'list', 'state:minimized') == 'one: First',
                   'a minimised window')
        self.assertEqual(self.activate(one), 'activated yes')
        self.await_front('one: First')

    def test_the_title_chooses_among_windows_of_one_application(self):
        one, _, _ = self.window('one', 'Left'), self.window('one', 'Right'), self.window('two', 'Left')
        for title in ('Left', 'Right', 'Left'):
            self.assertEqual(self.activate(one, title), 'activated yes')
            self.await_front(f'one: {title}')

    def test_settings_and_alerts_come_forward_with_their_name(self):
        self.window('two', 'Second')
        self.start_tollvane()
        wait_until(lambda: self.session.bus.has('com.quarnel.tollvane'), 'Tollvane')
        self.assertTrue(self.session.succeeds(*self.session.as_user(self.bundle / 'Tollvane')))
        self.await_front('tollvane: Tollvane Settings')
        self.await_front('tollvane: Tollvane')  # it says that nothing here shows the bell


if __name__ == '__main__':
    unittest.main(verbosity=2)
