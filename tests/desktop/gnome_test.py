#!/usr/bin/env python3
"""Tollvane in GNOME Shell, for real: gnome_test.py BUILD [TEST...]"""

import json
import pathlib
import subprocess
import unittest

from gnome_session import ExtensionSession, GnomeSession
from shell_session import EXTENSION, INDICATORS, shell_version
from bus import BusError
from contrast import contrast
from waiting import wait_until


class GnomeTest(ExtensionSession):
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

    def test_bell_and_menu(self):
        self.start_tollvane()
        self.assertEqual(self.bell(), ['tollvane-bell-symbolic.svg', 'Tollvane'])
        wait_until(lambda: self.play() or self.bell()[0] == 'tollvane-bell-fill-symbolic.svg', 'a filled bell')
        self.assertRegex(self.bell()[1], r'^Last sound: pw-play.* at .* · 1 unseen$')
        rows = wait_until(lambda: (found := self.menu())[0].startswith('Recent') and found, 'the menu with the sound')
        self.assertEqual(rows[0], 'Recent sounds · 1 unseen')
        self.assertIn('pw-play', rows[1])
        self.assertEqual(rows[2:], ['', 'Mark all as seen', 'Open full history', 'Clear list', '', 'Check for updates',
                                    'Browser extensions…', 'Settings…', 'Quit Tollvane'])
        self.choose('Mark all as seen')
        wait_until(lambda: self.bell()[0] == 'tollvane-bell-symbolic.svg', 'a hollow bell')

    def test_an_open_menu_stays_as_it_is_and_is_right_when_it_is_opened_again(self):
        one = self.window('one')
        self.start_tollvane()
        wait_until(lambda: self.play() or 'unseen' in self.bell()[1], 'a sound')
        before = wait_until(lambda: (found := self.menu())[0].startswith('Recent') and found, 'the menu with the sound')
        wait_until(lambda: one.ask(f'play {self.sound()}') and 'Window one' in self.bell()[1], 'another one', pause=1)
        self.assertEqual(self.menu(), before)

        def opened_again():
            self.evaluate('Main.panel.statusArea.tollvane.menu.close(); 1')
            return self.menu()
        rows = wait_until(lambda: 'Window one' in (found := opened_again())[1] and found, 'the menu with both')
        self.assertRegex(rows[0], r'^Recent sounds · \d+ unseen$')
        self.assertTrue(any('pw-play' in row for row in rows[2:]), rows)
        self.choose('Mark all as seen')
        wait_until(lambda: opened_again()[0] == 'Recent sounds', 'a menu without unseen sounds')
        self.assertFalse(self.is_enabled('Mark all as seen'))
        self.assertIn('Window one', self.menu()[1])
        self.choose('Clear list')
        wait_until(lambda: opened_again()[0] == 'No sounds yet', 'the empty menu')
        self.assertEqual(self.menu()[1:3], ['', 'Mark all as seen'])

    def is_enabled(self, name):
        return self.evaluate('Main.panel.statusArea.tollvane._rows._getMenuItems()'
                             f'.find(i => i.accessible_name === {json.dumps(name)}).sensitive')

    def test_a_key_opens_the_menu(self):
        self.start_tollvane()
        self.assertTrue(self.shows_menu())
        wait_until(lambda: self.evaluate('Main.panel.statusArea.tollvane.menu.isOpen'), 'the open menu')

    def test_keys_choose_commands(self):
        self.start_tollvane()
        self.open_menu()
        self.press('comma')
        self.press('Down')
        wait_until(lambda: self.evaluate('Main.panel.statusArea.tollvane._rows._getMenuItems().some(i => i.active)'),
                   'a chosen row: a comma alone does nothing')
        self.press('Control_L', 'comma')
        wait_until(lambda: 'Tollvane Settings' in self.titles(), 'the settings window')
        self.assertEqual(self.titles().count('Tollvane Settings'), 1)
        self.assertFalse(self.evaluate('Main.panel.statusArea.tollvane.menu.isOpen'))

    def test_rows_and_bell_have_tooltips(self):
        self.start_tollvane()
        wait_until(lambda: self.play() or self.bell()[0] == 'tollvane-bell-fill-symbolic.svg', 'a filled bell')
        self.point_at('Main.panel.statusArea.tollvane')
        wait_until(lambda: self.tips(), 'the tooltip of the bell')
        self.assertRegex(self.tips()[0][0], r'^Last sound: pw-play.* at .* · 1 unseen$')
        self.open_menu()
        wait_until(lambda: not self.tips(), 'the end of the tooltip')
        self.point_at('Main.panel.statusArea.tollvane._rows._getMenuItems()[1]')
        wait_until(lambda: self.tips(), 'the tooltip of the sound')
        [[tip, is_on_screen, is_markup]] = self.tips()
        self.assertRegex(tip, '^Click to open pw-play')
        self.assertEqual([is_on_screen, is_markup], [True, False])
        self.evaluate('Main.panel.statusArea.tollvane.menu.close(); 1')
        self.point(500, 500)
        wait_until(lambda: not self.tips(), 'the end of the tooltip')
        self.assertEqual(self.evaluate('Main.panel.statusArea.tollvane._toolTip._timer'), 0, 'a timer runs on')

    def test_the_settings_window_has_a_title_bar(self):
        """GNOME draws none, so the toolkit must."""
        def height(**environment):
            tollvane = self.start_tollvane(environment={'QT_WAYLAND_CLIENT_BUFFER_INTEGRATION': '', **environment})
            self.assertTrue(self.session.succeeds(*self.session.as_user(self.bundle / 'Tollvane')))
            wait_until(lambda: self.titles() == ['Tollvane Settings'], 'the settings window')
            window = 'global.get_window_actors()[0].meta_window'
            found = wait_until(lambda: self.evaluate(f'{window}.get_frame_rect().height'), 'its size')
            tollvane.end()
            wait_until(lambda: not self.titles() and not self.has_bell(), 'the end of Tollvane')
            return found
        self.assertGreater(height(), height(QT_WAYLAND_DISABLE_WINDOWDECORATION='1'))

    def test_settings_and_alerts_come_forward_with_name_and_icon(self):
        self.start_tollvane()
        one = self.window('one')
        wait_until(lambda: one.ask(f'play {self.sound()}') and 'Window one' in self.bell()[1], 'the sound', pause=1)
        row = wait_until(lambda: next((each for each in self.menu() if 'Window one' in each), None), 'its row')
        self.choose('Settings…')
        self.assert_comes_forward('Tollvane Settings')
        one.end()
        self.window('two')
        self.open_menu()
        self.choose(row)
        self.assert_comes_forward('Tollvane')

    def portal(self, settings):
        """The desktop portal with these settings, as a GNOME session has it."""
        self.addCleanup(self.evaluate, 'globalThis.portal.close_sync(null); 1')
        self.evaluate("""
            const {Gio, GLib} = imports.gi;
            const bus = globalThis.portal = Gio.DBusConnection.new_for_address_sync(
              GLib.getenv('DBUS_SESSION_BUS_ADDRESS'), Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
              Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, null, null);
            const settings = SETTINGS;
            const portal = Gio.DBusExportedObject.wrapJSObject(`<node><interface name="org.freedesktop.portal.Settings">
              <method name="Read"><arg type="s" direction="in"/><arg type="s" direction="in"/>
                <arg type="v" direction="out"/></method></interface></node>`, {
              ReadAsync([group, key], call) {
                const found = settings[key];
                if (found)
                  call.return_value(new GLib.Variant('(v)', [new GLib.Variant('v', found)]));
                else
                  call.return_dbus_error('org.freedesktop.portal.Error.NotFound', key);
              }});
            portal.export(bus, '/org/freedesktop/portal/desktop');
            bus.call_sync('org.freedesktop.DBus', '/', 'org.freedesktop.DBus', 'RequestName',
              new GLib.Variant('(su)', ['org.freedesktop.portal.Desktop', 4]), null, 0, -1, null);
            1""".replace('SETTINGS', settings))

    def menu_of(self, scenario):
        bell = self.start('menu_probe', str(self.bundle / 'icons'), scenario)
        bell.ask('image bell.fill')
        bell.ask('claim')
        wait_until(self.has_bell, 'the bell')
        wait_until(lambda: len(self.menu()) > 9, 'the menu with sounds')

    def test_every_row_is_reached_if_the_menu_is_higher_than_the_screen(self):
        self.menu_of('fifty')
        rows = 'Main.panel.statusArea.tollvane._rows._getMenuItems()'
        self.evaluate(f"{rows}.forEach(row => {{ row.style = 'padding: 40px'; }}); 1")

        def place(row):
            """Top and height."""
            return self.evaluate(f'const row = {row}; '
                                 '[row.get_transformed_position()[1], row.get_transformed_size()[1]]')
        wait_until(lambda: sum(place(f'{rows}.at(-1)')) > 1000, 'a menu that is too high')
        submenu = f'{rows}.find(row => row.menu)'
        self.evaluate(f'{submenu}.menu.open(false); 1')
        wait_until(lambda: self.evaluate(f'{submenu}.menu._getMenuItems().length') == 45, 'the older sounds')
        for row in (f'{rows}.at(-1)', f'{rows}[1]', f'{submenu}.menu._getMenuItems().at(-1)', f'{rows}.at(-1)'):
            self.evaluate(f'{row}.grab_key_focus(); 1')
            wait_until(lambda: 0 <= (found := place(row))[0] and sum(found) <= 768, 'the row on the screen')

    def test_tabs_can_be_read_in_dark_and_light_menus_whatever_the_accent_colour(self):
        self.menu_of('tabs')
        self.evaluate("""
            globalThis.look = new imports.gi.Gio.Settings({schema_id: 'org.gnome.desktop.interface'});
            globalThis.find = (actor, name) => actor.has_style_class_name?.(name) ? actor : actor.get_children()
              .reduce((found, each) => found ?? globalThis.find(each, name), null); 1""")
        self.addCleanup(self.evaluate, "for (const key of ['color-scheme', 'accent-color']) "
                                       'if (globalThis.look.settings_schema.has_key(key)) globalThis.look.reset(key); 1')
        seen = set()
        for scheme in ('default', 'prefer-light'):
            for accent in ('blue', 'yellow', 'red', 'purple', 'slate'):
                ink, ground = self.evaluate(f"""
                    const rgb = colour => [colour.red, colour.green, colour.blue];
                    globalThis.look.set_string('color-scheme', '{scheme}');
                    if (globalThis.look.settings_schema.has_key('accent-color'))
                      globalThis.look.set_string('accent-color', '{accent}');
                    const {{menu}} = Main.panel.statusArea.tollvane;
                    const tab = globalThis.find(menu.box, 'tollvane-accent');
                    [rgb(tab.get_theme_node().get_foreground_color()),
                     rgb(menu.box.get_theme_node().get_background_color())]""")
                self.assertGreaterEqual(contrast(ink, ground), 4.5, (scheme, accent, ink, ground))
                seen.add((*ink, *ground))
        self.assertEqual(len(seen), 10 if shell_version() >= 47 else 1, seen)

    def test_look_and_text_size_are_the_desktops(self):
        self.portal("{'color-scheme': new GLib.Variant('u', 1), 'font-name': new GLib.Variant('s', 'Sans 10'), "
                    "'text-scaling-factor': new GLib.Variant('d', 1.5)}")
        probe = self.start('menu_probe', str(self.bundle / 'icons'), 'none')
        wait_until(lambda: self.look(probe) == 'look Sans 15 dark', 'the look of the desktop')

    @staticmethod
    def look(probe):
        look = probe.ask('look')
        probe.line()  # "obeyed"
        return look

    def test_the_bell_goes_with_tollvane(self):
        tollvane = self.start_tollvane()
        tollvane.end()
        wait_until(lambda: not self.has_bell(), 'the end of the bell')

    def test_there_are_never_two_bells(self):
        self.start_tollvane()
        watcher = self.start('desktop_probe')
        self.assertEqual(watcher.line(), 'ready')
        self.assertEqual(watcher.ask('own org.kde.StatusNotifierWatcher'), 'ok')
        wait_until(lambda: not self.has_bell(), 'the end of the bell')
        watcher.end()
        wait_until(self.has_bell, 'the bell')

    def test_turning_it_off_and_on_leaves_nothing_behind(self):
        log = pathlib.Path(self.session.facts['log']) / 'wayland'
        said_before = len(log.read_text(errors='replace'))
        self.start_tollvane()
        count = 'imports.system.gc(); Object.keys(Main.panel.statusArea).length + Main.panel._rightBox.get_n_children()'
        handlers = 'Object.keys(Main.sessionMode._signalConnections).length'  # each menu has one
        before, handlers_before = self.evaluate(count), self.evaluate(handlers)
        self.assertGreater(handlers_before, 0)
        extension = "Main.extensionManager.lookup('tollvane@quarnel.com').stateObj"
        self.evaluate(f'for (let i = 0; i < 100; i++) {{ {extension}.disable(); {extension}.enable(); }} 1')
        wait_until(self.has_bell, 'the bell')
        self.assertEqual(self.evaluate(count), before)
        self.assertEqual(self.evaluate(handlers), handlers_before)
        self.assertNotIn('tollvane@quarnel.com', log.read_text(errors='replace')[said_before:])

    def test_the_extension_may_be_off_for_a_while(self):
        self.start_tollvane()
        self.assertTrue(self.shows_menu())
        self.turn_extension(on=False)
        wait_until(lambda: not self.has_bell(), 'the end of the bell')
        wait_until(lambda: not self.shows_menu(), 'a menu that nobody shows is refused')
        self.turn_extension(on=True)
        wait_until(self.has_bell, 'the bell')
        wait_until(self.shows_menu, 'the menu')
        self.open_menu()

    def test_an_extension_that_fails_is_as_good_as_off_until_it_works_again(self):
        self.start_tollvane()
        extension = "Main.extensionManager.lookup('tollvane@quarnel.com').stateObj"
        self.turn_extension(on=False)
        wait_until(lambda: self.extension_state() == 2, 'the extension off')
        self.addCleanup(self.repair_extension)
        self.evaluate(f"{extension}.enable = () => {{ throw new Error('a test'); }}; 1")
        self.turn_extension(on=True)
        wait_until(lambda: self.extension_state() == 3, 'the failure')
        wait_until(lambda: not self.shows_menu(), 'a menu that nobody shows is refused')
        self.repair_extension()
        wait_until(self.has_bell, 'the bell')
        self.open_menu()

    def repair_extension(self):
        """The shell itself does this only at its next start."""
        self.evaluate("const e = Main.extensionManager.lookup('tollvane@quarnel.com'); delete e.stateObj.enable; "
                      'if (e.state === 3) e.state = 2; 1')
        self.turn_extension(on=False)
        self.turn_extension(on=True)

    # --- other versions, and other programs with Tollvane's name ---

    def impostor(self, version, menu='"[]"'):
        """A program that owns Tollvane's name and speaks its protocol. `menu`: an expression."""
        self.addCleanup(self.end_impostor)
        self.evaluate("""
            const {Gio, GLib} = imports.gi;
            const bus = globalThis.impostor = Gio.DBusConnection.new_for_address_sync(
              GLib.getenv('DBUS_SESSION_BUS_ADDRESS'), Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
              Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, null, null);
            const bell = Gio.DBusExportedObject.wrapJSObject(`<node><interface name="com.quarnel.tollvane.Bell">
              <method name="Attach"><arg type="u" direction="in"/><arg type="u" direction="out"/></method>
              <method name="State"><arg type="s" direction="out"/><arg type="s" direction="out"/></method>
              <method name="Menu"><arg type="s" direction="out"/></method></interface></node>`, {
              Attach: () => VERSION, State: () => ['bell', 'Tollvane'], Menu: () => MENU});
            bell.export(bus, '/com/quarnel/tollvane/bell');
            bus.call_sync('org.freedesktop.DBus', '/', 'org.freedesktop.DBus', 'RequestName',
              new GLib.Variant('(su)', ['com.quarnel.tollvane', 4]), null, 0, -1, null);
            1""".replace('VERSION', str(version)).replace('MENU', menu))

    def end_impostor(self):
        self.evaluate('globalThis.impostor?.close_sync(null); globalThis.impostor = null; 1')

    def attached(self):
        """Whether the extension has settled its version with who owns Tollvane's name."""
        return self.evaluate("Main.extensionManager.lookup('tollvane@quarnel.com').stateObj._link._settled")

    def test_a_tollvane_of_another_version_gets_no_bell(self):
        self.impostor(version=2)
        wait_until(self.attached, 'an answer about the version')
        self.assertFalse(self.has_bell())
        self.end_impostor()
        self.impostor(version=1)
        wait_until(self.has_bell, 'the bell')

    def test_an_extension_of_another_version_is_not_asked_to_show_the_menu(self):
        self.start_tollvane()
        self.turn_extension(on=False)
        wait_until(lambda: not self.shows_menu(), 'a menu that nobody shows is refused')
        attach = ("const {{Gio, GLib}} = imports.gi; Gio.DBus.session.call('com.quarnel.tollvane', "
                  "'/com/quarnel/tollvane/bell', 'com.quarnel.tollvane.Bell', 'Attach', new GLib.Variant('(u)', [{}]), "
                  'null, 0, -1, null, (bus, result) => {{ globalThis.answer = bus.call_finish(result).deepUnpack()[0];'
                  '}}); 1')
        for version, is_taken in ((2, False), (1, True)):
            self.evaluate('globalThis.answer = 0; 1')
            self.evaluate(attach.format(version))
            self.assertEqual(wait_until(lambda: self.evaluate('globalThis.answer'), 'the answer'), 1)
            self.assertEqual(self.shows_menu(), is_taken)
        self.turn_extension(on=True)
        wait_until(self.has_bell, 'the bell')

    def test_hostile_menus_stay_text_within_the_screen(self):
        for menu in ("'{}'", "'7'", "'null'", "'['", "''", """'[null, 7, "text", []]'""", "'['.repeat(9000)",
                     """'[{"items": '.repeat(9000) + '1' + '}]'.repeat(9000)""", "JSON.stringify('x'.repeat(1 << 20))"):
            with self.subTest(menu=menu):
                self.impostor(1, menu)
                wait_until(self.has_bell, 'the bell')
                self.evaluate('Main.panel.statusArea.tollvane.menu.open(); 1')
                self.end_impostor()
                wait_until(lambda: not self.has_bell(), 'the end of the bell')
        long = "'<b>bold</b> &amp; <span size=\"99999\">' + 'W'.repeat(10000)"
        self.impostor(1, f'(text => JSON.stringify(Array(9000).fill({{id: 1}}).fill({{id: 1, name: text, key: text, '
                         'toolTip: text, lines: Array(9).fill([{text, style: text, color: {}}, null, 7])}, 0, 1)))'
                         f'({long})')
        wait_until(self.has_bell, 'the bell')
        text = self.evaluate(long)[:400] + '…'
        rows = 'Main.panel.statusArea.tollvane._rows._getMenuItems()'
        wait_until(lambda: self.evaluate(f'{rows}.length') == 80, 'the first 80 rows')
        self.assertEqual(self.menu()[0], text)
        drawn = self.evaluate("""
            const rows = Main.panel.statusArea.tollvane._rows._getMenuItems();
            const found = [];
            const visit = actor => {
              if (!actor.clutter_text)
                actor.get_children().forEach(visit);
              else if (actor.text)
                found.push([actor.text.length, actor.clutter_text.use_markup]);
            };
            visit(rows[0]);
            found""")
        self.assertEqual(drawn, [[401, False], [401, False], [6, False]])
        wait_until(lambda: self.evaluate("""
            const box = Main.panel.statusArea.tollvane.menu.actor;
            const left = box.get_transformed_position()[0];
            box.width > 0 && left >= 0 && left + box.width <= global.screen_width"""), 'the menu on the screen')
        self.point_at('Main.panel.statusArea.tollvane._rows._getMenuItems()[0]')
        wait_until(lambda: self.tips(), 'the tooltip')
        self.assertEqual(self.tips(), [[text, True, False]])

    def test_another_program_with_tollvanes_name_keeps_it(self):
        self.impostor(version=2)
        wait_until(self.attached, 'an answer about the version')
        tollvane = self.start('tollvane', program=self.bundle / 'Tollvane')
        self.assertNotEqual(tollvane.process.wait(timeout=60), 0)
        self.assertIn('does not answer', (pathlib.Path(self.session.facts['log']) / 'tollvane').read_text())
        self.assertFalse(self.has_bell())
        self.end_impostor()
        self.start_tollvane()

    def test_a_window_below_a_thousand_comes_forward(self):
        one, two = self.window('one'), self.window('two')
        windows = "Main.extensionManager.lookup('tollvane@quarnel.com').stateObj._link._windows"
        self.addCleanup(self.evaluate, f'delete {windows}._all; 1')
        self.evaluate(f"""
            const other = {{get_id: () => 1 << 30, get_pid: () => 1, get_title: () => 'x'.repeat(10000),
              get_wm_class: () => '<b>', get_gtk_application_id: () => null}};
            const real = {windows}._all();
            {windows}._all = () => [...real, ...Array(1000 - real.length).fill(other)];
            1""")
        self.assertEqual(self.activate(one), 'activated yes')
        wait_until(lambda: self.active_pid() == one.pid, 'the first window in front')

    def test_the_shell_may_start_anew(self):
        """As on X11, where programs outlive the shell."""
        self.start_tollvane(environment={'QT_QPA_PLATFORM': 'offscreen'})
        self.session.tell('kill wayland')
        self.session.tell('start wayland')
        wait_until(self.has_bell, 'the bell')
        self.open_menu()


