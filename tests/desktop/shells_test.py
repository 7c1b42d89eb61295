#!/usr/bin/env python3
"""Tollvane in the shells that people have, for real: shells_test.py BUILD [TEST...]

The shells run without a screen in private sessions. `tests/session/software fetch session shells` provides them.
"""

import json
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parent / 'session'))

from bus import BusError
from client import PrivateSession
from waiting import wait_until

BUILD = pathlib.Path(sys.argv.pop(1)).resolve() if len(sys.argv) > 1 else HERE.parent.parent / 'build/release'
PROBES = BUILD / 'tests/probes'
SIZE = ('--screen', '1024x768')


class Probe:
    """A program that obeys lines and answers each with a line."""

    def __init__(self, session, name, *arguments, program=None):
        command = [str(program or PROBES / name), *arguments]
        if 'user' in session.facts:
            user, group = session.facts['user'].split(':')
            command = ['setpriv', f'--reuid={user}', f'--regid={group}', '--clear-groups', *command]
        self.process = session.start(name, command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.pid = self.process.pid

    def ask(self, line):
        self.process.stdin.write(line + '\n')
        self.process.stdin.flush()
        return self.process.stdout.readline().rstrip('\n')

    def line(self):
        return self.process.stdout.readline().rstrip('\n')

    def end(self):
        self.process.kill()
        self.process.wait()


class ShellTest(unittest.TestCase):
    """What a window of another application needs: an entry, and a program of its own."""
    options = ()

    @classmethod
    def setUpClass(cls):
        cls.session = cls.enterClassContext(PrivateSession(*SIZE, *cls.options))
        applications = cls.session.data / 'applications'
        applications.mkdir(parents=True)
        for name in ('one', 'two'):
            program = cls.session.home / name
            shutil.copy(PROBES / 'desktop_probe', program)
            (applications / f'{name}.desktop').write_text(
                f'[Desktop Entry]\nType=Application\nName=Window {name}\nExec={program}\n')
        if 'user' in cls.session.facts:
            subprocess.run(['chown', '-R', cls.session.facts['user'], str(cls.session.home)], check=True)

    def window(self, name):
        probe = Probe(self.session, name, program=self.session.home / name)
        self.addCleanup(probe.end)
        self.assertEqual(probe.line(), 'ready')
        probe.process.stdin.write(f'alert I am {name}|and here I stay|OK\n')
        probe.process.stdin.flush()
        wait_until(lambda: self.active_pid() == probe.pid, f'the window of {name} in front')
        return probe

    def activate(self, probe):
        asker = Probe(self.session, 'desktop_probe')
        self.addCleanup(asker.end)
        self.assertEqual(asker.line(), 'ready')
        return asker.ask(f'activate {probe.pid}')


class KWinTest(ShellTest):
    options = ('--wayland', 'kwin')

    def script(self, body):
        """Runs a script in KWin and returns what it prints."""
        file = self.session.root / 'tmp/test.js'
        mark = f'answer-{KWinTest.number()}:'
        file.write_text(f'print("{mark}" + (function() {{ {body} }})());')
        file.chmod(0o644)
        kwin = ('org.kde.KWin', '/Scripting', 'org.kde.kwin.Scripting')
        self.session.bus.call(*kwin, 'loadScript', 'ss', file, mark)
        self.session.bus.call(*kwin, 'start')
        log = pathlib.Path(self.session.facts['log']) / 'wayland'
        answer = wait_until(lambda: [line for line in log.read_text(errors='replace').splitlines() if mark in line],
                            'an answer of KWin')
        self.session.bus.call(*kwin, 'unloadScript', 's', mark)
        return answer[0].split(mark, 1)[1].strip().rstrip('"')

    counter = 0

    @classmethod
    def number(cls):
        KWinTest.counter += 1
        return KWinTest.counter

    def active_pid(self):
        found = self.script('const a = workspace.activeWindow || workspace.activeClient; return a ? a.pid : 0;')
        return int(found)

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
        probe = Probe(self.session, 'one', program=self.session.home / 'one')
        self.addCleanup(probe.end)
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

    def loaded_scripts(self):
        """The objects of scripts on the bus: /1 and so on, or /Scripting/Script1 and so on."""
        tree = self.session.output('busctl', f"--address={self.session.environment['DBUS_SESSION_BUS_ADDRESS']}",
                                   'tree', '--list', 'org.kde.KWin')
        return sorted(line for line in tree.splitlines() if re.fullmatch(r'/(Scripting/Script)?\d+', line))


if __name__ == '__main__':
    unittest.main(verbosity=2)
