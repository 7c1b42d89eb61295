#!/usr/bin/env -S python3 -B
"""Tests of private_session: its parts come up, its commands work, and nothing of it stays behind."""

import contextlib
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import unittest
import unittest.mock

from client import PROGRAM, PrivateSession, SessionFailure
from waiting import wait_until

HERE = pathlib.Path(__file__).resolve().parent
WATCHER = ('org.kde.StatusNotifierWatcher', '/StatusNotifierWatcher', 'org.kde.StatusNotifierWatcher')
# Variables that could lead a program of the session to the desktop of the user who runs the tests.
FOREIGN = {
    'DISPLAY': ':77', 'WAYLAND_DISPLAY': 'wayland-77', 'XAUTHORITY': '/foreign', 'SESSION_MANAGER': 'foreign',
    'DBUS_SESSION_BUS_ADDRESS': 'unix:path=/foreign', 'DBUS_SYSTEM_BUS_ADDRESS': 'unix:path=/foreign',
    'PULSE_SERVER': 'foreign', 'PULSE_RUNTIME_PATH': '/foreign', 'PIPEWIRE_REMOTE': 'foreign',
    'PIPEWIRE_RUNTIME_DIR': '/foreign', 'XDG_CONFIG_HOME': '/foreign', 'XDG_DATA_DIRS': '/foreign',
    'XDG_CONFIG_DIRS': '/foreign', 'XDG_SESSION_TYPE': 'foreign', 'XDG_CURRENT_DESKTOP': 'foreign',
    'GTK_THEME': 'foreign', 'GDK_SCALE': '7', 'GDK_BACKEND': 'foreign', 'QT_QPA_PLATFORM': 'foreign',
    'QT_SCALE_FACTOR': '7', 'LC_ALL': 'foreign', 'LANGUAGE': 'foreign', 'SWAYSOCK': '/foreign', 'HOME': '/foreign',
    'TOLLVANE_PART_OF_SESSION': 'foreign'}


def processes_of(root):
    """The ids of all processes with the session's runtime directory in their environment."""
    found = []
    for directory in pathlib.Path('/proc').glob('[0-9]*'):
        with contextlib.suppress(OSError):
            if f'XDG_RUNTIME_DIR={root}/run'.encode() in (directory / 'environ').read_bytes().split(b'\0'):
                found.append(int(directory.name))
    return found


def runs(pid):
    try:
        return re.search(r'\) (\w)', pathlib.Path(f'/proc/{pid}/stat').read_text())[1] != 'Z'
    except OSError:
        return False


class SessionTest(unittest.TestCase):
    def session(self, *options):
        return self.enterContext(PrivateSession(*options))

    def assert_gone(self, root):
        self.assertEqual(processes_of(root), [])
        self.assertFalse(pathlib.Path(root).exists())

    def host_is_registered(self, session):
        return self.run_in(session, 'busctl', '--user', 'get-property', *WATCHER, 'IsStatusNotifierHostRegistered')

    def run_in(self, session, *command):
        user = session.facts.get('user')
        if user:
            uid, gid = user.split(':')
            command = ('setpriv', '--reuid', uid, '--regid', gid, '--clear-groups', *command)
        return session.output(*command)

    def failure(self, *options, **programs):
        """The sentence of a session that fails to come up. `programs`: shell scripts that replace real programs."""
        with tempfile.TemporaryDirectory() as directory:
            for name, text in programs.items():
                file = pathlib.Path(directory, name)
                file.write_text(f'#!/bin/sh\n{text}\n')
                file.chmod(0o755)
            with unittest.mock.patch.dict(os.environ, {'PATH': f"{directory}:{os.environ['PATH']}"}):
                with self.assertRaises(SessionFailure) as failure:
                    PrivateSession(*options)
        return str(failure.exception)


