"""Firefox ESR, controlled through Marionette (length:JSON over TCP)."""

import json
import shutil
import socket

from browser import Browser
from waiting import DEADLINE, wait_until

ADDON_ID = 'tollvane@quarnel.com'


class Firefox(Browser):
    name = 'firefox-esr'
    program = '/usr/lib/firefox-esr/firefox-esr'
    unpacked_program = 'programs/ff/firefox'
    unpacked_profile_directory = 'unpacked-profile'
    profile_directory = 'firefox-profile'
    host_directory = '.mozilla/native-messaging-hosts'
    host_permission = {'allowed_extensions': [ADDON_ID]}

    def __init__(self, session, extension, profile_directory=None):
        super().__init__(session, extension, profile_directory)
        self._wire = None

    def unpacked(self):
        browser = super().unpacked()
        browser.command += ['--class', 'Unpacked', '--name', 'Unpacked']  # or its windows would be the installed one's
        return browser

    def start(self, restore=False):
        self._write_profile(restore)
        port = _free_port()
        with open(self.profile / 'user.js', 'a') as preferences:
            preferences.write(f'user_pref("marionette.port", {port});\n')
        self.session.own_home()
        self.process = self.session.start('firefox', self.session.as_user(
            *self.command, '--profile', self.profile, '--no-remote', '--marionette', '-remote-allow-system-access'),
            env=self.environment())
        if self._wire:
            self._wire.close()  # the connection to the run before
        self._wire = _Wire(port)
        self._command('WebDriver:NewSession')

    def stop(self):
        self._command('Marionette:Quit', flags=['eAttemptQuit'])
        self.process.wait(DEADLINE)

    def open_tab(self, address):
        return self._open(address, 'tab')

    def open_window(self, address):
        tab = self._open(address, 'window')
        self.show_tab(tab)
        return tab

    def close_tab(self, tab):
        self._switch(tab)
        self._command('WebDriver:CloseWindow')

    def show_tab(self, tab):
        self._switch(tab, focus=True)

    def tabs(self):
        return self._command('WebDriver:GetWindowHandles')

    def run(self, tab, expression):
        self._switch(tab)
        return self._command('WebDriver:ExecuteScript', script=f'return {expression}', args=[])['value']

    def click(self, tab, selector):
        self._switch(tab)
        element = self._command('WebDriver:FindElement', using='css selector', value=selector)['value']
        self._command('WebDriver:ElementClick', id=next(iter(element.values())))

    def agree(self):
        pass  # with extensions.webextOptionalPermissionPrompts off, Firefox does not ask

    def is_in_front(self, tab):
        # document.hasFocus() is false while the address bar has the keyboard, as in a tab that was never shown before.
        visible = self.run(tab, "document.visibilityState === 'visible'")
        return visible and self._run_in_browser('Services.focus.activeWindow === window')

    def stop_background(self):
        self._run_in_browser(f'WebExtensionPolicy.getByID("{ADDON_ID}").extension'
                             '.terminateBackground({disableResetIdleForTest: true})')

    def open_private_window(self, address):
        return self._open(address, 'window', private=True)

    def _open(self, address, kind, **how):
        self._switch(self.tabs()[0])  # the current tab may be closed
        tab = self._command('WebDriver:NewWindow', type=kind, focus=False, **how)['handle']
        self._switch(tab)
        self._command('WebDriver:Navigate', url=address)
        return tab

    def _run_in_browser(self, expression):
        """Runs an expression with the browser's own rights, in the window of the current tab."""
        self._command('Marionette:SetContext', value='chrome')
        try:
            return self._command('WebDriver:ExecuteScript', script=f'return {expression}', args=[])['value']
        finally:
            self._command('Marionette:SetContext', value='content')

    def _switch(self, tab, focus=False):
        self._command('WebDriver:SwitchToWindow', handle=tab, focus=focus)

    def _command(self, name, **parameters):
        return self._wire.command(name, parameters)

    def _write_profile(self, restore):
        self.profile.mkdir(parents=True, exist_ok=True)
        admission = {}
        if self.extension:
            (self.profile / 'extensions').mkdir(exist_ok=True)
            # copy2 keeps the date: with another date it would count as a new extension at each start.
            shutil.copy2(self.extension / 'firefox/tollvane.xpi', self.profile / 'extensions' / f'{ADDON_ID}.xpi')
            admission = {'xpinstall.signatures.required': False, 'extensions.autoDisableScopes': 0}
        preferences = {
            **admission,
            'extensions.webextOptionalPermissionPrompts': False,
            'media.autoplay.default': 0,
            'media.autoplay.blocking_policy': 0,
            'remote.prefs.recommended': False,  # recommended preferences would fake the focus
            'browser.shell.checkDefaultBrowser': False,
            'browser.aboutwelcome.enabled': False,
            'datareporting.policy.dataSubmissionEnabled': False,
            'toolkit.telemetry.reportingpolicy.firstRun': False,
            'app.update.enabled': False,
            'browser.tabs.warnOnClose': False,
            'browser.sessionstore.resume_from_crash': False,
            'toolkit.startup.max_resumed_crashes': -1,
            'browser.startup.page': 3 if restore else 1,
        }
        lines = [f'user_pref({json.dumps(name)}, {json.dumps(value)});\n' for name, value in preferences.items()]
        (self.profile / 'user.js').write_text(''.join(lines))


class _Wire:
    """A connection to Marionette, for one command at a time."""

    def __init__(self, port):
        self._socket = wait_until(lambda: _connected(port), 'Marionette')
        self._socket.settimeout(DEADLINE)
        self._rest = b''
        self._next = 1
        self._message()  # the greeting

    def close(self):
        self._socket.close()

    def command(self, name, parameters):
        number = self._next
        self._next += 1
        packet = json.dumps([0, number, name, parameters]).encode()
        self._socket.sendall(b'%d:%s' % (len(packet), packet))
        _, answered, error, result = self._message()
        assert answered == number
        if error:
            raise RuntimeError(f'{name}: {error["error"]}: {error["message"]}')
        return result

    def _message(self):
        while b':' not in self._rest:
            self._receive()
        length, self._rest = self._rest.split(b':', 1)
        while len(self._rest) < int(length):
            self._receive()
        message, self._rest = self._rest[:int(length)], self._rest[int(length):]
        return json.loads(message)

    def _receive(self):
        received = self._socket.recv(65536)
        if not received:
            raise ConnectionError('the browser ended')
        self._rest += received


def _connected(port):
    try:
        return socket.create_connection(('127.0.0.1', port), timeout=1)
    except OSError:
        return None


def _free_port():
    with socket.socket() as probe:
        probe.bind(('127.0.0.1', 0))
        return probe.getsockname()[1]
