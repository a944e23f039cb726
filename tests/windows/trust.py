#!/usr/bin/python3
"""Prints a registry file with which Wine trusts the authority of tests/data/tls.

A stored certificate is a list of properties. Each property begins with its number, the value 1, and its length.
Property 32 is the certificate itself.
"""

import base64
import hashlib
import struct
from pathlib import Path

AUTHORITY = Path(__file__).resolve().parent.parent / "data" / "tls" / "authority.pem"
CERT_CERT_PROP_ID = 32


def main():
    text = AUTHORITY.read_text(encoding="ascii")
    certificate = base64.b64decode(text.split("-----")[2])
    blob = struct.pack("<III", CERT_CERT_PROP_ID, 1, len(certificate)) + certificate
    name = hashlib.sha1(certificate).hexdigest().upper()
    print("Windows Registry Editor Version 5.00\n")
    print(rf"[HKEY_CURRENT_USER\Software\Microsoft\SystemCertificates\Root\Certificates\{name}]")
    print('"Blob"=hex:' + ",".join(f"{byte:02x}" for byte in blob))


if __name__ == "__main__":
    main()