class Parts(SessionTest):
    def test_bus_without_anything_else(self):
        session = self.session()
        self.assertTrue(session.bus.has('org.freedesktop.DBus'))
        self.assertNotIn('DISPLAY', session.environment)

    def test_bus_starts_no_service_of_the_machine(self):
        session = self.session()
        names = session.bus.call('org.freedesktop.DBus', '/org/freedesktop/DBus', 'org.freedesktop.DBus',
                                 'ListActivatableNames')[0]
        self.assertEqual([name for name in names if name != 'org.freedesktop.DBus'], [])

    def test_nothing_of_the_foreign_environment_leaks_in(self):
        with unittest.mock.patch.dict(os.environ, FOREIGN):
            session = self.session('--screen', '300x200', '--window-manager', 'openbox')
        for name, value in FOREIGN.items():
            self.assertNotEqual(session.environment.get(name), value, name)
        for part in ('bus', 'screen', 'window_manager'):
            environment = pathlib.Path(f"/proc/{session.facts[part + '_pid']}/environ").read_text().split('\0')
            leaked = {name for name, value in FOREIGN.items() if f'{name}={value}' in environment}
            self.assertEqual(leaked, set(), part)

    def test_screen_has_the_size_and_the_scale(self):
        session = self.session('--screen', '300x200', '--scale', '2', '--window-manager', 'openbox')
        self.assertEqual(session.output('xdotool', 'getdisplaygeometry'), '600 400')
        self.assertEqual(session.environment['GDK_SCALE'], '2')

    def test_panel_takes_status_items_and_changes_its_tone(self):
        session = self.session('--screen', '300x200', '--window-manager', 'openbox', '--panel', 'xfce4')
        self.assertEqual(self.host_is_registered(session), 'b true')
        first = session.facts['panel_pid']
        dark = self.brightness(session)
        session.tell('tone light')
        self.assertEqual(self.host_is_registered(session), 'b true')
        self.assertNotEqual(session.facts['panel_pid'], first)
        wait_until(lambda: self.brightness(session) > dark + 50, 'a light panel')

    def brightness(self, session):
        """The brightness of a pixel of the panel, after the panel has been drawn over the background."""
        def look():
            pixel = subprocess.run(
                ['import', '-silent', '-window', 'root', '-crop', '1x1+100+14', '-depth', '8', 'rgb:-'],
                env=session.environment, capture_output=True, check=True).stdout
            return None if pixel == bytes.fromhex('4f6272') else sum(pixel) / 3 + 1
        return wait_until(look, 'the panel')

    def test_compositor_and_bar_run_as_somebody_who_is_not_root(self):
        session = self.session('--wayland', 'sway', '--bar', 'waybar', '--screen', '400x300')
        self.assertEqual(self.host_is_registered(session), 'b true')
        self.assertIn('400', self.run_in(session, 'swaymsg', '-t', 'get_outputs'))
        for part in ('bus', 'wayland', 'bar'):
            self.assertNotEqual(pathlib.Path(f"/proc/{session.facts[part + '_pid']}").stat().st_uid, 0, part)

    def test_notification_service_runs_the_program(self):
        session = self.session('--screen', '300x200')
        trace = session.root / 'trace'
        program = session.root / 'program'
        program.write_text(f'#!/bin/sh\ntouch {trace}\n')
        program.chmod(0o700)
        session.tell(f'start notifications {program}')
        self.assertTrue(session.succeeds('notify-send', 'A parcel'))
        wait_until(trace.exists, "the program's run")

    def test_service_of_the_bus_is_started_when_asked_for(self):
        session = self.session()
        self.assertFalse(session.bus.has('org.xfce.Xfconf'))
        session.tell('service org.xfce.Xfconf')
        self.assertTrue(session.bus.has('org.xfce.Xfconf'))


class Sound(SessionTest):
    def test_pipewire_plays(self):
        session = self.session('--sound', 'pipewire')
        self.assertTrue(session.succeeds('paplay', str(session.root / 'silence.wav')))
        self.assertTrue(session.succeeds('pw-play', str(session.root / 'silence.wav')))

    def test_pipewire_stops_and_starts_again(self):
        session = self.session('--sound', 'pipewire')
        for verb in ('stop', 'kill'):
            session.tell(f'{verb} pipewire')
            self.assertFalse(session.succeeds('pactl', 'info'))
            session.tell('start pipewire')
            self.assertTrue(session.succeeds('pactl', 'info'))

    def test_pulseaudio_plays(self):
        installation = os.environ.get('TOLLVANE_PULSEAUDIO', '')
        if not pathlib.Path(installation, 'usr/bin/pulseaudio').exists():
            self.skipTest(f"There is no PulseAudio server in '{installation}'; './dev test sound' puts it there.")
        session = self.session('--sound', 'pulseaudio', '--pulseaudio', installation)
        self.assertIn('Server Name: pulseaudio', session.output('pactl', 'info'))


class Commands(SessionTest):
    def test_part_that_is_killed_is_gone_and_starts_again(self):
        session = self.session()
        first = int(session.facts['bus_pid'])
        session.tell('kill bus')
        self.assertFalse(runs(first))
        session.tell('start bus')
        self.assertNotEqual(int(session.facts['bus_pid']), first)
        self.assertTrue(session.bus.has('org.freedesktop.DBus'))

    def test_command_that_fails_is_one_sentence_and_the_session_goes_on(self):
        session = self.session()
        for command, sentence in (('start bus', 'the session bus (dbus-daemon) runs already'),
                                  ('stop panel', 'the panel (xfce4-panel) does not run'),
                                  ('tone light', 'there is neither panel nor bar whose tone could change'),
                                  ('service org.example.None', 'there is no service org.example.None on this machine'),
                                  ('start everything', "'start everything' is no command")):
            with self.assertRaises(SessionFailure) as failure:
                session.tell(command)
            self.assertEqual(str(failure.exception), sentence)
        self.assertTrue(session.bus.has('org.freedesktop.DBus'))

    def test_clear_ends_what_programs_left_behind_and_no_part(self):
        session = self.session('--screen', '300x200', '--window-manager', 'openbox')
        stray = int(session.output('sh', '-c', 'setsid sleep 1000 >/dev/null 2>&1 & echo $!'))
        self.assertTrue(runs(stray))
        session.tell('clear')
        self.assertFalse(runs(stray))
        for part in ('bus', 'screen', 'window_manager'):
            self.assertTrue(runs(int(session.facts[f'{part}_pid'])), part)


