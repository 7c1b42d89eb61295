"""A desktop of a test's own: home, session bus, sound server with a null output, X server and window manager.

    with PrivateSession() as session:
        session.start_panel()
        session.start('editor', ['xterm'])

Nothing of it touches the user's, and nothing of it outlives the `with`. `session.environment` is where programs find
all this; `session.log(name)` is what a program said.
"""

import os
import pathlib
import re
import shlex
import shutil
import signal
import subprocess
import tempfile
import wave

from bus import Bus
from waiting import wait_until

PANEL_SETTINGS = pathlib.Path(__file__).resolve().parent.parent / 'support/xfce4-panel.xml'

FOREIGN = ('WAYLAND_DISPLAY', 'XAUTHORITY', 'SESSION_MANAGER', 'PULSE_SERVER', 'PULSE_RUNTIME_PATH', 'PIPEWIRE_REMOTE',
           'PIPEWIRE_RUNTIME_DIR', 'XDG_DATA_DIRS', 'XDG_CONFIG_DIRS', 'DISPLAY')

# Starts no services: the machine's portals would mount file systems into the session.
BUS = '''<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>{address}</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
'''


class PrivateSession:
    def __init__(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix='tollvane-browsers-'))
        self._processes = []
        self.home = self.root / 'home'
        # The usual places below the home directory: some programs look there whatever the variables say.
        self.config = self.home / '.config'
        self.data = self.home / '.local/share'
        for directory in (self.root / 'log', self.root / 'run', self.root / 'tmp', self.config, self.data):
            directory.mkdir(mode=0o700, parents=True)
        self.environment = {name: value for name, value in os.environ.items() if name not in FOREIGN}
        self.environment.update(
            HOME=str(self.home),
            TMPDIR=str(self.root / 'tmp'),
            XDG_RUNTIME_DIR=str(self.root / 'run'),
            XDG_CONFIG_HOME=str(self.config),
            XDG_DATA_HOME=str(self.data),
            XDG_STATE_HOME=str(self.home / '.local/state'),
            XDG_CACHE_HOME=str(self.home / '.cache'),
            DBUS_SESSION_BUS_ADDRESS=f'unix:path={self.root}/run/bus',
            NO_AT_BRIDGE='1',
            LANG='C.UTF-8')
        self.bus = Bus(self.environment['DBUS_SESSION_BUS_ADDRESS'])

    def __enter__(self):
        try:
            self._start_bus()
            self._start_sound()
            self._start_desktop()
        except BaseException:
            self.close()
            raise
        return self

    def __exit__(self, *_):
        self.close()

    def start(self, name, command, **options):
        """Starts a program in the session; it dies with the session, or with this process."""
        with open(self.root / 'log' / name, 'ab') as log:
            process = subprocess.Popen(['setpriv', '--pdeathsig', 'KILL', *command], stdin=subprocess.DEVNULL,
                                       stderr=log, start_new_session=True,
                                       **{'env': self.environment, 'stdout': log, **options})
        self._processes.append(process)
        return process

    def start_service(self, name):
        """A service of the session bus, as its file says; the bus itself starts none."""
        service = pathlib.Path(f'/usr/share/dbus-1/services/{name}.service').read_text()
        program = re.search('^Exec=(.*)$', service, re.MULTILINE)[1]
        self.start(name, shlex.split(program))
        wait_until(lambda: self.bus.has(name), f'the service {name}')

    def start_panel(self):
        """A panel that shows status items."""
        settings = self.config / 'xfce4/xfconf/xfce-perchannel-xml'
        settings.mkdir(parents=True)
        (settings / 'xfce4-panel.xml').write_text(PANEL_SETTINGS.read_text().replace('@DARK_MODE@', 'true'))
        self.start_service('org.xfce.Xfconf')
        self.start('panel', ['xfce4-panel', '--disable-wm-check'])
        wait_until(lambda: self.bus.has('org.kde.StatusNotifierWatcher'), 'the panel')

    def succeeds(self, *command):
        try:
            return subprocess.run(command, env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                  stdin=subprocess.DEVNULL, timeout=5).returncode == 0
        except subprocess.TimeoutExpired:
            return False

    def output(self, *command):
        return subprocess.run(command, env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              stdin=subprocess.DEVNULL, timeout=10, text=True).stdout.strip()

    def log(self, name):
        file = self.root / 'log' / name
        return file.read_text(errors='replace') if file.exists() else ''

    def processes(self, program):
        """The ids of this program's processes in this session."""
        def is_one(pid):
            try:
                return str(program).encode() in pathlib.Path(f'/proc/{pid}/cmdline').read_bytes().split(b'\0')
            except OSError:
                return False  # ended meanwhile
        return [pid for pid in self.strays() if is_one(pid)]

    def strays(self):
        """The ids of all processes that live in this session, found by their environment."""
        mark = f'XDG_RUNTIME_DIR={self.root}/run'.encode()
        found = []
        for directory in pathlib.Path('/proc').glob('[0-9]*'):
            try:
                if mark in (directory / 'environ').read_bytes().split(b'\0'):
                    found.append(int(directory.name))
            except OSError:
                pass  # ended meanwhile, or another user's
        return found

    def close(self):
        for process in reversed(self._processes):
            process.kill()
            process.wait()
        for pid in self.strays():
            try:
                os.kill(pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
        wait_until(lambda: not self.strays(), 'the end of everything in the session')
        shutil.rmtree(self.root, ignore_errors=True)

    def _start_bus(self):
        configuration = self.root / 'bus.conf'
        configuration.write_text(BUS.format(address=self.environment['DBUS_SESSION_BUS_ADDRESS']))
        self.start('bus', ['dbus-daemon', '--nofork', '--nopidfile', f'--config-file={configuration}'])
        wait_until((self.root / 'run/bus').exists, 'the session bus')

    def _start_sound(self):
        # WirePlumber ends where there is no login service, which it asks about Bluetooth only.
        settings = self.config / 'wireplumber/bluetooth.lua.d'
        settings.mkdir(parents=True)
        (settings / '51-no-bluetooth.lua').write_text('bluez_monitor.enabled = false\n')
        self.start('pipewire', ['pipewire'])
        wait_until((self.root / 'run/pipewire-0').exists, 'PipeWire')
        self.start('wireplumber', ['wireplumber'])
        # pipewire-pulse gives up where a player makes this directory at the same moment.
        (self.root / 'run/pulse').mkdir(mode=0o700)
        self.start('pipewire-pulse', ['pipewire-pulse'])
        silence = self.root / 'silence.wav'
        with wave.open(str(silence), 'wb') as file:
            file.setnchannels(1)
            file.setsampwidth(2)
            file.setframerate(48000)
            file.writeframes(bytes(960))
        # A sink that is listed may still hang; one that has played does not.
        wait_until(lambda: self.succeeds('timeout', '2', 'paplay', str(silence)), 'a sink that plays')

    def _start_desktop(self):
        reader, writer = os.pipe()
        # -noreset: or the server starts over when the first client that only looks around leaves.
        self.start('xvfb', ['Xvfb', '-displayfd', str(writer), '-screen', '0', '1280x900x24', '-nolisten', 'tcp',
                            '-noreset'], pass_fds=(writer,))
        os.close(writer)
        with os.fdopen(reader) as answer:
            display = answer.readline().strip()
        self.environment['DISPLAY'] = f':{display}'
        self.start('openbox', ['openbox', '--sm-disable', '--startup', 'echo ready'])
        wait_until(lambda: 'ready' in self.log('openbox'), 'the window manager')
