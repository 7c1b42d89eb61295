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
import wave

HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parent / 'session'))

from bus import BusError
from client import PrivateSession
from waiting import wait_until

BUILD = pathlib.Path(sys.argv.pop(1)).resolve() if len(sys.argv) > 1 else HERE.parent.parent / 'build/release'
PROBES = BUILD / 'tests/probes'
SIZE = ('--screen', '1024x768')


def form():
    """The form of our extension for the GNOME Shell that is here."""
    said = subprocess.run(['gnome-shell', '--version'], capture_output=True, text=True).stdout
    found = re.search(r'\d+', said)
    return '45' if found and int(found[0]) >= 45 else '43'


EXTENSION = BUILD / f'Tollvane/Extensions/gnome/{form()}/tollvane@quarnel.com'
INDICATORS = 'ubuntu-appindicators@ubuntu.com'


class Probe:
    """A program that obeys lines and answers each with a line."""

    def __init__(self, session, name, *arguments, program=None):
        command = [str(program or PROBES / name), *arguments]
        if 'user' in session.facts:
            command = [*as_user(session), *command]
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
        # Another user runs the session, who may not be allowed to reach the build.
        cls.bundle = cls.session.home / 'Tollvane'
        shutil.copytree(BUILD / 'Tollvane', cls.bundle)
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


class GnomeTest(ShellTest):
    """Tollvane's own extension, in a shell that has no other place for the bell."""
    options = ('--wayland', 'gnome', '--sound', 'pipewire', '--extension', str(EXTENSION))

    def evaluate(self, script):
        done, answer = self.session.bus.call('org.gnome.Shell', '/org/gnome/Shell', 'org.gnome.Shell', 'Eval', 's',
                                             script)
        self.assertTrue(done, answer)
        return json.loads(answer) if answer else None

    def active_pid(self):
        return self.evaluate('global.display.focus_window ? global.display.focus_window.get_pid() : 0')

    def activate(self, probe):
        asker = Probe(self.session, 'desktop_probe')
        self.addCleanup(asker.end)
        self.assertEqual(asker.line(), 'ready')
        self.assertEqual(asker.ask('own com.quarnel.tollvane'), 'ok')
        return asker.ask(f'activate {probe.pid}')

    def test_a_window_behind_another_comes_forward(self):
        one, two = self.window('one'), self.window('two')
        self.assertEqual(self.activate(one), 'activated yes')
        wait_until(lambda: self.active_pid() == one.pid, 'the first window in front')

    def test_windows_are_for_tollvane_only(self):
        self.window('one')
        with self.assertRaisesRegex(BusError, 'Access denied'):
            self.session.bus.call('org.gnome.Shell', '/com/quarnel/tollvane/shell', 'com.quarnel.tollvane.Shell',
                                  'Windows')

    # --- the bell ---

    def test_the_bell_is_for_the_shell_only(self):
        self.start_tollvane()
        for method in ('Menu', 'State'):
            with self.assertRaisesRegex(BusError, 'Access denied'):
                self.session.bus.call('com.quarnel.tollvane', '/com/quarnel/tollvane/bell',
                                      'com.quarnel.tollvane.Bell', method)

    def start_tollvane(self):
        settings = self.session.config / 'Tollvane/defaults.json'
        settings.parent.mkdir(exist_ok=True)
        settings.write_text('{"hasLaunchedBefore": true}')
        subprocess.run(['chown', '-R', self.session.facts['user'], str(self.session.home)], check=True)
        tollvane = Probe(self.session, 'tollvane', program=self.bundle / 'Tollvane')
        self.addCleanup(tollvane.end)
        wait_until(lambda: self.evaluate('Boolean(Main.panel.statusArea.tollvane)'), 'the bell')
        return tollvane

    def play(self):
        sound = self.session.root / 'ding.wav'
        with wave.open(str(sound), 'wb') as file:
            file.setparams((1, 2, 8000, 0, 'NONE', ''))
            file.writeframes(bytes(4000))
        sound.chmod(0o644)
        self.assertTrue(self.session.succeeds(*as_user(self.session), 'pw-play', str(sound)))

    def menu(self):
        """The texts of each row, without the separators, after the menu was opened."""
        return self.evaluate('const m = Main.panel.statusArea.tollvane.menu; m.open(); m._getMenuItems()'
                             '.filter(i => i.accessible_name || i.label).map(i => i.accessible_name || i.label.text)')

    def bell(self):
        return self.evaluate('const b = Main.panel.statusArea.tollvane; [b._icon.gicon.get_file().get_basename(), '
                             'b.accessible_name]')

    def test_bell_and_menu(self):
        self.start_tollvane()
        self.assertEqual(self.bell(), ['tollvane-bell-symbolic.svg', 'Tollvane'])
        wait_until(lambda: self.play() or self.bell()[0] == 'tollvane-bell-fill-symbolic.svg', 'a filled bell')
        self.assertRegex(self.bell()[1], r'^Last sound: pw-play.* at .* · 1 unseen$')
        rows = wait_until(lambda: (found := self.menu())[0].startswith('Recent') and found, 'the menu with the sound')
        self.assertEqual(rows[0], 'Recent sounds · 1 unseen')
        self.assertIn('pw-play', rows[1])
        self.assertEqual(rows[-1], 'Quit Tollvane')
        self.choose('Mark all as seen')
        wait_until(lambda: self.bell()[0] == 'tollvane-bell-symbolic.svg', 'a hollow bell')

    def choose(self, name):
        self.evaluate('Main.panel.statusArea.tollvane.menu._getMenuItems()'
                      f'.find(i => i.accessible_name === {json.dumps(name)}).activate(null); 1')

    def test_a_key_opens_the_menu(self):
        self.start_tollvane()
        self.assertTrue(self.session.succeeds(*as_user(self.session), str(self.bundle / 'Tollvane'), '--show-menu'))
        wait_until(lambda: self.evaluate('Main.panel.statusArea.tollvane.menu.isOpen'), 'the open menu')

    def test_the_bell_goes_with_tollvane(self):
        tollvane = self.start_tollvane()
        tollvane.end()
        wait_until(lambda: not self.evaluate('Boolean(Main.panel.statusArea.tollvane)'), 'the end of the bell')

    def test_there_are_never_two_bells(self):
        self.start_tollvane()
        watcher = Probe(self.session, 'desktop_probe')
        self.assertEqual(watcher.line(), 'ready')
        self.assertEqual(watcher.ask('own org.kde.StatusNotifierWatcher'), 'ok')
        wait_until(lambda: not self.evaluate('Boolean(Main.panel.statusArea.tollvane)'), 'the end of the bell')
        watcher.end()
        wait_until(lambda: self.evaluate('Boolean(Main.panel.statusArea.tollvane)'), 'the bell')

    def test_turning_it_off_and_on_leaves_nothing_behind(self):
        self.start_tollvane()
        count = 'imports.system.gc(); Object.keys(Main.panel.statusArea).length + Main.panel._rightBox.get_n_children()'
        before = self.evaluate(count)
        extension = "Main.extensionManager.lookup('tollvane@quarnel.com').stateObj"
        self.evaluate(f'for (let i = 0; i < 100; i++) {{ {extension}.disable(); {extension}.enable(); }} 1')
        wait_until(lambda: self.evaluate('Boolean(Main.panel.statusArea.tollvane)'), 'the bell')
        self.assertEqual(self.evaluate(count), before)
        log = (pathlib.Path(self.session.facts['log']) / 'wayland').read_text(errors='replace')
        self.assertNotIn('tollvane@quarnel.com', log)


