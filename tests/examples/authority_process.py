"""The authority of examples/authority as its tests start it, ask it and stop it.

The test programs are called alike:

    authority_<subject>_test.py PROGRAMS SOURCE PKI [TEST...]

PROGRAMS is the directory of the built programs, SOURCE the top of the tree, PKI what tests/support/make_pki.sh made.
"""

import hashlib
import os
import pathlib
import re
import secrets
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

from ber import der, parse

PROGRAMS, SOURCE, PKI = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
POLICY = "2.999.1"
QUERY = "application/timestamp-query"
REPLY = "application/timestamp-reply"

SHA256 = bytes.fromhex("0609608648016503040201")  # 2.16.840.1.101.3.4.2.1


def request(version=1, algorithm=SHA256, digest=hashlib.sha256(b"data").digest(), rest=b""):
    """A TimeStampReq (RFC 3161 2.4.1): its version and imprint, and `rest` behind them."""
    imprint = der(0x30, der(0x30, algorithm), der(0x04, digest))
    return der(0x30, der(0x02, bytes([version])), imprint, rest)


def fresh_request():
    """A request with a nonce, and its nonce."""
    nonce = secrets.randbits(62) | 1 << 62
    return request(rest=der(0x02, nonce.to_bytes(8, "big"))), nonce


def tst_info(response):
    """The elements of the TSTInfo (RFC 3161 2.4.2) in a response that grants."""
    signed_data = parse(response)[1][1][0]
    return parse(signed_data[2][1][0].content)


def serial_number(response):
    return int.from_bytes(tst_info(response)[3].content, "big")


class Authority:
    """A process of the authority, on a free port unless told otherwise. Its serial numbers and what it says are in
    `folder`."""

    def __init__(self, folder, *options, key=PKI / "tsa_p256.key", certificate=PKI / "tsa_p256.pem", serials=None,
                 address="127.0.0.1", port=0, environment=None):
        self.folder = pathlib.Path(folder)
        serials = serials or self.folder / "serials"
        number = len(list(self.folder.glob("*.log")))
        self.log = self.folder / f"{number}.log"
        self.error_log = self.folder / f"{number}.errors"
        command = [PROGRAMS / "authority", "--key", key, "--certificate", certificate, "--chain", PKI / "ca.pem",
                   "--policy", POLICY, "--accuracy", 1, "--serials", serials, "--address", address, "--port", port,
                   *options]
        with open(self.log, "wb") as log, open(self.error_log, "wb") as errors:
            self.process = subprocess.Popen([str(part) for part in command], cwd=self.folder, stdin=subprocess.DEVNULL,
                                            stdout=log, stderr=errors, env={**os.environ, **(environment or {})})
        self.url = None
        self.port = None

    def __enter__(self):
        try:
            self.wait_until_ready()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()

    def wait_until_ready(self):
        deadline = time.monotonic() + 20
        while time.monotonic() < deadline:
            ready = re.match(r"listening on (http://127\.0\.0\.1:(\d+)/)\n", self.log.read_text())
            if ready:
                self.url, self.port = ready[1], int(ready[2])
                return
            if self.process.poll() is not None:
                break
            time.sleep(0.01)
        raise AssertionError(f"the authority does not listen: {self.log.read_text()}{self.errors()}")

    def errors(self):
        return self.error_log.read_text(errors="replace")

    def stamp_lines(self):
        """What it says of its stamps, a line each; the last ends in a newline as well."""
        text = self.log.read_text()
        assert text.endswith("\n"), text
        return text.splitlines()[1:]

    def stop(self):
        """Its exit status after SIGTERM."""
        self.process.send_signal(signal.SIGTERM)
        return self.process.wait(timeout=25)

    def refusals(self):
        """What it says of refused requests: address, reason and text of each."""
        line = r"authority: \d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z refused (\S+) (\S+): (.+)"
        return [re.fullmatch(line, said).groups() for said in self.errors().splitlines()]

    def kill(self):
        self.process.kill()
        self.process.wait()

    def connect(self, timeout=20):
        return socket.create_connection(("127.0.0.1", self.port), timeout)

    def ask(self, body, content_type=QUERY):
        """Status and body of the answer to one POST over a connection of its own."""
        with Connection(self) as connection:
            return connection.post(body, content_type)


class Connection:
    """A connection of HTTP/1.1 for one request after the other, by hand, so that nothing is tried twice."""

    def __init__(self, authority, timeout=20):
        self.socket = authority.connect(timeout)
        self.received = b""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        self.socket.close()

    def send(self, octets):
        self.socket.sendall(octets)

    def post(self, body, content_type=QUERY):
        self.send(post_octets(body, content_type))
        return self.answer()

    def receive(self):
        part = self.socket.recv(65536)
        self.received += part
        return bool(part)

    def answer(self):
        """Status and body of the next answer. `NoAnswer` when the connection ends before its first octet,
        AssertionError when it ends later."""
        while b"\r\n\r\n" not in self.received:
            try:
                more = self.receive()
            except ConnectionResetError:
                more = False
            if not more and not self.received:
                raise NoAnswer
            assert more, f"half an answer: {self.received!r}"
        head, self.received = self.received.split(b"\r\n\r\n", 1)
        self.head = head.decode("latin-1")
        length = re.search(r"(?im)^content-length: *(\d+)\r?$", self.head)
        assert length, self.head
        size = int(length[1])
        while len(self.received) < size:
            assert self.receive(), f"half an answer: {head!r} and {len(self.received)} of {size} octets"
        body, self.received = self.received[:size], self.received[size:]
        return int(head.split()[1]), body


class NoAnswer(Exception):
    """The connection was closed before any octet of an answer."""


def post_octets(body, content_type=QUERY, path="/"):
    head = (f"POST {path} HTTP/1.1\r\nHost: localhost\r\nContent-Type: {content_type}\r\n"
            f"Content-Length: {len(body)}\r\n\r\n")
    return head.encode() + body


class AuthorityTest(unittest.TestCase):
    """A folder for each test, and what all of them look for."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_in_folder(self, *command, **options):
        return subprocess.run([str(part) for part in command], cwd=self.folder, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, check=False, timeout=60,
                              env={**os.environ, "no_proxy": "127.0.0.1", "NO_PROXY": "127.0.0.1"}, **options)

    def expect_success(self, *command):
        done = self.run_in_folder(*command)
        self.assertEqual(done.returncode, 0, f"{command}: {done.stdout}{done.stderr}")
        return done.stdout

    def expect_stamp(self, authority):
        """The authority still stamps."""
        body, nonce = fresh_request()
        status, response = authority.ask(body)
        self.assertEqual(status, 200)
        self.assertEqual(parse(response)[0][0].content, b"\0", response.hex())
        self.assertIn(der(0x02, nonce.to_bytes(8, "big")), response)
        return response

    def expect_clean_stop(self, authority):
        self.assertEqual(authority.stop(), 0, authority.errors())


def main():
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]], verbosity=2)
