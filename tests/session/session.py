"""The running session: its directories, its environment, its processes, and their end."""

import ctypes
import os
import pathlib
import pwd
import re
import shlex
import shutil
import signal
import subprocess
import tempfile
import time

from bus import Bus
from parts import PARTS, Failure

# The variables that programs of the session inherit from outside. All others could lead them to the desktop of the user
# who started the session, or change what they look like.
KEPT = re.compile('PATH|LD_LIBRARY_PATH|TERM|TZ|TOLLVANE_.*|(A|L|T|UB)SAN_OPTIONS')

PR_SET_PDEATHSIG = 1
MARK_OF_PARTS = 'TOLLVANE_PART_OF_SESSION'
LAST_WORDS = 3  # so many lines of a program's log are quoted in a sentence about its failure
NOBODY = 'nobody'


class Session:
    def __init__(self, options):
        self.options = options
        self.tone = options.tone
        # sway refuses to run as root, and a session bus serves one user.
        self.user = pwd.getpwnam(NOBODY) if options.wayland and os.geteuid() == 0 else None
        self.root = pathlib.Path(tempfile.mkdtemp(prefix='tollvane-'))
        self.run, self.home, self.log = self.root / 'run', self.root / 'home', self.root / 'log'
        self.own(self.root)
        for name in ('run', 'home', 'log', 'tmp', 'settings'):
            self.make_directory(self.root / name)
        self.environment = {name: value for name, value in os.environ.items()
                            if KEPT.fullmatch(name) and name != MARK_OF_PARTS and '\n' not in value}
        self.environment.update(
            HOME=str(self.home),
            TMPDIR=str(self.root / 'tmp'),
            XDG_RUNTIME_DIR=str(self.run),
            DBUS_SESSION_BUS_ADDRESS=f'unix:path={self.run}/bus',
            QT_QPA_PLATFORM='offscreen',  # changed when there is a screen
            NO_AT_BRIDGE='1',
            LANG='C.UTF-8')
        self.bus = Bus(self.environment['DBUS_SESSION_BUS_ADDRESS'])
        self.facts = {'root': str(self.root), 'home': str(self.home), 'log': str(self.log)}
        if self.user:
            self.facts['user'] = f'{self.user.pw_uid}:{self.user.pw_gid}'
        self._processes = {}  # part -> its processes, for the running parts, in the order of their start
        self._services = []
        self._told = {}

    # --- commands ---

    def start_part(self, part, *arguments):
        if part in self._processes:
            raise Failure(f'{PARTS[part].title} runs already')
        self._processes[part] = []
        try:
            PARTS[part].start(self, *arguments)
        except BaseException:
            self._end(self._processes.pop(part), signal.SIGKILL)
            raise
        self.facts[f'{variable(part)}_pid'] = self._processes[part][0].pid

    def end_part(self, part, number):
        if part not in self._processes:
            raise Failure(f'{PARTS[part].title} does not run')
        self._end(self._processes.pop(part), number)
        name = getattr(PARTS[part], 'name_on_bus', None)
        # The name is owned by a helper process of the panel, which ends a little later. It must be gone before the next
        # panel starts, because it would be taken for that panel's.
        if name and not within(self.options.patience, lambda: not self.bus.has(name)):
            raise Failure(f'{PARTS[part].title} has ended, but its name {name} stays on the bus')

    def start_service(self, name):
        """Starts a service of the bus, as its file says."""
        file = pathlib.Path(f'/usr/share/dbus-1/services/{name}.service')
        if not file.exists():
            raise Failure(f'there is no service {name} on this machine')
        command = shlex.split(re.search('^Exec=(.*)$', file.read_text(), re.MULTILINE)[1])
        process = self.launch(name, command)
        self._services.append(process)
        self.await_part(f'the service {name}', name, process, lambda: self.bus.has(name))

    def change_tone(self, tone):
        self.tone = tone
        part = next((part for part in ('panel', 'bar') if part in self._processes), None)
        if not part:
            raise Failure('there is neither panel nor bar whose tone could change')
        PARTS[part].change_tone(self)
        # A panel or bar that runs on keeps its icons in the colours of the old tone.
        self.end_part(part, signal.SIGTERM)
        self.start_part(part)

    def clear(self):
        self._stop(lambda: self.strays(but_for_parts=True))

    def news(self):
        """The variables and facts that have changed since the last call."""
        now = {**self.environment, **{name: str(value) for name, value in self.facts.items()}}
        new = {name: value for name, value in now.items() if self._told.get(name) != value}
        self._told = now
        return new

    # --- what the parts use ---

    def launch(self, name, command, part=None, **options):
        """Starts a program. It is killed with this process, and ends with `part` if that is given."""
        if not shutil.which(command[0], path=self.environment['PATH']):
            raise Failure(f'the program {command[0]} is not here')
        settings = {'stdin': subprocess.DEVNULL, 'stdout': subprocess.PIPE, 'env': self.environment, **options}
        settings['env'] = {**settings['env'], MARK_OF_PARTS: '1'}
        with open(self.log / name, 'ab') as log:
            if settings['stdout'] is subprocess.PIPE:
                settings['stdout'] = log
            process = subprocess.Popen(command, stderr=log, preexec_fn=die_with_parent, start_new_session=True,
                                       **self._as_user(), **settings)
        if part:
            self._processes[part].append(process)
        return process

    def keep(self, process):
        """Ends the process with the session."""
        self._services.append(process)

    def await_part(self, title, log_name, process, condition):
        """Waits until the condition holds. Fails if the process ends before that, or the time is over."""
        end = time.monotonic() + self.options.patience
        while not condition():
            code = process.poll()
            if code is not None:
                raise Failure(f'{title} ended with {code} before it was ready{self._last_words(log_name)}')
            if time.monotonic() > end:
                raise Failure(f'{title} was not ready within {self.options.patience} s{self._last_words(log_name)}')
            time.sleep(0.01)

    def succeeds(self, *command, seconds=3):
        try:
            return subprocess.run(command, env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                  stdin=subprocess.DEVNULL, timeout=seconds, **self._as_user()).returncode == 0
        except subprocess.TimeoutExpired:
            return False

    def output(self, *command, seconds=3):
        try:
            return subprocess.run(command, env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                  stdin=subprocess.DEVNULL, timeout=seconds, text=True, **self._as_user()).stdout
        except subprocess.TimeoutExpired:
            return ''

    def said(self, name):
        return (self.log / name).read_text(errors='replace')

    def make_directory(self, path):
        missing = [each for each in (path, *path.parents) if not each.exists()]
        for each in reversed(missing):
            each.mkdir(mode=0o700)
            self.own(each)
        return path

    def write(self, path, text):
        self.make_directory(path.parent)
        path.write_text(text)
        self.own(path)
        return path

    def own(self, path):
        if self.user:
            os.chown(path, self.user.pw_uid, self.user.pw_gid)

    # --- the end ---

    def close(self):
        for part in reversed(list(self._processes)):
            self._end(self._processes[part], signal.SIGTERM)
        self._end(self._services, signal.SIGTERM)
        # End what the parts or other programs of the session have left behind.
        self._stop(self.strays)
        shutil.rmtree(self.root, ignore_errors=True)

    def strays(self, but_for_parts=False):
        """The ids of all other processes that live in this session, found by their environment."""
        mark, part = f'XDG_RUNTIME_DIR={self.run}'.encode(), f'{MARK_OF_PARTS}=1'.encode()
        found = []
        for directory in pathlib.Path('/proc').glob('[0-9]*'):
            try:
                environment = (directory / 'environ').read_bytes().split(b'\0')
            except OSError:
                continue  # the process has ended, or belongs to another user
            if mark in environment and not (but_for_parts and part in environment):
                found.append(int(directory.name))
        return found

    @staticmethod
    def _stop(pids):
        def are_gone():
            if pids():
                return False
            time.sleep(0.005)  # a process has no environment while it becomes another program
            return not pids()

        signal_all(pids(), signal.SIGTERM)
        if not within(2, are_gone):
            within(10, lambda: not signal_all(pids(), signal.SIGKILL) and are_gone())

    def _end(self, processes, number):
        for process in reversed(processes):
            process.send_signal(number)
            process.send_signal(signal.SIGCONT)
        for process in processes:
            if not within(2, lambda process=process: process.poll() is not None):
                process.kill()
            process.wait()

    def _last_words(self, log_name):
        log = self.log / log_name
        lines = [line.strip() for line in self.said(log_name).splitlines() if line.strip()] if log.exists() else []
        return ''.join(f' | {line}' for line in lines[-LAST_WORDS:])

    def _as_user(self):
        return {'user': self.user.pw_uid, 'group': self.user.pw_gid, 'extra_groups': []} if self.user else {}


def die_with_parent():
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


def variable(part):
    return part.replace('-', '_')


def within(seconds, condition):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.01)
    return True


def signal_all(pids, number):
    for pid in pids:
        try:
            os.kill(pid, number)
        except ProcessLookupError:
            pass
    return pids
