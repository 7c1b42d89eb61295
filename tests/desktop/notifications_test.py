#!/usr/bin/env python3
"""The desktops' own notification services, for real: notifications_test.py BUILD [TEST...]

Each shows notifications of notify-send, with and without a sound, beside the whole Tollvane, which must credit each
sound to the application that sent the notification. Needs what panel_session.py needs.
"""

import pathlib
import shutil
import sys
import unittest
import wave

HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parent / 'session'))

from client import LIBRARIES, PrivateSession, program
from waiting import wait_until

BUILD = pathlib.Path(sys.argv.pop(1)).resolve() if len(sys.argv) > 1 else HERE.parent.parent / 'build/release'
SERVICE = ('org.freedesktop.Notifications', '/org/freedesktop/Notifications', 'org.freedesktop.Notifications')
SOUND_OF_THE_THEME = 'message-new-instant'
RATE = 48000
MOST_SENDERS = 10


class ServiceTest(unittest.TestCase):
    """What every notification service must do. `plays` says which hints make this one play."""
    options = ('--screen', '800x600', '--window-manager', 'openbox')
    environment = {}
    plays = ()  # of 'sound-name', 'sound-file'
    can_be_silenced = True

    @classmethod
    def setUpClass(cls):
        if cls is ServiceTest:
            raise unittest.SkipTest('not a service')
        cls.session = cls.enterClassContext(PrivateSession('--sound', 'pipewire', *cls.options))
        cls.session.environment.update(GSETTINGS_BACKEND='keyfile', LIBGL_ALWAYS_SOFTWARE='1', **cls.environment)
        cls.sound, cls.marker = cls.tone('ding'), cls.tone('marker')
        # Another user runs some sessions, who may not be allowed to reach the build.
        cls.bundle = cls.session.home / 'Tollvane'
        shutil.copytree(BUILD / 'Tollvane', cls.bundle)
        cls.session.write('.config/Tollvane/defaults.json', '{"hasLaunchedBefore": true}')
        # A new sender for each notification, because two sounds of one application in a row count as one.
        for number in range(MOST_SENDERS):
            cls.session.write(f'.local/share/applications/parcel-{number}.desktop',
                              f'[Desktop Entry]\nType=Application\nName=Parcel Watch {number}\nExec=notify-send\n')
        cls.senders = iter(range(MOST_SENDERS))
        cls.session.own_home()
        cls.start_service()
        wait_until(lambda: cls.session.bus.has(SERVICE[0]), f'{cls.__name__}: the service', pause=0.2)
        cls.start('tollvane', str(cls.bundle / 'Tollvane'))
        # From the first sound that is heard, none is missed.
        wait_until(lambda: cls.play_marker() or cls.history(), 'a sound that is heard', pause=0.5)

    @classmethod
    def tone(cls, name):
        path = cls.session.root / f'{name}.wav'
        with wave.open(str(path), 'wb') as file:
            file.setparams((1, 2, RATE, 0, 'NONE', ''))
            file.writeframes(bytes(RATE))
        path.chmod(0o644)
        return path

    @classmethod
    def start(cls, name, *command):
        return cls.session.start(name, cls.session.as_user(*command), env=cls.session.environment)

    @classmethod
    def play_marker(cls):
        cls.session.succeeds(*cls.session.as_user('pw-play', cls.marker))

    @classmethod
    def history(cls):
        """What was heard: application and kind of each sound, the oldest first."""
        file = cls.session.data / 'Tollvane/history.txt'
        lines = file.read_text().splitlines() if file.exists() else []
        return [tuple(line.split('\t')[1:3]) for line in lines]

    def notify(self, *hints):
        """Sends a notification. Returns the name of its sender, and a function that tells what was heard since."""
        before, number = len(self.history()), next(self.senders)
        command = ['notify-send', '--app-name=parcel', f'--hint=string:desktop-entry:parcel-{number}',
                   *(f'--hint={hint}' for hint in hints), 'Your parcel', 'has arrived']
        self.assertTrue(self.session.succeeds(*self.session.as_user(*command)))
        return f'Parcel Watch {number}', lambda: self.history()[before:]

    def hint(self, name):
        return f'string:{name}:{self.sound if name == "sound-file" else SOUND_OF_THE_THEME}'

    def test_sound_of_a_notification_is_credited_to_its_sender(self):
        if not self.plays:
            self.skipTest('This service plays no sounds.')
        for name in self.plays:
            with self.subTest(name):
                sender, heard = self.notify(self.hint(name))
                wait_until(heard, 'the sound of the notification')
                self.assertEqual(heard(), [(sender, 'notification sound')])
                # The next sound would otherwise be taken for a part of this one.
                wait_until(lambda: self.play_marker() or len(heard()) > 1, 'the marker', pause=0.5)

    def test_notification_without_a_sound_is_not_heard(self):
        silent = [[]]
        if self.can_be_silenced:
            silent += [['boolean:suppress-sound:true', self.hint('sound-file')]]
        silent += [[self.hint(name)] for name in ('sound-name', 'sound-file') if name not in self.plays]
        for hints in silent:
            with self.subTest(hints):
                sender, heard = self.notify(*hints)
                wait_until(lambda: self.play_marker() or heard(), 'the marker', pause=0.5)
                self.assertNotIn(sender, [application for application, _ in heard()])


class MateServiceTest(ServiceTest):
    environment = {'XDG_CURRENT_DESKTOP': 'MATE'}
    plays = ('sound-file',)

    @classmethod
    def start_service(cls):
        cls.start('service', program('/usr/lib/mate-notification-daemon/mate-notification-daemon',
                                     '/usr/libexec/mate-notification-daemon/mate-notification-daemon'))


class XfceServiceTest(ServiceTest):
    environment = {'XDG_CURRENT_DESKTOP': 'XFCE'}

    @classmethod
    def start_service(cls):
        cls.session.tell('service org.xfce.Xfconf')
        cls.start('service', f'{LIBRARIES}/xfce4/notifyd/xfce4-notifyd')


class PlasmaServiceTest(ServiceTest):
    environment = {'XDG_CURRENT_DESKTOP': 'KDE', 'KDE_FULL_SESSION': 'true', 'KDE_SESSION_VERSION': '5'}

    @classmethod
    def start_service(cls):
        cls.start('activities', f'{LIBRARIES}/libexec/kactivitymanagerd')
        cls.start('service', 'plasmashell')


class GnomeServiceTest(ServiceTest):
    options = ('--wayland', 'gnome')
    plays = ('sound-file', 'sound-name')
    can_be_silenced = False  # it does not know that hint

    @classmethod
    def start_service(cls):
        """The shell is the service. A helper owns its name."""
        cls.session.tell('service org.gnome.Shell.Notifications')

    def notify(self, *hints):
        """Without a user, the shell shows a notification for ever, and the next one only when that has gone."""
        self.evaluate('Main.messageTray.getSources().forEach(source => source.destroy()); 1')
        wait_until(lambda: self.evaluate('Main.messageTray._notificationState') == [True, '0'], 'no notification shown')
        return super().notify(*hints)

    def evaluate(self, script):
        return self.session.bus.call('org.gnome.Shell', '/org/gnome/Shell', 'org.gnome.Shell', 'Eval', 's', script)


if __name__ == '__main__':
    unittest.main(verbosity=2)
