#!/usr/bin/env python3
"""Runs a command beside an HTTP server on loopback, and ends with its exit code. Usage: with_server.py COMMAND ARGS...

The server lives in this process, so it ends with it on every path. The command finds in its environment
  TOOLBELT_TEST_PORTS      the ports, in the order of PORTS below; all but the first speak TLS
  TOOLBELT_TEST_AUTHORITY  the DER of the authority that signed the certificates of all ports but the last, in hex

The path of a request says what comes back; then the connection is closed:
  /echo      the request itself, with a length
  /reply     the request's body, which is a whole HTTP answer, as it is
  /slow      the same, an octet every 10 ms
  /json      a JSON document about the request, with the request's own document in it
  /large/N   N octets, with a length: the octet at i is i * 7 mod 251
  /close     nothing
  /count     the number of connections before this one
"""
import os
import socket
import ssl
import subprocess
import sys
import tempfile
import threading
import time

PORTS = ["plain", "good", "wrong-name", "expired", "unknown-authority"]
connections = 0


def openssl(folder, *arguments):
    subprocess.run(["openssl", *arguments], cwd=folder, check=True, capture_output=True)


def make_certificates(folder):
    """NAME.pem, a key with its certificate, for each port that speaks TLS; returns the DER of the known authority."""
    for authority in ["known", "unknown"]:
        openssl(folder, "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", authority + ".key",
                "-out", authority + ".crt", "-subj", "/CN=Toolbelt test authority, " + authority, "-days", "2")
    openssl(folder, "genrsa", "-out", "server.key", "2048")
    for name, host, days, authority in [("good", "localhost", "2", "known"), ("wrong-name", "elsewhere.test", "2", "known"),
                                        ("expired", "localhost", "-1", "known"),
                                        ("unknown-authority", "localhost", "2", "unknown")]:
        with open(os.path.join(folder, "extensions"), "w") as file:
            file.write("basicConstraints=CA:false\nsubjectAltName=DNS:" + host + "\n")
        openssl(folder, "req", "-new", "-key", "server.key", "-subj", "/CN=" + host, "-out", "request")
        openssl(folder, "x509", "-req", "-in", "request", "-CA", authority + ".crt", "-CAkey", authority + ".key",
                "-CAcreateserial", "-days", days, "-extfile", "extensions", "-out", name + ".crt")
    return subprocess.run(["openssl", "x509", "-in", "known.crt", "-outform", "DER"], cwd=folder, check=True,
                          capture_output=True).stdout


def read_request(connection):
    """The head up to and with the empty line, and the body."""
    data = b""
    while b"\r\n\r\n" not in data:
        piece = connection.recv(65536)
        if not piece:
            return data, b""
        data += piece
    head, _, body = data.partition(b"\r\n\r\n")
    length = 0
    for line in head.split(b"\r\n"):
        if line.lower().startswith(b"content-length:"):
            length = int(line[15:])
    while len(body) < length:
        piece = connection.recv(65536)
        if not piece:
            break
        body += piece
    return head + b"\r\n\r\n", body


def serve(connection, context, number):
    try:
        connection.settimeout(20)
        if context:
            connection = context.wrap_socket(connection, server_side=True)
        head, body = read_request(connection)
        path = head.split(b" ", 2)[1].decode() if b" " in head else "/close"
        if path == "/reply":
            connection.sendall(body)
        elif path == "/slow":
            for i in range(len(body)):
                connection.sendall(body[i:i + 1])
                time.sleep(0.01)
        elif path != "/close":
            if path.startswith("/large/"):
                count = int(path[7:])
                answer = (bytes(i * 7 % 251 for i in range(251)) * (count // 251 + 1))[:count]
            elif path == "/json":
                answer = b'{"method":"%s","path":"/json","received":%s}' % (head.split(b" ")[0], body)
            else:
                answer = str(number).encode() if path == "/count" else head + body
            connection.sendall(b"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: %d\r\n\r\n" % len(answer) +
                               answer)
        if context:
            connection = connection.unwrap()
    except (OSError, ValueError):
        pass  # the other side went away, or refused the certificate
    finally:
        connection.close()


def listen(context):
    """Serves a free port of loopback from now on; returns it."""
    listener = socket.create_server(("127.0.0.1", 0))

    def accept():
        global connections
        while True:
            connection, _ = listener.accept()
            number = connections
            connections += 1
            threading.Thread(target=serve, args=(connection, context, number), daemon=True).start()

    threading.Thread(target=accept, daemon=True).start()
    return listener.getsockname()[1]


def main():
    ports = []
    with tempfile.TemporaryDirectory() as folder:
        authority = make_certificates(folder)
        for name in PORTS:
            context = None
            if name != "plain":
                context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
                context.load_cert_chain(os.path.join(folder, name + ".crt"), os.path.join(folder, "server.key"))
            ports.append(str(listen(context)))
    environment = dict(os.environ, TOOLBELT_TEST_PORTS=" ".join(ports), TOOLBELT_TEST_AUTHORITY=authority.hex())
    code = subprocess.run(sys.argv[1:], env=environment).returncode
    sys.exit(code if code >= 0 else 128 - code)


if __name__ == "__main__":
    main()