@unittest.skipUnless(pathlib.Path('/usr/lib/tollvane/Tollvane').exists(), 'the Debian package is not installed')
class InstalledGnomeTest(ShellTest):
    """The Debian package with GNOME Shell, in which the user has turned on the extension for all users."""
    options = ('--wayland', 'gnome', '--sound', 'pipewire', '--extension', 'tollvane@quarnel.com')
    evaluate = GnomeTest.evaluate
    active_pid = GnomeTest.active_pid
    start_tollvane = GnomeTest.start_tollvane
    play, menu, bell = GnomeTest.play, GnomeTest.menu, GnomeTest.bell

    def test_the_shell_loads_the_extension_from_the_package(self):
        self.assertEqual(self.evaluate("Main.extensionManager.lookup('tollvane@quarnel.com').path"),
                         '/usr/share/gnome-shell/extensions/tollvane@quarnel.com')
        self.bundle = pathlib.Path('/usr/lib/tollvane')
        self.start_tollvane()
        wait_until(lambda: self.play() or self.bell()[0] == 'tollvane-bell-fill-symbolic.svg', 'a filled bell')
        rows = wait_until(lambda: (found := self.menu())[0].startswith('Recent') and found, 'the menu with the sound')
        self.assertIn('pw-play', rows[1])
        said = subprocess.run([*as_user(self.session), '/usr/lib/tollvane/Tollvane', '--doctor'], text=True,
                              env=self.session.environment, capture_output=True, check=False).stdout
        self.assertIn("GNOME Shell shows the bell, with Tollvane's extension.", said)
        self.assertIn("Windows come forward through Tollvane's extension of GNOME Shell.", said)