@unittest.skipUnless(pathlib.Path('/usr/lib/tollvane/Tollvane').exists(), 'the Debian package is not installed')
class InstalledGnomeTest(ExtensionSession):
    """The Debian package with GNOME Shell, in which the user has turned on the extension for all users."""
    options = ('--wayland', 'gnome', '--sound', 'pipewire', '--extension', 'tollvane@quarnel.com')

    def test_the_shell_loads_the_extension_from_the_package(self):
        self.assertEqual(self.evaluate("Main.extensionManager.lookup('tollvane@quarnel.com').path"),
                         '/usr/share/gnome-shell/extensions/tollvane@quarnel.com')
        self.bundle = pathlib.Path('/usr/lib/tollvane')
        self.start_tollvane()
        wait_until(lambda: self.play() or self.bell()[0] == 'tollvane-bell-fill-symbolic.svg', 'a filled bell')
        rows = wait_until(lambda: (found := self.menu())[0].startswith('Recent') and found, 'the menu with the sound')
        self.assertIn('pw-play', rows[1])
        said = subprocess.run(self.session.as_user('/usr/lib/tollvane/Tollvane', '--doctor'), text=True,
                              env=self.session.environment, capture_output=True, check=False).stdout
        self.assertIn("GNOME Shell shows the bell, with Tollvane's extension.", said)
        self.assertIn("Windows come forward through Tollvane's extension of GNOME Shell.", said)


