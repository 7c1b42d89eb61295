#!/usr/bin/env python3
"""A pointer and a keyboard for a session with KWin, which has none without a screen.

Obeys lines on its standard input: "move X Y", "button CODE DOWN" and "key CODE DOWN", with the codes of
linux/input-event-codes.h and DOWN 1 or 0. Each is answered with "obeyed" when KWin has taken it. The devices exist as
long as this program runs. KWin keeps this for Plasma's own programs, unless KWIN_WAYLAND_NO_PERMISSION_CHECKS is 1.
"""

import os
import pathlib
import socket
import struct
import sys


class FakeInput:
    """Speaks just enough of Wayland for this protocol."""
    interface, version = 'org_kde_kwin_fake_input', 4
    display, registry, callback, input = 1, 2, 3, 4  # our numbers for these objects

    def __init__(self, path):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.connect(str(path))
        self._unread = b''
        self._last = self.input
        self._send(self.display, 1, struct.pack('=I', self.registry))
        name = self._roundtrip(self.callback)
        if name is None:
            raise RuntimeError(f'KWin does not offer {self.interface}')
        self._send(self.registry, 0, struct.pack('=I', name) + self._text(self.interface) +
                   struct.pack('=II', self.version, self.input))
        self._send(self.input, 0, self._text('tests') + self._text('tests'))

    def move(self, x, y):
        self._send(self.input, 9, struct.pack('=ii', x * 256, y * 256))

    def button(self, button, is_down):
        self._send(self.input, 2, struct.pack('=II', button, is_down))

    def key(self, key, is_down):
        self._send(self.input, 10, struct.pack('=II', key, is_down))

    def await_kwin(self):
        """KWin has taken everything when this returns."""
        self._last += 1
        self._roundtrip(self._last)

    def _roundtrip(self, callback):
        """Returns the registry's number for our interface, if that was told meanwhile."""
        self._send(self.display, 0, struct.pack('=I', callback))
        found = None
        while True:
            target, code, body = self._receive()
            if target == self.registry and code == 0:
                name, length = struct.unpack_from('=II', body)
                if body[8:8 + length - 1].decode() == self.interface:
                    found = name
            elif target == self.display and code == 0:
                raise RuntimeError(f'KWin refuses: {body!r}')
            elif target == callback:
                return found

    def _receive(self):
        while True:
            if len(self._unread) >= 8:
                target, head = struct.unpack_from('=II', self._unread)
                length = head >> 16
                if len(self._unread) >= length:
                    body, self._unread = self._unread[8:length], self._unread[length:]
                    return target, head & 0xffff, body
            more = self._socket.recv(65536)
            if not more:
                raise RuntimeError('KWin has ended the connection')
            self._unread += more

    def _send(self, target, code, body):
        self._socket.sendall(struct.pack('=II', target, (8 + len(body)) << 16 | code) + body)

    @staticmethod
    def _text(text):
        data = text.encode() + b'\0'
        return struct.pack('=I', len(data)) + data + bytes(-len(data) % 4)


device = FakeInput(pathlib.Path(os.environ['XDG_RUNTIME_DIR']) / os.environ['WAYLAND_DISPLAY'])
for line in sys.stdin:
    verb, *numbers = line.split()
    {'move': device.move, 'button': device.button, 'key': device.key}[verb](*map(int, numbers))
    device.await_kwin()
    print('obeyed', flush=True)
