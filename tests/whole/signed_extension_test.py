#!/usr/bin/env python3
"""The extension's signed package is what browsers expect: signed_extension_test.py"""

import base64
import hashlib
import json
import pathlib
import struct
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = ROOT / 'packaging/sign_extension.py'


def fields(message):
    """The fields of a protocol buffer, all of which hold bytes: a list of numbers and contents."""
    def number():
        nonlocal message
        value = shift = 0
        while True:
            byte, message = message[0], message[1:]
            value |= (byte & 0x7f) << shift
            shift += 7
            if byte < 0x80:
                return value
    found = []
    while message:
        tag, length = number(), number()
        assert tag & 7 == 2
        found.append((tag >> 3, message[:length]))
        message = message[length:]
    return found


def taken_apart(package):
    magic, version, size = struct.unpack('<4sII', package[:12])
    assert (magic, version) == (b'Cr24', 3)
    header = dict(fields(package[12:12 + size]))
    proof = dict(fields(header[2]))
    return header[10000], proof[1], proof[2], package[12 + size:]


class SignedExtensionTest(unittest.TestCase):
    """All tests share the key, because making one takes long."""

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.key = cls.folder / 'keys/key.pem'
        cls.archive = cls.folder / 'extension.zip'
        cls.archive.write_bytes(b'PK an archive')

    def sign(self, key=None, crx='extension.crx'):
        said = subprocess.run([PROGRAM, key or self.key, self.archive, self.folder / crx], check=True,
                              stdout=subprocess.PIPE, text=True).stdout.strip()
        return said, (self.folder / crx).read_bytes()

    def holds(self, public, signature, text):
        (self.folder / 'public').write_bytes(public)
        (self.folder / 'signature').write_bytes(signature)
        return subprocess.run(['openssl', 'dgst', '-sha256', '-keyform', 'DER', '-verify', self.folder / 'public',
                               '-signature', self.folder / 'signature'], input=text, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL).returncode == 0

    def test_the_signature_holds_for_this_content_and_for_no_other(self):
        header, public, signature, archive = taken_apart(self.sign()[1])
        self.assertEqual(archive, self.archive.read_bytes())
        text = b'CRX3 SignedData\0' + struct.pack('<I', len(header)) + header + archive
        self.assertTrue(self.holds(public, signature, text))
        self.assertFalse(self.holds(public, signature, text + b'!'))

    def test_the_identifier_follows_from_the_key(self):
        name, package = self.sign()
        header, public, _, _ = taken_apart(package)
        digest = hashlib.sha256(public).hexdigest()[:32]
        self.assertEqual(fields(header), [(1, bytes.fromhex(digest))])
        self.assertEqual(name, ''.join(chr(ord('a') + int(digit, 16)) for digit in digest))
        said = subprocess.run([PROGRAM, '--id', self.key], check=True, stdout=subprocess.PIPE, text=True).stdout
        self.assertEqual(said.strip(), name)

    def test_the_identifier_is_made_as_that_of_the_unpacked_extension(self):
        public = base64.b64decode(json.loads((ROOT / 'extension/manifest.json').read_text())['key'])
        sys.path.append(str(PROGRAM.parent))
        from sign_extension import identifier
        self.assertEqual(identifier(hashlib.sha256(public).digest()[:16]), 'obnkhebafdebfkbooeekkekkklllpdhc')

    def test_the_key_is_made_once_and_only_its_owner_can_read_it(self):
        first, second = self.sign(), self.sign(crx='again.crx')
        self.assertEqual(first, second)
        self.assertEqual(self.key.stat().st_mode & 0o777, 0o600)
        self.assertNotEqual(self.sign(self.folder / 'other.pem')[0], first[0])


if __name__ == '__main__':
    unittest.main(verbosity=2)
