"""Sessions with GNOME Shell: what the tests of it read there and do to it."""

import json
import pathlib

from shell_session import EXTENSION, ShellTest
from waiting import wait_until


class GnomeSession(ShellTest):
    """Looks into GNOME Shell, and presses its keys."""

    def evaluate(self, script):
        done, answer = self.session.bus.call('org.gnome.Shell', '/org/gnome/Shell', 'org.gnome.Shell', 'Eval', 's',
                                             script)
        self.assertTrue(done, answer)
        return json.loads(answer) if answer else None

    def active_pid(self):
        return self.evaluate('global.display.focus_window ? global.display.focus_window.get_pid() : 0')

    def titles(self):
        return self.evaluate('global.get_window_actors().map(a => a.meta_window.get_title())')

    def press(self, *keys):
        """All at once. The device stays, because the window would lose the keyboard with it."""
        self.evaluate('const {Clutter, GLib} = imports.gi; globalThis.keys ??= Clutter.get_default_backend()'
                      '.get_default_seat().create_virtual_device(Clutter.InputDeviceType.KEYBOARD_DEVICE);'
                      f'const names = {json.dumps(keys)}; const press = (name, down) => globalThis.keys.notify_keyval('
                      'GLib.get_monotonic_time(), Clutter[`KEY_${name}`], down);'
                      'for (const name of names) press(name, 1); for (const name of names.reverse()) press(name, 0); 1')

    def point(self, x, y):
        self.evaluate('const {Clutter, GLib} = imports.gi; globalThis.pointer ??= Clutter.get_default_backend()'
                      '.get_default_seat().create_virtual_device(Clutter.InputDeviceType.POINTER_DEVICE);'
                      f'globalThis.pointer.notify_absolute_motion(GLib.get_monotonic_time(), {x}, {y}); 1')

    def point_at(self, actor):
        x, y = self.evaluate(f'const a = {actor}; const [x, y] = a.get_transformed_position(); '
                             '[x + a.width / 2, y + a.height / 2]')
        self.point(x, y)

    def click_at(self, actor):
        self.point_at(actor)
        for state in ('PRESSED', 'RELEASED'):
            self.evaluate('const {Clutter, GLib} = imports.gi; globalThis.pointer.notify_button('
                          f'GLib.get_monotonic_time(), Clutter.BUTTON_PRIMARY, Clutter.ButtonState.{state}); 1')

    def start_tollvane(self, **options):
        """Returns when the shell knows its desktop entry, which the first start brings."""
        tollvane = super().start_tollvane(**options)
        wait_until(lambda: self.evaluate("Boolean(imports.gi.Shell.AppSystem.get_default().lookup_app("
                                         "'tollvane.desktop'))"), 'its entry in the shell', pause=0.2)
        return tollvane

    def assert_comes_forward(self, title):
        def front():
            return self.evaluate("""
                const window = global.display.focus_window;
                const app = window && imports.gi.Shell.WindowTracker.get_default().get_window_app(window);
                app ? [window.get_title(), app.get_id(), app.get_name(), app.get_icon()?.to_string() ?? ""] : []""")
        *_, name, icon = wait_until(lambda: (found := front())[:2] == [title, 'tollvane.desktop'] and found,
                                    f"Tollvane's window {title} in front")
        self.assertEqual(name, 'Tollvane')
        self.assertTrue(pathlib.Path(icon).is_file() or icon == 'tollvane', icon)


class ExtensionSession(GnomeSession):
    """Tollvane's own extension, in a shell that has no other place for the bell."""
    options = ('--wayland', 'gnome', '--sound', 'pipewire', '--extension', str(EXTENSION))

    def setUp(self):
        self.addCleanup(self.turn_extension, on=True)

    def asker(self, **options):
        asker = super().asker(**options)
        self.assertEqual(asker.ask('own com.quarnel.tollvane'), 'ok')
        return asker

    def start_tollvane(self, **options):
        tollvane = super().start_tollvane(**options)
        wait_until(self.has_bell, 'the bell')
        return tollvane

    def has_bell(self):
        return self.evaluate('Boolean(Main.panel.statusArea.tollvane)')

    def play(self):
        self.assertTrue(self.session.succeeds(*self.session.as_user('pw-play', self.sound())))

    def menu(self):
        """The texts of each row after the menu was opened. That of a separator is empty."""
        return self.evaluate('const {menu, _rows} = Main.panel.statusArea.tollvane; menu.open(); _rows._getMenuItems()'
                             '.filter(i => i.accessible_name || i.label).map(i => i.accessible_name || i.label.text)')

    def bell(self):
        return self.evaluate('const b = Main.panel.statusArea.tollvane; [b._icon.gicon.get_file().get_basename(), '
                             'b.accessible_name]')

    def choose(self, name):
        self.evaluate('Main.panel.statusArea.tollvane._rows._getMenuItems()'
                      f'.find(i => i.accessible_name === {json.dumps(name)}).activate(null); 1')

    def open_menu(self):
        self.evaluate('Main.panel.statusArea.tollvane.menu.open(); 1')
        wait_until(lambda: self.menu()[-1:] == ['Quit Tollvane'], 'the menu')

    def tips(self):
        """The tooltips on the screen, each with its width, and whether it is read as markup."""
        return self.evaluate('Main.uiGroup.get_children().filter(c => c.has_style_class_name?.("tollvane-tip"))'
                             '.map(c => [c.text, c.x >= 0 && c.x + c.width <= global.screen_width && '
                             'c.y + c.height <= global.screen_height, c.clutter_text.use_markup])')

    def turn_extension(self, on):
        self.evaluate(f"Main.extensionManager.{'enable' if on else 'disable'}Extension('tollvane@quarnel.com')")

    def extension_state(self):
        """1: on, 2: off, 3: it failed. Later shells call the first two active and inactive."""
        return self.evaluate("Main.extensionManager.lookup('tollvane@quarnel.com').state")

    def shows_menu(self):
        return self.session.succeeds(*self.session.as_user(self.bundle / 'Tollvane', '--show-menu'))
