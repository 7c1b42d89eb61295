"""Tollvane in a panel that people have: the session, and the tests that every panel must pass.

The program that imports this takes the folder of the build as its first argument. Each panel runs without a screen in
a private session, with the whole Tollvane. Only the log tool is replaced, by a program that prints the lines that the
test writes, so that a window without sound can make a sound. `tests/session/software fetch session shells panels`
provides the panels.
"""

import json
import os
import pathlib
import re
import shutil
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parent / 'session'))

from PIL import ImageChops

from bus import BusError
from client import Lines, PrivateSession
from contrast import contrast
from panel_screen import Spot, XScreen
from waiting import wait_until

BUILD = pathlib.Path(sys.argv.pop(1)).resolve() if len(sys.argv) > 1 else HERE.parent.parent / 'build/release'
SERVICES = pathlib.Path('/usr/share/dbus-1/services')
WATCHER = ('org.kde.StatusNotifierWatcher', '/StatusNotifierWatcher', 'org.kde.StatusNotifierWatcher')
ITEM = 'org.kde.StatusNotifierItem'
LEAST_CONTRAST = 3  # what the guidelines for accessible content ask of symbols
# As text, because another user runs some sessions, who may not be allowed to reach the sources.
ACCESSIBLES = [sys.executable, '-B', '-c', (HERE / 'accessibles.py').read_text()]
ROWS = ('menu item', 'menu', 'separator', 'check menu item')


def unseen(value):
    found = re.search(r'\d+ unseen', str(value))
    return found[0] if found else ''


