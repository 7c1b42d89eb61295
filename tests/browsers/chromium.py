"""Chromium, controlled through the pipe of its remote debugging protocol (JSON that ends with a zero byte)."""

import json
import os
import select
import time

from browser import Browser
from waiting import DEADLINE, wait_until

EXTENSION_ID = 'obnkhebafdebfkbooeekkekkklllpdhc'


class Chromium(Browser):
    name = 'chromium'
    program = '/usr/lib/chromium/chromium'
    unpacked_program = 'google/chrome-beta/chrome'
    unpacked_profile_directory = '.config/google-chrome-beta'
    host_permission = {'allowed_origins': [f'chrome-extension://{EXTENSION_ID}/']}

    # The usual folders. The profile is also named on the command line, because remote debugging demands that.
    profile_directory = '.config/chromium'
    host_directory = '.config/chromium/NativeMessagingHosts'

    def __init__(self, session, extension, profile_directory=None):
        super().__init__(session, extension, profile_directory)
        self._pipe = None
        self._sessions = {}

    def another_profile(self):
        another = super().another_profile()
        another.profile.mkdir()
        (another.profile / 'NativeMessagingHosts').symlink_to(self.session.home / self.host_directory)
        return another

    def start(self, restore=False):
        (self.profile / 'Default').mkdir(parents=True, exist_ok=True)
        preferences = self.profile / 'Default/Preferences'
        if self.extension and not preferences.exists():
            preferences.write_text(json.dumps({'extensions': {'ui': {'developer_mode': True}}}))
        self.session.own_home()
        self._pipe = _Pipe()
        self.process = self.session.start('chromium', self.session.as_user(
            *self.command, '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
            '--disable-component-update', '--disable-sync', '--password-store=basic', '--remote-debugging-pipe',
            f'--user-data-dir={self.profile}',
            *([f'--load-extension={self.extension / "chromium"}'] if self.extension else []),
            '--autoplay-policy=no-user-gesture-required', *(['--no-sandbox'] if os.geteuid() == 0 else []),
            '--restore-last-session' if restore else 'about:blank'), env=self.environment(), **self._pipe.options())
        self._pipe.started()
        self._sessions = {}
        wait_until(self.tabs, 'the first window')

    def stop(self):
        self._command('Browser.close')
        self.process.wait(DEADLINE)
        self._pipe.close()

    def open_tab(self, address):
        return self._open(url=address, background=True)

    def open_window(self, address):
        return self._open(url=address, newWindow=True)

    def close_tab(self, tab):
        self._command('Target.closeTarget', targetId=tab)
        wait_until(lambda: tab not in self.tabs(), 'the end of the tab')

    def show_tab(self, tab):
        self._command('Target.activateTarget', targetId=tab)

    def tabs(self):
        targets = self._command('Target.getTargets')['targetInfos']
        return [target['targetId'] for target in targets if target['type'] == 'page']

    def run(self, tab, expression):
        answer = self._command('Runtime.evaluate', tab, expression=expression, returnByValue=True, awaitPromise=True)
        if 'exceptionDetails' in answer:
            raise RuntimeError(answer['exceptionDetails'])
        return answer['result'].get('value')

    def click(self, tab, selector):
        box = self.run(tab, f'(({{x, y, width, height}}) => [x + width / 2, y + height / 2])'
                            f'(document.querySelector({json.dumps(selector)}).getBoundingClientRect())')
        for kind in ('mousePressed', 'mouseReleased'):
            self._command('Input.dispatchMouseEvent', tab, type=kind, x=box[0], y=box[1], button='left', clickCount=1)

    def agree(self):
        self.session.succeeds('xdotool', 'key', 'Tab', 'Return')  # from "Deny" to "Allow"

    def stop_background(self):
        page = self.find_tab("location.protocol === 'chrome-extension:'")
        self._command('ServiceWorker.enable', page)
        self._command('ServiceWorker.stopAllWorkers', page)

    def open_private_window(self, address):
        context = self._command('Target.createBrowserContext')['browserContextId']
        return self._open(url=address, browserContextId=context)

    def _open(self, url, **how):
        tab = self._command('Target.createTarget', url=url, **how)['targetId']
        loaded = "document.readyState === 'complete' && location.href !== 'about:blank'"
        wait_until(lambda: self.run(tab, loaded), f'the loading of {url}')
        return tab

    def _command(self, method, tab=None, **parameters):
        if tab is None:
            return self._pipe.command(method, parameters)
        if tab not in self._sessions:
            attached = self._pipe.command('Target.attachToTarget', {'targetId': tab, 'flatten': True})
            self._sessions[tab] = attached['sessionId']
        return self._pipe.command(method, parameters, self._sessions[tab])


class _Pipe:
    """Sends commands to the browser's descriptor 3 and reads answers from its descriptor 4."""

    def __init__(self):
        self._theirs_in, self._out = os.pipe()
        self._in, self._theirs_out = os.pipe()
        self._next = 1
        self._rest = b''

    def options(self):
        return {'preexec_fn': self._place, 'pass_fds': (3, 4)}

    def _place(self):
        # By way of high numbers, because either descriptor may have the number that the other one needs.
        first, second = os.dup(self._theirs_in), os.dup(self._theirs_out)
        high = 100
        os.dup2(first, high)
        os.dup2(second, high + 1)
        os.dup2(high, 3)
        os.dup2(high + 1, 4)

    def started(self):
        os.close(self._theirs_in)
        os.close(self._theirs_out)

    def close(self):
        os.close(self._in)
        os.close(self._out)

    def command(self, method, parameters, session=None):
        number = self._next
        self._next += 1
        message = {'id': number, 'method': method, 'params': parameters}
        if session:
            message['sessionId'] = session
        os.write(self._out, json.dumps(message).encode() + b'\0')
        end = time.monotonic() + DEADLINE
        while True:
            answer = self._receive(end, method)
            if answer.get('id') != number:
                continue  # an event
            if 'error' in answer:
                raise RuntimeError(f'{method}: {answer["error"]}')
            return answer['result']

    def _receive(self, end, method):
        while b'\0' not in self._rest:
            if not select.select([self._in], [], [], max(0.0, end - time.monotonic()))[0]:
                raise TimeoutError(f'no answer to {method}')
            received = os.read(self._in, 65536)
            if not received:
                raise ConnectionError(f'the browser ended during {method}')
            self._rest += received
        message, self._rest = self._rest.split(b'\0', 1)
        return json.loads(message)