class End(SessionTest):
    OPTIONS = ('--screen', '300x200', '--window-manager', 'openbox', '--panel', 'xfce4')

    def test_nothing_stays_at_the_end_of_the_input(self):
        with PrivateSession(*self.OPTIONS) as session:
            stray = int(session.output('sh', '-c', 'trap "" TERM; setsid sleep 1000 >/dev/null 2>&1 & echo $!'))
            self.assertIn(stray, processes_of(session.root))
        self.assert_gone(session.root)

    def test_nothing_stays_when_the_client_is_killed(self):
        script = ('import time; from client import PrivateSession; session = PrivateSession(*%r);'
                  'print(session.root, flush=True); time.sleep(1000)' % (self.OPTIONS,))
        client = subprocess.Popen([sys.executable, '-B', '-c', script], stdout=subprocess.PIPE, text=True, cwd=HERE)
        with client.stdout:
            root = client.stdout.readline().strip()
            self.assertTrue(pathlib.Path(root).exists())
            client.kill()
            client.wait()
        wait_until(lambda: not processes_of(root) and not pathlib.Path(root).exists(), 'the end of the session')

    def test_nothing_stays_when_another_process_holds_the_input_open_and_the_client_is_killed(self):
        reader, writer = os.pipe()
        client = subprocess.Popen(['sh', '-c', '"$0" <&"$1"; exit', PROGRAM, str(reader)], stdout=subprocess.PIPE,
                                  text=True, pass_fds=(reader,))
        with client.stdout:
            root = next(line for line in client.stdout if line.startswith('root=')).strip().removeprefix('root=')
            client.kill()
            client.wait()
            wait_until(lambda: not processes_of(root) and not pathlib.Path(root).exists(), 'the end of the session')
        os.close(reader)
        os.close(writer)

    def test_nothing_stays_of_a_session_that_did_not_come_up(self):
        with tempfile.TemporaryDirectory() as directory:
            with unittest.mock.patch.dict(os.environ, {'TMPDIR': directory}):
                self.failure(*self.OPTIONS, openbox='exit 3')
            self.assertEqual(list(pathlib.Path(directory).iterdir()), [])


class Failures(SessionTest):
    def test_part_that_ends_is_named_with_its_last_words(self):
        sentence = self.failure('--screen', '300x200', Xvfb='echo first >&2; echo no screen today >&2; exit 3')
        self.assertEqual(sentence, 'the X server (Xvfb) ended with 3 before it was ready | first | no screen today')

    def test_part_that_hangs_is_named_with_its_last_words(self):
        sentence = self.failure('--screen', '300x200', '--window-manager', 'openbox', '--patience', '1',
                                openbox='echo thinking; exec sleep 1000')
        self.assertEqual(sentence, 'the window manager (openbox) was not ready within 1 s | thinking')

    def test_program_that_is_missing_is_named(self):
        with unittest.mock.patch.dict(os.environ, {'PATH': self.path_without('Xvfb')}):
            with self.assertRaises(SessionFailure) as failure:
                PrivateSession('--screen', '300x200')
        self.assertEqual(str(failure.exception), 'the program Xvfb is not here')

    def path_without(self, program):
        """A directory with all programs except `name`."""
        directory = self.enterContext(tempfile.TemporaryDirectory())
        for place in reversed(os.environ['PATH'].split(':')):
            for file in pathlib.Path(place).glob('*'):
                link = pathlib.Path(directory, file.name)
                if file.name != program:
                    link.unlink(missing_ok=True)
                    link.symlink_to(file)
        return directory


class Misuse(unittest.TestCase):
    def test_mistake_is_one_sentence_and_exit_code_64(self):
        for options in (['--sound', 'gramophone'], ['--screen', 'large'], ['--screen', '0x5'], ['--panel', 'xfce4'],
                        ['--bar', 'waybar'], ['--wayland', 'sway', '--panel', 'xfce4', '--screen', '9x9'],
                        ['--notifications', 'dunst'], ['--without-bus', '--sound', 'pipewire'], ['--scale', '0'],
                        ['extra'], ['--unknown']):
            done = subprocess.run([PROGRAM, *options], capture_output=True, text=True, stdin=subprocess.DEVNULL)
            self.assertEqual((done.returncode, done.stdout), (64, ''), options)
            self.assertRegex(done.stderr, r'\Aprivate_session: [^\n]+\. Try --help\.\n\Z', options)


if __name__ == '__main__':
    unittest.main(verbosity=2)