class BareGnomeTest(ShellTest):
    """GNOME Shell as it comes: nothing shows the bell, so Tollvane offers its own extension."""
    options = ('--wayland', 'gnome')
    evaluate = GnomeTest.evaluate
    active_pid = GnomeTest.active_pid

    def titles(self):
        return self.evaluate('global.get_window_actors().map(a => a.meta_window.get_title())')

    def test_the_extension_is_offered_and_added(self):
        settings = self.session.config / 'Tollvane/defaults.json'
        settings.parent.mkdir(exist_ok=True)
        settings.write_text('{"hasLaunchedBefore": true}')
        subprocess.run(['chown', '-R', self.session.facts['user'], str(self.session.home)], check=True)
        tollvane = Probe(self.session, 'tollvane', program=self.bundle / 'Tollvane')
        self.addCleanup(tollvane.end)
        wait_until(lambda: self.titles() == ['Tollvane'], 'the offer')
        wait_until(lambda: self.active_pid() == tollvane.pid, 'the offer in front')
        added = self.session.data / 'gnome-shell/extensions/tollvane@quarnel.com'
        # A key may be lost until the window knows of the keyboard.
        wait_until(lambda: self.press('Return') or (added / 'extension.js').exists(), 'the files of the extension',
                   pause=0.2)
        self.assertEqual(sorted(each.name for each in added.iterdir()),
                         sorted(each.name for each in EXTENSION.iterdir()))

    def press(self, key):
        """The device stays, because the window would lose the keyboard with it."""
        self.evaluate('const {Clutter, GLib} = imports.gi; const seat = Clutter.get_default_backend()'
                      '.get_default_seat(); globalThis.keys ??= seat.create_virtual_device('
                      'Clutter.InputDeviceType.KEYBOARD_DEVICE); for (const down of [1, 0]) '
                      f'globalThis.keys.notify_keyval(GLib.get_monotonic_time(), Clutter.KEY_{key}, down); 1')


class IndicatorTest(ShellTest):
    """The bell in GNOME Shell with its extension for indicators, which draws the menu that it finds on the bus. It reads
    the properties of an item once, and then only those of which it is told."""
    options = ('--wayland', 'gnome', '--extension', INDICATORS)
    evaluate = GnomeTest.evaluate
    active_pid = GnomeTest.active_pid

    def menu(self, then=''):
        # An item that registers anew may leave an empty one behind for a moment.
        return self.evaluate('const menus = Object.keys(Main.panel.statusArea).filter(key => '
                             'key.startsWith("appindicator")).map(key => Main.panel.statusArea[key]?.menu); '
                             f'{then}; '
                             'const m = menus.find(menu => menu?._getMenuItems().length > 1); '
                             '(m?._getMenuItems() ?? []).map(i => [i.label?.text ?? "", i.sensitive])')

    def bell_with_menu(self):
        """Sometimes the extension never asks for the menu of an item that has registered while the shell starts."""
        for _ in range(5):
            bell = Probe(self.session, 'menu_probe', str(self.bundle / 'icons'), 'none')
            self.addCleanup(bell.end)
            bell.ask('image bell')
            try:
                wait_until(lambda: self.menu('menus.forEach(m => m?.open())')[:1] == [['No sounds yet', False]],
                           'the empty menu', deadline=10, pause=0.3)
                return bell
            except TimeoutError:
                bell.end()
        self.fail('the extension shows no menu')

    def test_the_menu_is_right_after_sounds_came_and_went(self):
        bell = self.bell_with_menu()
        self.menu('menus.forEach(m => m?.close())')
        bell.ask('add Mail')
        bell.ask('add Chat')
        wait_until(lambda: self.menu()[0][0] == 'Recent sounds · 2 unseen', 'the header with two sounds')
        self.assertIn(['Mark all as seen', True], self.menu())
        bell.ask('clear')
        wait_until(lambda: self.menu()[0][0] == 'No sounds yet', 'the header without sounds')
        self.assertIn(['Mark all as seen', False], self.menu())


def as_user(session):
    user, group = session.facts['user'].split(':')
    return ['setpriv', f'--reuid={user}', f'--regid={group}', '--clear-groups']


if __name__ == '__main__':
    unittest.main(verbosity=2)
