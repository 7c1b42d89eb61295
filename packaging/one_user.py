#!/usr/bin/env python3
"""One user's session with the installed Tollvane and a browser, for users_test.py: one_user.py chromium|firefox-esr

Runs as that user. Obeys commands on the standard input, one a line, and answers each with one line of JSON:

    home network | none       the home is on a file server (network_home.py); or there is none
    manifest PATH             the browser's manifest in the home names this program as its bridge
    start | stop tollvane | browser
    link                      waits until a bridge is linked
    hear TITLE                a tab in the background with this title plays; a click on its entry brings it forward
    doctor                    what the doctor says, as JSON
    facts                     sockets at which Tollvane listens, bridges with the paths of their programs, the history
"""

import json
import os
import pathlib
import signal
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path += [str(HERE.parent / 'tests/session'), str(HERE.parent / 'tests/browsers')]

from chromium import Chromium
from client import PrivateSession
from firefox import Firefox
from pages import Pages
from tollvane import Tollvane
from waiting import wait_until

BUNDLE = pathlib.Path('/usr/lib/tollvane')
MANIFEST = 'com.quarnel.tollvane.json'
SESSION = ('--sound', 'pipewire', '--screen', '1280x900', '--window-manager', 'openbox', '--panel', 'xfce4')


class OneUser:
    def __init__(self, session, pages, kind):
        self._session, self._pages = session, pages
        self._tollvane = Tollvane(session, BUNDLE, in_place=True)
        self._browser = kind(session, None)
        self._mounted = None
        self._keeps_history = True

    def close(self):
        if self._mounted:
            self._session.tell('clear')  # nothing may use the home while it goes
            subprocess.run(['fusermount3', '-u', '-z', self._session.home], stderr=subprocess.DEVNULL, check=False)
            self._mounted.wait()

    def home(self, which):
        if which == 'none':
            self._session.environment['HOME'] = '/nonexistent'
            self._keeps_history = False
            return
        home = self._session.home
        folder = home.rename(self._session.root / 'on-the-server')
        home.mkdir(mode=0o700)
        self._mounted = self._session.start('network_home', [sys.executable, HERE / 'network_home.py', folder, home])
        wait_until(home.is_mount, 'the mounting of the home')

    def manifest(self, path):
        for_all = pathlib.Path('/usr/lib/mozilla' if isinstance(self._browser, Firefox) else '/etc/chromium')
        manifest = json.loads((for_all / 'native-messaging-hosts' / MANIFEST).read_text())
        folder = self._session.home / self._browser.host_directory
        folder.mkdir(parents=True)
        (folder / MANIFEST).write_text(json.dumps({**manifest, 'path': path}))

    def start(self, what):
        {'tollvane': self._tollvane, 'browser': self._browser}[what].start()

    def stop(self, what):
        {'tollvane': self._tollvane, 'browser': self._browser}[what].stop()

    def link(self):
        wait_until(self._tollvane.is_linked, 'the link of the browser')

    def hear(self, title):
        wanted = self._browser.open_tab(self._pages.address(title, 'localhost'))
        other = self._browser.open_tab(self._pages.address('Other', 'localhost'))
        self._browser.show_tab(other)
        self._browser.run(wanted, 'playSound()')
        self._tollvane.choose(self._tollvane.await_entry(f'Tab: {title} '))
        wait_until(lambda: self._browser.is_in_front(wanted), 'the coming forward of the tab')
        if self._keeps_history:
            wait_until(lambda: any(title in line[-1] for line in self._tollvane.history()), 'the line in the history')
        return self._tollvane.menu()

    def doctor(self):
        return json.loads(self._session.output('sh', '-c', 'Tollvane --doctor --json; true'))

    def facts(self):
        listening = [line.split()[7] for line in pathlib.Path('/proc/net/unix').read_text().splitlines()
                     if line.endswith('/bridge.sock') and line.split()[3] == '00010000']
        programs = (BUNDLE / 'TollvaneBridge', self._tollvane.bridge)
        return {
            'root': str(self._session.root),
            'sockets': sorted(path for path in set(listening) if path.startswith(str(self._session.root))),
            'bridges': {str(program): self._session.processes(program) for program in programs},
            'history': [line[-1] for line in self._tollvane.history()],
        }


def obey(user, line):
    word, *arguments = line.split()
    try:
        return {'answer': getattr(user, word)(*arguments)}
    except Exception as error:  # all are told to the program that asked
        return {'failure': f'{type(error).__name__}: {error}'}


def main():
    kind = {kind.name: kind for kind in (Chromium, Firefox)}[sys.argv[1]]
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # an orderly exit, which clears the session away
    os.umask(0o077)
    pages = Pages()
    with PrivateSession(*SESSION) as session:
        user = OneUser(session, pages, kind)
        print(json.dumps({'answer': None}), flush=True)
        for line in sys.stdin:
            print(json.dumps(obey(user, line)), flush=True)
        user.close()
    pages.close()


if __name__ == '__main__':
    main()
