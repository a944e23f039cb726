#!/usr/bin/python3
"""Serves a folder over TLS on a free port of localhost, as the host of tests/data/tls/localhost.pem: serve.py FOLDER
Prints the port. Ends when its standard input ends.
"""

import functools
import http.server
import ssl
import sys
import threading
from pathlib import Path

TLS = Path(__file__).resolve().parent.parent / "data" / "tls"


def main():
    handler = functools.partial(http.server.SimpleHTTPRequestHandler, directory=sys.argv[1])
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler)
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(TLS / "localhost.pem", TLS / "localhost.key")
    server.socket = context.wrap_socket(server.socket, server_side=True)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    print(server.server_address[1], flush=True)
    sys.stdin.read()


if __name__ == "__main__":
    main()
