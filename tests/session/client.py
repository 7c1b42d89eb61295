"""A private session for a Python program.

    with PrivateSession('--sound', 'pipewire', '--screen', '800x480') as session:
        session.tell('start notifications')
        session.start('player', ['pw-play', 'tone.wav'])

`session.environment` lets programs find the session; `session.facts` are the facts that private_session prints.
Programs that are started here end with the session.
"""

import pathlib
import re
import shutil
import subprocess
import sysconfig

from bus import Bus

LIBRARIES = f'/usr/lib/{sysconfig.get_config_var("MULTIARCH")}'  # Debian's place for those of this machine
PROGRAM = pathlib.Path(__file__).resolve().parent / 'private_session'


class SessionFailure(Exception):
    """Raised with private_session's sentence about what failed."""


def program(*candidates):
    """The first of these programs that is here: versions of Debian put some into different places."""
    return next((found for each in candidates if (found := shutil.which(each))), candidates[0])


class PrivateSession:
    def __init__(self, *options):
        self.environment, self.facts = {}, {}
        self._processes = []
        self._session = subprocess.Popen([PROGRAM, *options], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                                         start_new_session=True)
        try:
            self._read_answer()
        except BaseException:
            self.close()
            raise
        self.root, self.home = pathlib.Path(self.facts['root']), pathlib.Path(self.facts['home'])
        # The default folders in the home directory, because some programs ignore the variables for other ones.
        self.config, self.data = self.home / '.config', self.home / '.local/share'
        for directory in (self.config, self.data):
            directory.mkdir(parents=True, exist_ok=True)
        self.bus = Bus(self.environment['DBUS_SESSION_BUS_ADDRESS'])

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def tell(self, command):
        """Sends a command of private_session. Raises SessionFailure if it fails."""
        self._session.stdin.write(command + '\n')
        self._session.stdin.flush()
        self._read_answer()

    def start(self, name, command, **options):
        """Starts a program in the session. It is killed when the session ends, or with this process."""
        with open(pathlib.Path(self.facts['log']) / name, 'ab') as log:
            process = subprocess.Popen(['setpriv', '--pdeathsig', 'KILL', *command], start_new_session=True,
                                       **{'env': self.environment, 'stdin': subprocess.DEVNULL, 'stdout': log,
                                          'stderr': log, **options})
        self._processes.append(process)
        return process

    def write(self, path, text):
        """Writes a file below the home directory."""
        file = self.home / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)

    def as_user(self, *command):
        """The command, as the user whose session it is runs it."""
        if 'user' not in self.facts:
            return list(map(str, command))
        user, group = self.facts['user'].split(':')
        return ['setpriv', f'--reuid={user}', f'--regid={group}', '--clear-groups', *map(str, command)]

    def own_home(self):
        """Gives everything in the home directory to the user whose session it is."""
        if 'user' in self.facts:
            subprocess.run(['chown', '-R', self.facts['user'], str(self.home)], check=True)

    def succeeds(self, *command):
        try:
            return subprocess.run(command, env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                  stdin=subprocess.DEVNULL, timeout=5).returncode == 0
        except subprocess.TimeoutExpired:
            return False

    def output(self, *command):
        return subprocess.run(command, env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              stdin=subprocess.DEVNULL, timeout=10, text=True).stdout.strip()

    def processes(self, program):
        """The ids of the session's processes that run `program`."""
        mark = f"XDG_RUNTIME_DIR={self.environment['XDG_RUNTIME_DIR']}".encode()

        def is_one(directory):
            try:
                return (mark in (directory / 'environ').read_bytes().split(b'\0') and
                        str(program).encode() in (directory / 'cmdline').read_bytes().split(b'\0'))
            except OSError:
                return False  # the process has ended, or belongs to another user
        return [int(each.name) for each in pathlib.Path('/proc').glob('[0-9]*') if is_one(each)]

    def close(self):
        for process in reversed(self._processes):
            process.kill()
            process.wait()
        self._session.stdin.close()
        self._session.stdout.read()
        self._session.stdout.close()
        return self._session.wait()

    def _read_answer(self):
        for line in self._session.stdout:
            line = line.rstrip('\n')
            if line == 'ready':
                return
            if line.startswith('failed: '):
                raise SessionFailure(line.removeprefix('failed: '))
            name, _, value = line.partition('=')
            (self.environment if re.fullmatch('[A-Z0-9_]+', name) else self.facts)[name] = value
        raise SessionFailure('the private session has ended')


class Lines:
    """A program that answers lines with lines."""

    def __init__(self, session, name, command, **environment):
        self.process = session.start(name, session.as_user(*command), stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                     text=True, env={**session.environment, **environment})

    def ask(self, line):
        self.process.stdin.write(line + '\n')
        self.process.stdin.flush()
        return self.line()

    def line(self):
        return self.process.stdout.readline().rstrip('\n')
