"""Stands in for the application at its end of the link to the extension, under the control of a test.

Listens on the application's socket, in the session's data directory, and talks in lines of JSON. Bridges connect to
it. `messages` are those of all bridges, in order; send() sends to the newest bridge.
"""

import json
import select
import socket
import struct
import time

from waiting import DEADLINE, wait_until


class FakeApplication:
    def __init__(self, session):
        self.path = session.data / 'Tollvane/bridge.sock'
        self.messages = []
        self._bridges = {}  # socket -> bytes of a line that is not complete yet; the newest socket is last
        self._listener = None
        self.start()

    def start(self):
        self.path.parent.mkdir(parents=True, exist_ok=True)
        self._listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._listener.bind(str(self.path))
        self._listener.listen()

    def stop(self):
        """Stops listening and closes all connections, as if the application ended."""
        self._listener.close()
        self.path.unlink()
        for bridge in self._bridges:
            bridge.close()
        self._bridges.clear()

    def send(self, **message):
        self._newest().sendall(json.dumps(message).encode() + b'\n')

    def ask(self, answer, **question):
        """Sends `question` and returns the next message of the type `answer`."""
        self.listen(0)
        start = len(self.messages)
        self.send(**question)
        return self.wait_for(answer, start=start)

    def wait_for(self, kind, start=0, deadline=DEADLINE, **members):
        """Waits for a message with this type and these members; returns the first one at or after index `start`."""
        end = time.monotonic() + deadline
        while True:
            for message in self.messages[start:]:
                if message.get('type') == kind and members.items() <= message.items():
                    return message
            if time.monotonic() > end:
                raise TimeoutError(f'no {kind} with {members}; there were {self.messages[start:]}')
            self.listen(0.1)

    def listen(self, seconds):
        """Reads what has arrived. If nothing has, waits up to `seconds` for the first message."""
        while ready := select.select([self._listener, *self._bridges], [], [], seconds)[0]:
            seconds = 0
            for one in ready:
                if one is self._listener:
                    self._bridges[one.accept()[0]] = b''
                else:
                    self._read(one)

    def bridge_pid(self):
        """The process id of the newest bridge."""
        credentials = self._newest().getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, 12)
        return struct.unpack('3i', credentials)[0]

    def _newest(self):
        def newest():
            self.listen(0.1)
            return next(reversed(self._bridges), None)
        return wait_until(newest, 'a bridge')

    def _read(self, bridge):
        try:
            received = bridge.recv(65536)
        except ConnectionError:
            received = b''
        if not received:
            bridge.close()
            del self._bridges[bridge]
            return
        *lines, rest = (self._bridges[bridge] + received).split(b'\n')
        self._bridges[bridge] = rest
        self.messages.extend(json.loads(line) for line in lines)
