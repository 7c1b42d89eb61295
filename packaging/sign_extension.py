#!/usr/bin/env python3
"""Makes a signed package (CRX3) of the extension, for browsers that are told by a file where it lies.

    sign_extension.py KEY ZIP CRX     signs ZIP with KEY, writes CRX, and prints the extension's identifier
    sign_extension.py --id KEY        only prints it

KEY: a file with an RSA key in PEM form, which is made if it is missing. The same key and ZIP give the same bytes.
Needs openssl. Source: components/crx_file/crx3.proto in the source of Chromium.
"""

import hashlib
import os
import pathlib
import struct
import subprocess
import sys

MAGIC, VERSION = b'Cr24', 3
SIGNED_CONTEXT = b'CRX3 SignedData\0'
# Numbers of fields in crx3.proto.
PROOF_WITH_RSA, SIGNED_HEADER = 2, 10000  # in CrxFileHeader
PUBLIC_KEY, SIGNATURE = 1, 2  # in AsymmetricKeyProof
EXTENSION_ID = 1  # in SignedData


def openssl(*arguments, given=None):
    return subprocess.run(['openssl', *arguments], input=given, stdout=subprocess.PIPE, check=True).stdout


def make_key(key):
    key.parent.mkdir(parents=True, exist_ok=True)
    os.umask(0o077)
    unfinished = key.with_name(key.name + '.new')
    openssl('genpkey', '-quiet', '-algorithm', 'RSA', '-pkeyopt', 'rsa_keygen_bits:2048', '-out', unfinished)
    unfinished.rename(key)


def number(value):
    """As protocol buffers write it: seven bits a byte, the lowest first."""
    written = b''
    while value >= 0x80:
        written += bytes([value & 0x7f | 0x80])
        value >>= 7
    return written + bytes([value])


def field(which, content):
    length_delimited = 2
    return number(which << 3 | length_delimited) + number(len(content)) + content


def identifier(raw):
    """What the browser calls the extension: hexadecimal digits, with the letters from a to p."""
    return raw.hex().translate(str.maketrans('0123456789abcdef', 'abcdefghijklmnop'))


def signed(key, archive):
    """The package, and the extension's identifier."""
    public = openssl('pkey', '-in', key, '-pubout', '-outform', 'DER')
    raw_id = hashlib.sha256(public).digest()[:16]
    header_to_sign = field(EXTENSION_ID, raw_id)
    to_sign = SIGNED_CONTEXT + struct.pack('<I', len(header_to_sign)) + header_to_sign + archive
    signature = openssl('dgst', '-sha256', '-sign', key, given=to_sign)
    proof = field(PUBLIC_KEY, public) + field(SIGNATURE, signature)
    header = field(PROOF_WITH_RSA, proof) + field(SIGNED_HEADER, header_to_sign)
    return MAGIC + struct.pack('<II', VERSION, len(header)) + header + archive, identifier(raw_id)


def main(arguments):
    if len(arguments) != 3 and arguments[:1] != ['--id']:
        sys.exit(__doc__)
    only_id = arguments[0] == '--id'
    key = pathlib.Path(arguments[1 if only_id else 0])
    if not key.exists():
        make_key(key)
    package, name = signed(key, b'' if only_id else pathlib.Path(arguments[1]).read_bytes())
    if not only_id:
        pathlib.Path(arguments[2]).write_bytes(package)
    print(name)


if __name__ == '__main__':
    main(sys.argv[1:])