class PanelTest(unittest.TestCase):
    """What every panel must do. A panel names itself in `panel`, as screen readers know it."""
    options = ('--screen', '1024x768', '--window-manager', 'openbox')
    desktop = None      # as in XDG_CURRENT_DESKTOP
    panel = None        # the program that shows menus of the bus
    program_with_window = '/usr/bin/xmessage'
    button_of_own_menu, button_of_panel_menu = 1, 3
    tells_what_is_open = True   # that a menu was opened and closed
    tells_new_texts = True      # to screen readers, of a row that stays
    shows_tooltips = True

    @classmethod
    def setUpClass(cls):
        if cls.panel is None:
            raise unittest.SkipTest('not a panel')
        cls.session = cls.enterClassContext(PrivateSession(*cls.options))
        cls.screen = cls.make_screen()
        cls.session.environment.update({
            'XDG_CURRENT_DESKTOP': cls.desktop, 'GSETTINGS_BACKEND': 'keyfile', 'NO_AT_BRIDGE': '0',
            'LIBGL_ALWAYS_SOFTWARE': '1', 'QT_LINUX_ACCESSIBILITY_ALWAYS_ON': '1', 'QT_QPA_PLATFORM': 'xcb',
            **cls.variables()})
        cls.lasting = {**cls.session.environment, 'TOLLVANE_PART_OF_SESSION': '1'}
        cls.allow_services('org.a11y.Bus')
        cls.session.bus.call('org.a11y.Bus', '/org/a11y/bus', 'org.a11y.Bus', 'GetAddress')
        cls.bundle = cls.session.home / 'Tollvane'
        shutil.copytree(BUILD / 'Tollvane', cls.bundle)
        cls.sounds = cls.session.root / 'sounds'
        os.mkfifo(cls.sounds)
        cls.sounds.chmod(0o666)
        (cls.bundle / 'TollvaneLog').unlink()
        (cls.bundle / 'TollvaneLog').write_text(f"#!/bin/sh\nexec cat <>'{cls.sounds}'\n")
        (cls.bundle / 'TollvaneLog').chmod(0o755)
        cls.session.write('.config/Tollvane/defaults.json', '{"hasLaunchedBefore": true}')
        for name in ('Wall Clock', 'Pocket Calculator', 'Sundial'):
            # A program of this session's own: Tollvane would take one of another session for the same application.
            program = cls.program(name)
            shutil.copy(cls.program_with_window, program)
            cls.session.write(f'.local/share/applications/{program.name}.desktop',
                              f'[Desktop Entry]\nType=Application\nName={name}\nExec={program}\n')
        cls.session.own_home()
        cls.start_panel()
        wait_until(cls.has_host, f'{cls.__name__}: a host for status items')
        cls.reader = Lines(cls.session, 'accessibles', ACCESSIBLES, TOLLVANE_PART_OF_SESSION='1')

    @classmethod
    def make_screen(cls):
        return XScreen(cls.session)

    @classmethod
    def variables(cls):
        return {}

    @classmethod
    def start(cls, name, *command):
        """Starts what stays for all tests of the class."""
        return cls.session.start(name, cls.session.as_user(*command), env=cls.lasting)

    @classmethod
    def program(cls, name):
        return cls.session.home / name.lower().replace(' ', '-')

    @classmethod
    def allow_services(cls, *names):
        """The bus of a private session starts only these services by itself."""
        folder = pathlib.Path(cls.session.environment['XDG_RUNTIME_DIR']) / 'dbus-1/services'
        folder.mkdir(parents=True, exist_ok=True)
        for name in names:
            for file in SERVICES.glob(f'{name}.service'):
                shutil.copy(file, folder)
        cls.session.bus.call('org.freedesktop.DBus', '/org/freedesktop/DBus', 'org.freedesktop.DBus', 'ReloadConfig')
        environment = [f'{name}={value}' for name, value in cls.lasting.items()]
        cls.session.bus.call('org.freedesktop.DBus', '/org/freedesktop/DBus', 'org.freedesktop.DBus',
                             'UpdateActivationEnvironment', 'a{ss}', len(environment),
                             *[part for each in environment for part in each.split('=', 1)])

    @classmethod
    def has_host(cls):
        try:
            return cls.session.bus.get(*WATCHER, 'IsStatusNotifierHostRegistered')
        except BusError:
            return False

    # --- Tollvane ---

    def setUp(self):
        self.screen.point(*self.screen.nowhere)
        self.empty = self.picture_at_rest()
        self.tollvane = self.session.start('tollvane', self.session.as_user(self.bundle / 'Tollvane'))
        self.addCleanup(self.end_tollvane)
        wait_until(lambda: self.property('Id') == 'tollvane', 'the bell on the bus')

    def end_tollvane(self):
        self.screen.key('Escape')  # a menu that a failed test has left open
        self.tollvane.kill()
        self.tollvane.wait()
        self.session.tell('clear')  # its log tool, which would read what the next test writes
        wait_until(lambda: not self.bells(), 'the end of the bell')

    def bells(self):
        """Service and path of Tollvane's status items. Plasma has others, too."""
        try:
            items = self.session.bus.get(*WATCHER, 'RegisteredStatusNotifierItems')
        except BusError:
            return []
        found = [(service, slash + path or '/StatusNotifierItem')
                 for service, slash, path in (item.partition('/') for item in items)]
        return [item for item in found if self.property('Id', item) == 'tollvane']

    def property(self, name, item=None):
        if item is None:
            bells = self.bells()
            if len(bells) != 1:
                return None
            item = bells[0]
        try:
            return self.session.bus.get(*item, ITEM, name)
        except BusError:
            return None

    def window(self, name):
        """A window of one of the applications, in front. Its title is the application's name."""
        process = self.session.start(name, [str(self.program(name)), '-title', name, 'ding'])
        self.addCleanup(lambda: (process.kill(), process.wait()))
        # A window manager may not let a window take the keyboard right after a click elsewhere.
        wait_until(lambda: self.screen.bring_forward(name) or self.screen.in_front() == name,
                   f'the window {name} in front', pause=0.2)
        return process

    def sound(self, name, process):
        message = f'update_running_state {{"name":"{self.program(name).name}({process.pid})","output_running":true}}'
        with open(self.sounds, 'w', encoding='utf-8') as pipe:
            pipe.write(json.dumps({'processImagePath': '/usr/sbin/audiomxd', 'eventMessage': message, 'traceID': 1}) +
                       '\n')

    def two_sounds(self):
        """A clock and a calculator, each with a window, and a sound of each; the calculator's is the newer one."""
        self.clock = self.window('Wall Clock')
        self.calculator = self.window('Pocket Calculator')
        self.sound('Wall Clock', self.clock)
        wait_until(lambda: 'Wall Clock' in str(self.property('ToolTip')), 'the sound of the clock')
        self.sound('Pocket Calculator', self.calculator)
        wait_until(lambda: 'Pocket Calculator' in str(self.property('ToolTip')), 'the sound of the calculator')

    # --- what the screen shows ---

    def picture_at_rest(self):
        """The screen when two pictures in a row are equal."""
        last = None

        def is_at_rest():
            nonlocal last
            before, last = last, self.screen.picture()
            return before is not None and not ImageChops.difference(before, last).getbbox()
        wait_until(is_at_rest, 'a screen at rest', pause=0.3)
        return last

    def place_of_bell(self):
        """Where the screen has changed since before Tollvane started: the middle, and the picture of it."""
        def found():
            picture = self.picture_at_rest()
            box = ImageChops.difference(self.empty, picture).getbbox()
            return box and Spot.of(picture, self.bell_in(box))
        spot = wait_until(found, 'a bell on the screen')
        left, top, right, bottom = spot.box
        self.assertLess(max(bottom - top, right - left), 64, 'more than a bell has changed')
        return ((left + right) // 2, (top + bottom) // 2), spot

    def shown(self, program):
        """All elements of a program, flat, in their order."""
        def flat(elements):
            for each in elements:
                yield (each['role'], each['name'], str(each['place'])), each
                yield from flat(each['below'])
        return list(dict(flat(json.loads(self.reader.ask(f'tree {program}')))).values())  # some are there twice

    def rows(self, program):
        """The texts of an open menu, and whether each can be chosen. A separator is an empty text."""
        found = [each for each in self.shown(program) if each['showing'] and each['place'] and each['place'][3] > 0 and
                 (each['role'] == 'separator' or each['role'] in ROWS and each['name'])]
        return [('', False) if each['role'] == 'separator' else (each['name'], each['enabled']) for each in found]

    def bell_in(self, changed):
        """The place of the bell, if only that has changed."""
        return changed

    # --- the tests of every panel ---

    def test_bell_is_hollow_then_filled_and_names_the_last_sound(self):
        spot, hollow = self.place_of_bell()
        if not self.shows_tooltips:
            self.two_sounds()
            wait_until(lambda: self.crop(hollow) != hollow.picture, 'another picture of the bell')
            self.assert_is_seen(hollow)
            return
        short_tip = self.await_tooltip(spot)
        self.screen.point(*self.screen.nowhere)
        self.two_sounds()
        wait_until(lambda: self.crop(hollow) != hollow.picture, 'another picture of the bell')
        self.assert_is_seen(hollow)
        if isinstance(short_tip, int):
            self.await_tooltip(spot, lambda width: width > 2 * short_tip)
            return
        self.assertEqual(short_tip, 'Tollvane')
        tip = self.await_tooltip(spot)
        self.assertRegex(tip, r'^Last sound: Pocket Calculator at \d+:\d\d:\d\d( [AP]M)? · 2 unseen$')

    def test_panels_menu_is_right_after_sounds_came_were_seen_and_were_cleared(self):
        spot, hollow = self.place_of_bell()
        self.open_panels_menu(spot)
        self.assertEqual(self.rows(self.panel)[:2], [('No sounds yet', False), ('', False)])
        self.close_menu()
        sundial = self.window('Sundial')
        self.two_sounds()
        self.open_panels_menu(spot)
        self.assert_rows(self.rows(self.panel), 'Recent sounds · 2 unseen', ['Pocket Calculator', 'Wall Clock'], True)

        self.sound('Sundial', sundial)
        wait_until(lambda: '3 unseen' in str(self.property('ToolTip')), 'the third sound')
        if self.tells_what_is_open:
            # What is open stays as it is, because nobody wants to hit the wrong row.
            self.assert_rows(self.rows(self.panel), 'Recent sounds · 2 unseen', ['Pocket Calculator', 'Wall Clock'],
                             True)
        self.close_menu()
        self.open_panels_menu(spot)
        self.assert_rows(self.rows(self.panel), 'Recent sounds · 3 unseen',
                         ['Sundial', 'Pocket Calculator', 'Wall Clock'], True)

        self.choose('Mark all as seen')
        wait_until(lambda: 'unseen' not in str(self.property('ToolTip')), 'no unseen sound')
        self.screen.point(*self.screen.nowhere)
        wait_until(lambda: self.crop(hollow) == hollow.picture, 'a hollow bell')
        self.open_panels_menu(spot)
        self.assert_rows(self.rows(self.panel), 'Recent sounds', ['Sundial', 'Pocket Calculator', 'Wall Clock'], False)
        self.choose('Clear list')
        wait_until(lambda: self.property('ToolTip')[2] == 'Tollvane', 'an empty list')
        self.open_panels_menu(spot)
        self.assert_rows(self.rows(self.panel), 'No sounds yet', [], False)

    def assert_rows(self, rows, header, sounds, unseen):
        self.assertEqual(rows[0], (header if self.tells_new_texts else rows[0][0], False))
        for (text, enabled), name in zip(rows[1:], sounds):
            self.assertRegex(text, rf'^\d+:\d\d:\d\d( [AP]M)?  {name} · started playing audio$')
            self.assertTrue(enabled)
        self.assertEqual(rows[len(sounds) + 1:], [
            ('', False), ('Mark all as seen', unseen), ('Open full history', True), ('Clear list', True), ('', False),
            ('Check for updates', True), ('Browser extensions…', True), ('Settings…', True), ('Quit Tollvane', True)])

    def test_choice_in_the_panels_menu_brings_the_window_forward(self):
        spot = self.place_of_bell()[0]
        self.two_sounds()
        self.open_panels_menu(spot)
        self.choose('Wall Clock')
        wait_until(lambda: self.screen.in_front() == 'Wall Clock', 'the clock in front')
        wait_until(lambda: '1 unseen' in str(self.property('ToolTip')), 'a sound that was seen')

    def test_choice_in_tollvanes_menu_brings_the_window_forward(self):
        if not self.button_of_own_menu:
            self.skipTest('This panel always shows its own menu.')
        spot = self.place_of_bell()[0]
        self.two_sounds()
        self.screen.click(*spot, self.button_of_own_menu)
        self.await_menu('Tollvane')
        self.choose('Wall Clock', 'Tollvane')
        wait_until(lambda: self.screen.in_front() == 'Wall Clock', 'the clock in front')

    def test_settings_and_alerts_come_forward(self):
        spot = self.place_of_bell()[0]
        self.two_sounds()
        self.open_panels_menu(spot)
        self.choose('Settings…')
        self.assert_comes_forward('Tollvane Settings')
        self.clock.kill()
        self.clock.wait()
        self.open_panels_menu(spot)
        self.choose('Wall Clock')
        self.assert_comes_forward('Tollvane')

    # --- steps ---

    def assert_comes_forward(self, title):
        wait_until(lambda: self.screen.in_front() == title, f'the window {title} in front')
        self.assert_has_name_and_icon(title)

    def assert_has_name_and_icon(self, _):
        """What panels and switchers of windows show of the window in front."""
        self.assertEqual(self.screen.property_in_front('WM_CLASS'), '"Tollvane", "Tollvane"')
        self.assertIn('Icon (', self.screen.property_in_front('_NET_WM_ICON'))

    def crop(self, known):
        return Spot.of(self.screen.picture(), known.box).picture

    def assert_is_seen(self, bell):
        """Against what the panel showed in its place before."""
        ground = self.empty.crop(bell.box).getpixel((0, 0))
        best = max(contrast(ink, ground) for _, ink in self.crop(bell).getcolors(10000))
        self.assertGreaterEqual(best, LEAST_CONTRAST)

    def tooltip(self):
        """What the tooltip says. Panels of GTK do not tell screen readers: then it is the tooltip's width."""
        return next((each['name'] for each in self.shown(self.panel) if each['role'] == 'tool tip'),
                    self.screen.width_of_tooltip())

    def await_tooltip(self, spot, is_right=bool):
        """Points again if there is no tooltip, because a toolkit shows none if it learns of the two steps at once."""
        def found():
            tip = self.tooltip()
            return tip if tip and is_right(tip) else None

        def found_soon():
            self.screen.point(*self.screen.nowhere)
            wait_until(lambda: not self.tooltip(), 'the end of the tooltip')
            self.screen.point(*spot)
            try:
                return wait_until(found, 'the tooltip', deadline=10)
            except TimeoutError:
                return None
        return wait_until(found_soon, 'the tooltip')

    def open_panels_menu(self, spot):
        if not self.tells_what_is_open:
            # For 3 s, Tollvane takes a menu for open that the panel has asked for, and leaves it as it is.
            wait_until(lambda: unseen(self.layout()) == unseen(self.property('ToolTip')), 'the new menu on the bus')
        self.screen.click(*spot, self.button_of_panel_menu)
        self.await_menu(self.panel)

    def layout(self):
        return self.session.bus.call(self.bells()[0][0], '/StatusNotifierItem/Menu', 'com.canonical.dbusmenu',
                                     'GetLayout', 'iias', 0, -1, 0)

    def await_menu(self, program):
        """Gives the keyboard to a row, because otherwise a menu of Qt is not found."""
        wait_until(lambda: self.screen.key('Down') or len(self.rows(program)) > 2, f'the menu of {program}', pause=0.2)

    def close_menu(self):
        self.screen.key('Escape')
        wait_until(lambda: not self.rows(self.panel), "the end of the panel's menu")

    def choose(self, text, program=None):
        row = next(each for each in self.shown(program or self.panel)
                   if each['role'] in ROWS and text in each['name'] and each['showing'])
        left, top, width, height = row['place']
        self.screen.click(left + min(width // 2, 60), top + height // 2)
