#!/usr/bin/env python3
"""Figures of Tollvane in GNOME Shell and in KWin: shells_bench.py BUILD

- From a click on a sound to its window in front. In GNOME Shell, the shell's clock counts from the choice of the row in
  the extension's menu to the change of its focused window. In KWin, no panel is here that could show the menu, so the
  time begins when `busctl` is started, which reports the click as panels do; it ends when KWin says that the window is
  active.
- What the extension costs the shell's main thread: reading a menu of 50 sounds, and filling the menu with its rows,
  beside as many of the shell's own rows.

Needs what tests/desktop/shell_session.py needs.
"""

import json
import pathlib
import statistics
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE.parent / 'tests/desktop'), str(HERE.parent / 'tests/session')]

from gnome_session import ExtensionSession
from kwin_test import KWinSession
from waiting import wait_until

CLICKS = 30


def print_clicks(shell, milliseconds):
    print(f'{shell}: click to window in front: median {statistics.median(milliseconds):.1f} ms, '
          f'slowest {max(milliseconds):.1f} ms of {len(milliseconds)}', flush=True)


class GnomeBench(ExtensionSession):
    def measure(self):
        self.clicks()
        self.main_thread()

    def clicks(self):
        self.start_tollvane()
        windows = [self.window('one'), self.window('two')]
        for probe in windows:
            wait_until(lambda probe=probe: probe.ask(f'play {self.sound()}') and self.rows_of(probe), 'the sound',
                       pause=1)
        self.evaluate("""
            globalThis.times = {};
            globalThis.watch ??= global.display.connect('notify::focus-window', () => {
              const window = global.display.focus_window;
              if (window) globalThis.times[window.get_pid()] ??= imports.gi.GLib.get_monotonic_time();
            }); 1""")
        taken = []
        for number in range(CLICKS):
            probe = windows[number % 2]
            other = windows[1 - number % 2]
            wait_until(lambda: self.active_pid() == other.pid, 'the other window in front')
            self.rows_of(probe)
            begin = self.evaluate(f"""
                const rows = Main.panel.statusArea.tollvane._rows._getMenuItems();
                const row = rows.find(each => each.accessible_name?.includes('{self.name_of(probe)}'));
                globalThis.times = {{}};
                const begin = imports.gi.GLib.get_monotonic_time();
                row.activate(null);
                begin""")
            end = wait_until(lambda: self.evaluate(f'globalThis.times[{probe.pid}] ?? 0'), 'the window in front')
            taken.append((end - begin) / 1000)
        print_clicks('GNOME Shell', taken)
        self.doCleanups()

    @staticmethod
    def name_of(probe):
        return f'Window {probe.name}'

    def rows_of(self, probe):
        self.evaluate('Main.panel.statusArea.tollvane.menu.close(); 1')
        self.evaluate('Main.panel.statusArea.tollvane.menu.open(); 1')
        return [each for each in self.menu() if self.name_of(probe) in each]

    def main_thread(self):
        bell = self.start('menu_probe', str(self.bundle / 'icons'), 'fifty')
        bell.ask('image bell.fill')
        bell.ask('claim')
        wait_until(self.has_bell, 'the bell')
        self.open_menu()
        wait_until(lambda: 'Older sounds (45)' in self.menu(), 'the menu of 50 sounds')
        self.evaluate('Main.panel.statusArea.tollvane.menu.close(); 1')
        reader = (HERE.parent / 'shell/gnome/menu.js').read_text()
        figures = self.evaluate(f"""
            const now = () => imports.gi.GLib.get_monotonic_time();
            const median = (times, what) => {{
              const taken = [];
              for (let i = 0; i < times; i++) {{
                const begin = now();
                what();
                taken.push(now() - begin);
              }}
              return taken.sort((a, b) => a - b)[times / 2];
            }};
            const menuFrom = new Function({json.dumps(reader)} + 'return menuFrom;')();
            const bell = Main.panel.statusArea.tollvane;
            const text = bell._shown;
            const fill = median(50, () => {{ bell._shown = ''; bell._fillWith(text); }});
            const rows = bell._rows._getMenuItems();
            const own = median(50, () => {{
              for (let i = 0; i < rows.length; i++) bell._rows.addAction('A row of the shell', () => {{}});
              bell._rows._getMenuItems().slice(rows.length).forEach(each => each.destroy());
            }});
            [median(500, () => menuFrom(text)), median(500, () => bell._fillWith(text)), fill, own, rows.length]""")
        read, same, fill, own, rows = figures
        print(f'GNOME Shell, main thread, menu of 50 sounds: reading it {read} us; opening it unchanged {same} us; '
              f'making its {rows} rows {fill / 1000:.1f} ms, beside {own / 1000:.1f} ms for as many rows of the '
              "shell's own", flush=True)


class KWinBench(KWinSession):
    options = (*KWinSession.options, '--sound', 'pipewire')

    def measure(self):
        self.item = f'org.kde.StatusNotifierItem-{self.start_tollvane().pid}-1'
        wait_until(lambda: self.session.bus.has(self.item), 'the bell on the bus')
        windows = [self.window('one'), self.window('two')]
        for probe in windows:
            wait_until(lambda probe=probe: probe.ask(f'play {self.sound()}') and self.number_of(probe), 'the sound',
                       pause=1)
        self.script('const changed = workspace.windowActivated || workspace.clientActivated; '
                    'changed.connect(w => { if (w) print("forward " + w.pid + " " + Date.now()); }); return 1;',
                    stays=True)
        taken = []
        for number in range(CLICKS):
            probe, other = windows[number % 2], windows[1 - number % 2]
            if number == 0:
                wait_until(lambda: self.active_pid() == other.pid, 'the other window in front')
            item = self.number_of(probe)
            known = len(self.forward(probe))
            begin = time.time()
            self.session.bus.call(self.item, '/StatusNotifierItem/Menu', 'com.canonical.dbusmenu', 'Event', 'isvu',
                                  item, 'clicked', 's', '', 0)
            wait_until(lambda: len(self.forward(probe)) > known, 'the window in front')
            taken.append(self.forward(probe)[known] - begin * 1000)
        print_clicks('KWin', taken)

    def forward(self, probe):
        """The times at which KWin brought its window forward, in milliseconds since 1970."""
        log = pathlib.Path(self.session.facts['log']) / 'wayland'
        mark = f'forward {probe.pid} '
        return [int(line.split(mark)[1].strip('" ')) for line in log.read_text(errors='replace').splitlines()
                if mark in line]

    def number_of(self, probe):
        """The number of its sound in the menu on the bus."""
        _, (_, _, items) = self.session.bus.call(self.item, '/StatusNotifierItem/Menu', 'com.canonical.dbusmenu',
                                                 'GetLayout', 'iias', 0, 1, 0)
        return next((each['data'][0] for each in items
                     if f'Window {probe.name}' in each['data'][1].get('label', {}).get('data', '')), None)


for case in (GnomeBench, KWinBench):
    case.setUpClass()
    one = case('measure')
    try:
        one.measure()
    finally:
        one.doCleanups()
        case.doClassCleanups()
