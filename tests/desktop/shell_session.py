"""A session with a shell and the whole Tollvane, for the tests of KWin and of GNOME Shell.

The program that imports this takes the folder of the build as its first argument. The shells run without a screen;
`tests/session/software fetch session shells` provides them.
"""

import pathlib
import re
import shutil
import subprocess
import sys
import unittest
import wave

HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parent / 'session'))

from client import Lines, PrivateSession
from waiting import wait_until

BUILD = pathlib.Path(sys.argv.pop(1)).resolve() if len(sys.argv) > 1 else HERE.parent.parent / 'build/release'
PROBES = BUILD / 'tests/probes'
SIZE = ('--screen', '1024x768')


def shell_version():
    """Of the GNOME Shell that is here; 0 if there is none."""
    try:
        said = subprocess.run(['gnome-shell', '--version'], capture_output=True, text=True).stdout
    except FileNotFoundError:
        said = ''
    found = re.search(r'\d+', said)
    return int(found[0]) if found else 0


def form():
    """The form of our extension for that GNOME Shell."""
    return '45' if shell_version() >= 45 else '43'


EXTENSION = BUILD / f'Tollvane/Extensions/gnome/{form()}/tollvane@quarnel.com'
INDICATORS = 'ubuntu-appindicators@ubuntu.com'


class Probe(Lines):
    """One of the tests' programs, or another one that obeys lines."""

    def __init__(self, session, name, *arguments, program=None, environment=None):
        super().__init__(session, name, [program or PROBES / name, *arguments], **(environment or {}))
        self.pid, self.name = self.process.pid, name

    def end(self):
        self.process.kill()
        self.process.wait()


class ShellTest(unittest.TestCase):
    """A session with a shell, and what a window of another application needs: an entry, and a program of its own."""
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
        cls.session.own_home()

    def start(self, *arguments, **options):
        """A program that ends with the test."""
        probe = Probe(self.session, *arguments, **options)
        self.addCleanup(probe.end)
        return probe

    def start_tollvane(self, **options):
        self.session.write('.config/Tollvane/defaults.json', '{"hasLaunchedBefore": true}')
        self.session.own_home()
        return self.start('tollvane', program=self.bundle / 'Tollvane', **options)

    def window(self, name):
        probe = self.start(name, program=self.session.home / name)
        self.assertEqual(probe.line(), 'ready')
        probe.process.stdin.write(f'alert I am {name}|and here I stay|OK\n')
        probe.process.stdin.flush()
        wait_until(lambda: self.active_pid() == probe.pid, f'the window of {name} in front')
        return probe

    def sound(self):
        """The path of a file with half a second of sound."""
        path = self.session.root / 'ding.wav'
        with wave.open(str(path), 'wb') as file:
            file.setparams((1, 2, 8000, 0, 'NONE', ''))
            file.writeframes(bytes(8000))
        path.chmod(0o644)
        return str(path)

    def asker(self, **options):
        asker = self.start('desktop_probe', **options)
        self.assertEqual(asker.line(), 'ready')
        return asker

    def activate(self, probe):
        return self.asker().ask(f'activate {probe.pid}')
