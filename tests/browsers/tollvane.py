"""The application in a private session: a copy of its bundle runs there, or the installed one. Its bell is in the
session's panel.

    tollvane = Tollvane(session, bundle)
    tollvane.start()
    entry = tollvane.await_entry('Evening news')
    tollvane.choose(entry)
    tollvane.alert()                 # the texts of the alert that is shown, or None
"""

import json
import pathlib
import shutil

from accessible import ACCESSIBLE, Accessibility
from bus import BusError
from waiting import DEADLINE, wait_until

ITEM = 'org.kde.StatusNotifierItem-{pid}-1'
MENU = '/StatusNotifierItem/Menu'
DBUSMENU = 'com.canonical.dbusmenu'
WATCHER = ('org.kde.StatusNotifierWatcher', '/StatusNotifierWatcher', 'org.kde.StatusNotifierWatcher')


class Tollvane:
    def __init__(self, session, bundle, in_place=False):
        self.session = session
        self.bundle = pathlib.Path(bundle) if in_place else session.root / 'bundle'
        if not in_place:
            shutil.copytree(bundle, self.bundle)
        self.history_file = session.data / 'Tollvane/history.txt'
        folders = (session.data, pathlib.Path(session.environment['XDG_RUNTIME_DIR']))
        self._sockets = tuple(f' {folder}/Tollvane/bridge.sock' for folder in folders)
        self.bridge = session.data / 'Tollvane/bin/TollvaneBridge'
        self.process = None
        self._accessibility = Accessibility(session)
        # So that no welcome appears.
        session.write('.config/Tollvane/defaults.json', json.dumps({'hasLaunchedBefore': True}))

    def start(self):
        """Starts the application. Returns when the panel shows the bell and the log tool listens."""
        self.process = self.session.start('tollvane', [str(self.bundle / 'Tollvane')],
                                          env={**self.session.environment, **ACCESSIBLE})
        wait_until(self._is_in_panel, "the bell's coming to the panel")
        wait_until(self._listens, "the log tool's listening")

    def kill(self):
        self.process.kill()
        self.process.wait()

    def stop(self):
        """Quits the application with its menu."""
        self.choose('Quit Tollvane')
        self.process.wait(DEADLINE)

    # --- the menu ---

    def menu(self):
        """The labels of the menu. Those of the submenu "Older sounds" follow it."""
        return [label for _, label in self._items()]

    def entries(self, text):
        """The labels that contain `text`."""
        return [label for label in self.menu() if text in label]

    def await_entry(self, text):
        return wait_until(lambda: self.entries(text), f'an entry "{text}" in {self.menu()}', pause=0.1)[0]

    def choose(self, label):
        number = next(number for number, found in self._items() if found == label)
        self._ask_menu('Event', 'isvu', number, 'clicked', 's', '', 0)

    def history(self):
        """The lines of the history, each as a list of its fields."""
        lines = self.history_file.read_text().splitlines() if self.history_file.exists() else []
        return [line.split('\t') for line in lines]

    # --- its windows ---

    def alert(self):
        window = self._accessibility.window('Tollvane', 'Tollvane')
        return window and self._read(window)

    def await_alert(self):
        return wait_until(self.alert, 'an alert', pause=0.1)

    def dismiss_alert(self):
        button = self._accessibility.window('Tollvane', 'Tollvane').find('OK')
        button.act()
        wait_until(lambda: not self.alert(), "the alert's going", pause=0.1)

    def window(self, title):
        """The window as screen readers see it, or None."""
        return self._accessibility.window('Tollvane', title)

    def open_settings(self):
        self.choose('Settings…')
        return wait_until(lambda: self._accessibility.window('Tollvane', 'Tollvane Settings'), 'the settings window',
                          pause=0.1)

    def turn_switch(self, title):
        """Opens the settings window and clicks the switch `title`."""
        self.open_settings().find(title).act()

    # --- the link to browsers ---

    def bridges(self):
        """The ids of the bridges' processes, which browsers have started."""
        return self.session.processes(self.bridge)

    def is_linked(self):
        """Whether a bridge is connected."""
        # Listening sockets are in state 01, connected ones in 03.
        return any(line.split()[5] == '03' and line.endswith(self._sockets)
                   for line in pathlib.Path('/proc/net/unix').read_text().splitlines())

    # --- inside ---

    def _read(self, window):
        try:
            return window.texts()
        except BusError:
            return None

    def _items(self):
        self._ask_menu('AboutToShow', 'i', 0)
        return list(_labelled(self._ask_menu('GetLayout', 'iias', 0, -1, 0)[1]))

    def _ask_menu(self, method, *arguments):
        return self.session.bus.call(ITEM.format(pid=self.process.pid), MENU, DBUSMENU, method, *arguments)

    def _is_in_panel(self):
        try:
            items = self.session.bus.get(*WATCHER, 'RegisteredStatusNotifierItems')
        except BusError:
            return False
        return any(ITEM.format(pid=self.process.pid) in item for item in items)

    def _listens(self):
        log_tool = self.session.output('pgrep', '-P', str(self.process.pid), '-x', 'TollvaneLog')
        if not log_tool:
            return False
        clients = json.loads(self.session.output('pw-dump') or '[]')
        return any(str(client.get('info', {}).get('props', {}).get(key)) == log_tool
                   for client in clients for key in ('application.process.id', 'pipewire.sec.pid'))


def _labelled(layout):
    number, properties, children = layout
    if 'label' in properties:
        yield number, properties['label']['data'].replace('__', '_')
    for child in children:
        yield from _labelled(child['data'])
