#!/usr/bin/env python3
"""Runs a command beside an HTTP server on loopback, and ends with its exit code. Usage: with_server.py COMMAND ARGS...

The server lives in this process, so it ends with it on every path. The command finds in its environment
  TOOLBELT_TEST_PORTS      a port without TLS, and those of SECURE below, which speak TLS
  TOOLBELT_TEST_AUTHORITY  the DER of the authority that signed the certificates of all ports but the last, in hex

The path of a request says what comes back; then the connection is closed:
  /reply     the request's body, which is a whole HTTP answer, as it is
  /slow      the same, an octet every 10 ms
  /json      a JSON document about the request, with the request's own document in it
  /large/N   N octets, with a length: the octet at i is i * 7 mod 251
  others     the request itself, with a length
"""
import os
import socket
import ssl
import subprocess
import sys
import tempfile
import threading
import time

# The ports that speak TLS: the name and the days of the certificate, and who signed it. Addresses are in figures, so
# that nothing has to resolve a name.
OWN = "IP:127.0.0.1"
SECURE = {"good": (OWN, "2", "known"), "wrong-name": ("DNS:elsewhere.test", "2", "known"),
          "expired": (OWN, "-1", "known"), "unknown-authority": (OWN, "2", "unknown")}


def openssl(folder, *arguments):
    subprocess.run(["openssl", *arguments], cwd=folder, check=True, capture_output=True)


def make_certificates(folder):
    """NAME.pem, a key with its certificate, for each port that speaks TLS; returns the DER of the known authority."""
    for authority in ["known", "unknown"]:
        openssl(folder, "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", authority + ".key",
                "-out", authority + ".crt", "-subj", "/CN=Toolbelt test authority, " + authority, "-days", "2")
    openssl(folder, "genrsa", "-out", "server.key", "2048")
    for name, (host, days, authority) in SECURE.items():
        with open(os.path.join(folder, "extensions"), "w") as file:
            file.write("basicConstraints=CA:false\nsubjectAltName=" + host + "\n")
        openssl(folder, "req", "-new", "-key", "server.key", "-subj", "/CN=" + host.split(":")[1], "-out", "request")
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
        body += connection.recv(65536) or bytes(length)  # gone: nobody looks at it
    return head + b"\r\n\r\n", body


def serve(connection, context):
    try:
        connection.settimeout(20)
        if context:
            connection = context.wrap_socket(connection, server_side=True)
        head, body = read_request(connection)
        path = head.split(b" ", 2)[1].decode() if b" " in head else "/"
        if path == "/reply":
            connection.sendall(body)
        elif path == "/slow":
            for i in range(len(body)):
                connection.sendall(body[i:i + 1])
                time.sleep(0.01)
        else:
            if path.startswith("/large/"):
                count = int(path[7:])
                answer = (bytes(i * 7 % 251 for i in range(251)) * (count // 251 + 1))[:count]
            elif path == "/json":
                answer = b'{"method":"%s","path":"/json","received":%s}' % (head.split(b" ")[0], body)
            else:
                answer = head + body
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
        while True:
            connection, _ = listener.accept()
            threading.Thread(target=serve, args=(connection, context), daemon=True).start()

    threading.Thread(target=accept, daemon=True).start()
    return listener.getsockname()[1]


def main():
    ports = [listen(None)]
    with tempfile.TemporaryDirectory() as folder:
        authority = make_certificates(folder)
        for name in SECURE:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(os.path.join(folder, name + ".crt"), os.path.join(folder, "server.key"))
            ports.append(listen(context))
    environment = dict(os.environ, TOOLBELT_TEST_PORTS=" ".join(map(str, ports)),
                       TOOLBELT_TEST_AUTHORITY=authority.hex())
    code = subprocess.run(sys.argv[1:], env=environment).returncode
    sys.exit(code if code >= 0 else 128 - code)


if __name__ == "__main__":
    main()
