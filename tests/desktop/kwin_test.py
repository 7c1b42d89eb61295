#!/usr/bin/env python3
"""Windows of other applications in KWin, for real: kwin_test.py BUILD [TEST...]"""

import re
import unittest

from shell_session import ShellTest
from kwin_scripts import run_script
from waiting import wait_until


class KWinSession(ShellTest):
    """Runs scripts in KWin."""
    options = ('--wayland', 'kwin')

    def script(self, body, stays=False):
        return run_script(self.session, body, stays)

    def active_pid(self):
        found = self.script('const a = workspace.activeWindow || workspace.activeClient; return a ? a.pid : 0;')
        return int(found)


class KWinTest(KWinSession):
    def test_a_window_behind_another_comes_forward(self):
        one, two = self.window('one'), self.window('two')
        self.assertEqual(self.activate(one), 'activated yes')
        self.assertEqual(self.active_pid(), one.pid)
        self.assertEqual(self.activate(two), 'activated yes')
        self.assertEqual(self.active_pid(), two.pid)

    def test_a_minimised_window_comes_forward(self):
        one, two = self.window('one'), self.window('two')
        self.script(f'for (const w of (workspace.windowList ? workspace.windowList() : workspace.clientList())) '
                    f'if (w.pid === {one.pid}) w.minimized = true; return 1;')
        self.assertEqual(self.active_pid(), two.pid)
        self.assertEqual(self.activate(one), 'activated yes')
        self.assertEqual(self.active_pid(), one.pid)

    def test_no_window_is_said_to_be_none(self):
        probe = self.start('one', program=self.session.home / 'one')
        self.assertEqual(probe.line(), 'ready')
        self.assertEqual(self.activate(probe), 'activated no')

    def test_no_script_stays_behind(self):
        one = self.window('one')
        before = self.loaded_scripts()
        self.assertEqual(self.activate(one), 'activated yes')
        wait_until(lambda: self.loaded_scripts() == before, f'the end of our scripts; before: {before}')
        self.session.bus.call('org.kde.KWin', '/Scripting', 'org.kde.kwin.Scripting', 'loadScript', 'ss',
                              '/nonexistent', 'a-script')
        self.assertNotEqual(self.loaded_scripts(), before, 'the test sees no scripts')

    def test_a_long_title_with_markup_hides_no_window(self):
        one, two = self.window('one'), self.window('two')
        self.assertEqual(one.ask('title <b>&amp;"\\' + 'x' * 10000), 'ok')
        title = f'return [workspace].map(w => w.windowList ? w.windowList() : w.clientList())[0]' \
                f'.find(w => w.pid === {one.pid}).caption'
        wait_until(lambda: len(self.script(title)) > 1000, 'the title')  # the toolkit cuts it too
        self.assertIn('<b>&amp;"\\xxx', self.script(title))
        self.assertEqual(self.activate(one), 'activated yes')
        self.assertEqual(self.active_pid(), one.pid)

    def test_kwin_may_start_anew(self):
        asker = self.asker(environment={'QT_QPA_PLATFORM': 'offscreen'})
        self.session.tell('kill wayland')
        self.assertEqual(asker.ask('activate 1'), 'activated no')
        self.session.tell('start wayland')
        one = self.window('one')
        self.window('two')
        self.assertEqual(asker.ask(f'activate {one.pid}'), 'activated yes')
        self.assertEqual(self.active_pid(), one.pid)

    def loaded_scripts(self):
        """The objects of scripts on the bus: /1 and so on, or /Scripting/Script1 and so on."""
        tree = self.session.output('busctl', f"--address={self.session.environment['DBUS_SESSION_BUS_ADDRESS']}",
                                   'tree', '--list', 'org.kde.KWin')
        return sorted(line for line in tree.splitlines() if re.fullmatch(r'/(Scripting/Script)?\d+', line))


if __name__ == '__main__':
    unittest.main(verbosity=2)