class BareGnomeTest(GnomeSession):
    """GNOME Shell as it comes: nothing shows the bell, so Tollvane offers its own extension."""
    options = ('--wayland', 'gnome')

    def test_the_extension_is_offered_and_added(self):
        tollvane = self.start_tollvane()
        wait_until(lambda: self.titles() == ['Tollvane'], 'the offer')
        wait_until(lambda: self.active_pid() == tollvane.pid, 'the offer in front')
        added = self.session.data / 'gnome-shell/extensions/tollvane@quarnel.com'
        # A key may be lost until the window knows of the keyboard.
        wait_until(lambda: self.press('Return') or (added / 'extension.js').exists(), 'the files of the extension',
                   pause=0.2)
        self.assertEqual(sorted(each.name for each in added.iterdir()),
                         sorted(each.name for each in EXTENSION.iterdir()))


# The menus of the extension for indicators.
MENUS = ('Object.keys(Main.panel.statusArea).filter(key => key.startsWith("appindicator"))'
         '.map(key => Main.panel.statusArea[key]?.menu)')


class IndicatorTest(GnomeSession):
    """The bell in GNOME Shell with its extension for indicators, which draws the menu that it finds on the bus. It
    reads the properties of an item once, and then only those of which it is told."""
    options = ('--wayland', 'gnome', '--extension', INDICATORS)

    def menu(self, then=''):
        # An item that registers anew may leave an empty one behind for a moment.
        return self.evaluate(f'const menus = {MENUS}; {then}; '
                             'const m = menus.find(menu => menu?._getMenuItems().length > 1); '
                             '(m?._getMenuItems() ?? []).map(i => [i.label?.text ?? "", i.sensitive])')

    def bell_with_menu(self, start=None):
        """Sometimes the extension never asks for the menu of an item that has registered while the shell starts."""
        for _ in range(5):
            bell = (start or self.probe)()
            try:
                wait_until(lambda: self.menu('menus.forEach(m => m?.open())')[:1] == [['No sounds yet', False]],
                           'the empty menu', deadline=10, pause=0.3)
                return bell
            except TimeoutError:
                bell.end()
        self.fail('the extension shows no menu')

    def probe(self):
        bell = self.start('menu_probe', str(self.bundle / 'icons'), 'none')
        bell.ask('image bell')
        return bell

    def test_a_click_on_settings_brings_them_forward(self):
        self.window('one')
        self.bell_with_menu(self.start_tollvane)
        self.click_at(f'{MENUS}.find(menu => menu?._getMenuItems().length > 1)._getMenuItems()'
                      ".find(each => each.label?.text === 'Settings…')")
        self.assert_comes_forward('Tollvane Settings')

    def test_the_menu_is_right_after_sounds_came_and_went(self):
        bell = self.bell_with_menu()
        self.menu('menus.forEach(m => m?.close())')
        bell.ask('add Mail')
        bell.ask('add Chat')
        # Newer versions of the extension read what has changed when the menu opens.
        wait_until(lambda: self.menu('menus.forEach(m => m?.open())')[:1] == [['Recent sounds · 2 unseen', False]],
                   'the header with two sounds', pause=0.3)
        self.assertIn(['Mark all as seen', True], self.menu())
        bell.ask('clear')
        wait_until(lambda: self.menu()[:1] == [['No sounds yet', False]], 'the header without sounds')
        self.assertIn(['Mark all as seen', False], self.menu())


if __name__ == '__main__':
    unittest.main(verbosity=2)
