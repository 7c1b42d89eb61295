"""Calls methods and reads properties on a message bus, with busctl.

    bus.call(service, path, interface, 'GetLayout', 'iias', 0, -1, 0)     # the results, as a list
    bus.get(service, path, interface, 'Name')

Variants are returned as {'type': ..., 'data': ...}, structures and arrays as lists. An error reply raises BusError.
"""

import json
import subprocess

from waiting import DEADLINE


class BusError(Exception):
    pass


class Bus:
    def __init__(self, address):
        self.address = address

    def call(self, service, path, interface, method, signature='', *arguments):
        return self._ask('call', service, path, interface, method, *([signature] if signature else []), *arguments)

    def get(self, service, path, interface, name):
        return self._ask('get-property', service, path, interface, name)

    def has(self, name):
        """Whether this name has an owner on the bus."""
        try:
            return self.call('org.freedesktop.DBus', '/org/freedesktop/DBus', 'org.freedesktop.DBus', 'NameHasOwner',
                             's', name)[0]
        except BusError:
            return False

    def _ask(self, verb, *arguments):
        command = ['busctl', f'--address={self.address}', '--json=short', verb, '--', *map(str, arguments)]
        done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=DEADLINE)
        if done.returncode != 0:
            raise BusError(done.stderr.strip())
        return json.loads(done.stdout)['data'] if done.stdout.strip() else None
