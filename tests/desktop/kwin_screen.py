"""Pointer, keyboard, windows and pictures in a session with KWin.

KWin takes input from programs that speak its protocol for that (kwin_input.py), and gives pictures over the bus. Both
are meant for programs of Plasma; tests/session/parts.py turns KWin's check of that off. Windows are found and brought
forward by scripts that KWin runs.
"""

import json
import os
import pathlib
import sys
import threading

from gi.repository import Gio, GLib
from PIL import Image

from panel_screen import STEPS, Lines
from waiting import wait_until

HERE = pathlib.Path(__file__).resolve().parent
BUTTONS = {1: 0x110, 3: 0x111}  # as in linux/input-event-codes.h, by their numbers on X11
KEYS = {'Escape': 1, 'Return': 28, 'Up': 103, 'Down': 108}
SCREENSHOT = ('org.kde.KWin.ScreenShot2', '/org/kde/KWin/ScreenShot2', 'org.kde.KWin.ScreenShot2')
SCRIPTING = ('org.kde.KWin', '/Scripting', 'org.kde.kwin.Scripting')


class KWinScripts:
    """Runs scripts in KWin, which answer with what they return."""
    counter = 0

    def __init__(self, session):
        self.session = session

    def run(self, body):
        KWinScripts.counter += 1
        mark = f'answer-{KWinScripts.counter}:'
        file = self.session.root / 'tmp/test.js'
        file.write_text(f'print("{mark}" + (function() {{ {body} }})());')
        file.chmod(0o644)
        self.session.bus.call(*SCRIPTING, 'loadScript', 'ss', file, mark)
        self.session.bus.call(*SCRIPTING, 'start')
        log = pathlib.Path(self.session.facts['log']) / 'wayland'
        answer = wait_until(lambda: [line for line in log.read_text(errors='replace').splitlines() if mark in line],
                            'an answer of KWin')
        self.session.bus.call(*SCRIPTING, 'unloadScript', 's', mark)
        return answer[0].split(mark, 1)[1].strip().rstrip('"')


class KWinScreen:
    nowhere = (900, 600)

    def __init__(self, session):
        self.session = session
        self.scripts = KWinScripts(session)
        self.input = Lines(session, 'input', [sys.executable, '-B', '-c', (HERE / 'kwin_input.py').read_text()],
                           TOLLVANE_PART_OF_SESSION='1')
        self.bus = Gio.DBusConnection.new_for_address_sync(
            session.environment['DBUS_SESSION_BUS_ADDRESS'],
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)

    def picture(self):
        reader, writer = os.pipe()
        data = []
        with os.fdopen(reader, 'rb') as pipe:
            thread = threading.Thread(target=lambda: data.append(pipe.read()))
            thread.start()
            try:
                answer, _ = self.bus.call_with_unix_fd_list_sync(
                    *SCREENSHOT, 'CaptureActiveScreen', GLib.Variant('(a{sv}h)', ({}, 0)), None, 0, 20000,
                    Gio.UnixFDList.new_from_array([writer]))
            finally:
                if not data:
                    thread.join()
        about = answer.unpack()[0]
        return Image.frombytes('RGB', (about['width'], about['height']), data[0], 'raw', 'BGRX', about['stride'])

    def point(self, x, y):
        for each in range(x - STEPS, x + 1):
            self.send('move', each, y)

    def click(self, x, y, button=1):
        self.point(x, y)
        for is_down in (1, 0):
            self.send('button', BUTTONS[button], is_down)

    def key(self, name):
        for is_down in (1, 0):
            self.send('key', KEYS[name], is_down)

    def send(self, *words):
        if self.input.ask(' '.join(map(str, words))) != 'obeyed':
            raise RuntimeError(f'KWin has not taken {words}')

    # --- windows ---

    def windows(self):
        """Title, process and place of every window."""
        return json.loads(self.scripts.run("""
            const windows = workspace.windowList ? workspace.windowList() : workspace.clientList();
            return JSON.stringify(windows.map(w => ({title: w.caption, pid: w.pid, entry: String(w.desktopFileName),
              popup: w.popupWindow, kind: w.windowType,
              place: [w.frameGeometry.x, w.frameGeometry.y, w.frameGeometry.width, w.frameGeometry.height]})))"""))

    def window(self, title):
        return next(each for each in self.windows() if each['title'] == title)

    def in_front(self):
        return self.scripts.run('const a = workspace.activeWindow || workspace.activeClient; return a ? a.caption : "";')

    def bring_forward(self, title):
        self.scripts.run(f"""
            const windows = workspace.windowList ? workspace.windowList() : workspace.clientList();
            const found = windows.find(w => w.caption === {json.dumps(title)});
            if (found && workspace.windowList) workspace.activeWindow = found;
            else if (found) workspace.activeClient = found;""")

    def width_of_tooltip(self):
        return None
