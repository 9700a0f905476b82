#!/usr/bin/env python3
"""The authority as an HTTP server: what it refuses, and that nothing which a client does keeps it from stamping."""

import random
import socket
import threading
import time

from authority_process import (QUERY, REPLY, Authority, AuthorityTest, Connection, fresh_request, main, post_octets,
                               request)
from ber import der


class Server(AuthorityTest):
    OPTIONS = ()

    def setUp(self):
        super().setUp()
        self.authority = Authority(self.folder, *self.OPTIONS).__enter__()
        self.addCleanup(self.authority.__exit__)

    def answer_to(self, octets):
        """Status and head of the answer to one request."""
        with Connection(self.authority) as connection:
            connection.send(octets)
            status, _ = connection.answer()
            return status, connection.head

    def expect_status(self, status, octets):
        got, head = self.answer_to(octets)
        self.assertEqual(got, status, head)
        self.expect_stamp(self.authority)
        return head

    def say_and_leave(self, octets):
        """Sends and closes without waiting for an answer."""
        with self.authority.connect() as connection:
            connection.sendall(octets)


class Errors(Server):
    OPTIONS = ("--max-request", 1000)

    def test_method(self):
        for method in ("GET", "PUT", "DELETE", "OPTIONS", "PATCH"):
            with self.subTest(method):
                head = self.expect_status(405, f"{method} / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 0\r\n\r\n"
                                          .encode())
                self.assertRegex(head, r"(?im)^allow: .*POST")

    def test_method_head(self):
        self.say_and_leave(b"HEAD / HTTP/1.1\r\nHost: localhost\r\n\r\n")
        self.expect_stamp(self.authority)

    def test_path(self):
        for path in ("/other", "/..", "//", "/%00", "/" + "a" * 500):
            with self.subTest(path):
                self.expect_status(404, post_octets(request(), path=path))

    def test_content_type(self):
        for content_type in ("text/plain", "application/timestamp-reply", "application/json", ""):
            with self.subTest(content_type):
                self.expect_status(415, post_octets(request(), content_type))

    def test_no_content_type(self):
        octets = post_octets(request()).replace(f"Content-Type: {QUERY}\r\n".encode(), b"")
        self.assertIn(self.answer_to(octets)[0], (400, 415))
        self.expect_stamp(self.authority)

    def test_content_type_of_the_protocol_in_other_letters_and_with_a_parameter(self):
        for content_type in ("Application/Timestamp-Query", f"{QUERY}; charset=binary", f"{QUERY};x=y"):
            with self.subTest(content_type):
                head = self.expect_status(200, post_octets(request(), content_type))
                self.assertRegex(head, f"(?im)^content-type: {REPLY}\r?$")

    def test_length_up_to_the_limit(self):
        filled = request(rest=der(0x02, bytes([1]) * 900))
        room = 1000 - len(filled)
        self.expect_status(200, post_octets(filled + bytes(room)))
        self.expect_status(413, post_octets(filled + bytes(room + 1)))

    def test_length_that_is_announced_and_never_sent(self):
        for length in ("1001", "4294967296", "18446744073709551615", "99999999999999999999999999"):
            with self.subTest(length):
                head = f"POST / HTTP/1.1\r\nHost: l\r\nContent-Type: {QUERY}\r\nContent-Length: {length}\r\n\r\n"
                self.assertIn(self.answer_to(head.encode())[0], (400, 413))
                self.expect_stamp(self.authority)

    def test_no_length(self):
        octets = f"POST / HTTP/1.1\r\nHost: l\r\nContent-Type: {QUERY}\r\n\r\n".encode()
        self.expect_status(411, octets)

    def test_lengths_that_contradict_each_other(self):
        body = request()
        octets = post_octets(body).replace(b"\r\n\r\n", b"\r\nContent-Length: 5\r\n\r\n", 1)
        self.expect_status(400, octets)
        octets = post_octets(body).replace(b"\r\n\r\n", b"\r\nTransfer-Encoding: chunked\r\n\r\n", 1)
        self.expect_status(400, octets)

    def test_length_that_is_no_number(self):
        for length in ("", "x", "-1", "1 2"):
            with self.subTest(length):
                self.say_and_leave(f"POST / HTTP/1.1\r\nHost: l\r\nContent-Type: {QUERY}\r\n"
                                   f"Content-Length: {length}\r\n\r\n".encode())
                self.expect_stamp(self.authority)

    def chunked(self, *chunks):
        head = f"POST / HTTP/1.1\r\nHost: l\r\nContent-Type: {QUERY}\r\nTransfer-Encoding: chunked\r\n\r\n".encode()
        return head + b"".join(b"%x\r\n%s\r\n" % (len(chunk), chunk) for chunk in chunks)

    def test_chunks(self):
        whole = request()
        self.expect_status(200, self.chunked(whole[:1], whole[1:20], whole[20:], b""))

    def test_chunks_beyond_the_limit(self):
        self.expect_status(413, self.chunked(*[bytes(500)] * 3, b""))

    def test_broken_chunks(self):
        head = self.chunked()
        for chunks in (b"zz\r\n", b"ffffffffffffffff\r\n", b"-5\r\nhello\r\n", b"3\r\nhello\r\n0\r\n\r\n", b"\r\n\r\n",
                       b"5\r\nhel"):
            with self.subTest(chunks):
                self.say_and_leave(head + chunks)
                self.expect_stamp(self.authority)

    def test_one_connection_for_many_requests(self):
        with Connection(self.authority) as connection:
            for _ in range(20):
                body, nonce = fresh_request()
                status, response = connection.post(body)
                self.assertEqual(status, 200)
                self.assertIn(nonce.to_bytes(8, "big"), response)

    def test_one_connection_after_an_error(self):
        """Either it is closed, or the next answer is that of the next request."""
        with Connection(self.authority) as connection:
            self.assertEqual(connection.post(request(), "text/plain")[0], 415)
            if "close" not in connection.head.lower():
                self.assertEqual(connection.post(request())[0], 200)

    def test_requests_behind_each_other_without_waiting(self):
        asked = [fresh_request() for _ in range(5)]
        with Connection(self.authority) as connection:
            connection.send(b"".join(post_octets(body) for body, _ in asked))
            for _, nonce in asked:
                status, response = connection.answer()
                self.assertEqual(status, 200)
                self.assertIn(nonce.to_bytes(8, "big"), response)

    def test_http_1_0(self):
        self.expect_status(200, post_octets(request()).replace(b"HTTP/1.1", b"HTTP/1.0"))


class Garbage(Server):
    def test_octets_that_are_no_http(self):
        samples = [b"", b"\0", b"\n", b"\r\n\r\n", b"A", b" " * 5000, b"\xff" * 5000, bytes.fromhex("160301000100"),
                   b"POST", b"POST / HTTP/9.9\r\n\r\n", b"POST /\r\n\r\n", b"POST / HTTP/1.1\r\n" + b"a" * 100000,
                   b"POST / HTTP/1.1\r\n" + b"A: b\r\n" * 20000 + b"\r\n", b"POST / HTTP/1.1\r\n: \r\n\r\n",
                   b"POST / HTTP/1.1\r\nA\0B: \0\r\n\r\n"]
        for sample in samples:
            with self.subTest(sample[:40]):
                self.say_and_leave(sample)
        self.expect_stamp(self.authority)
        self.expect_clean_stop(self.authority)

    def test_random_octets(self):
        octets = random.Random(1)
        for _ in range(200):
            self.say_and_leave(octets.randbytes(octets.choice((1, 2, 10, 100, 3000))))
        self.expect_stamp(self.authority)
        self.expect_clean_stop(self.authority)

    def test_random_bodies(self):
        """Of either exchange; each is refused or, changed where it does not matter, stamped."""
        octets = random.Random(2)
        whole = request(rest=bytes.fromhex("06032A0304 020107 0101FF"))
        with Connection(self.authority) as connection:
            for number in range(300):
                body = bytearray(whole)
                for _ in range(octets.choice((1, 1, 2, 5))):
                    body[octets.randrange(len(body))] = octets.randrange(256)
                content_type = QUERY if number % 3 else "application/octet-stream"
                status, _ = connection.post(bytes(body), content_type)
                self.assertIn(status, (200, 400))
                if "connection: close" in connection.head.lower():
                    connection.close()
                    connection = Connection(self.authority)
            connection.close()
        self.expect_stamp(self.authority)
        self.expect_clean_stop(self.authority)

    def test_half_requests_and_a_closed_connection(self):
        whole = post_octets(request())
        for size in range(1, len(whole), 5):
            self.say_and_leave(whole[:size])
        self.expect_stamp(self.authority)
        self.expect_clean_stop(self.authority)

    def test_connections_reset_while_they_are_answered(self):
        whole = post_octets(request())
        for _ in range(100):
            with self.authority.connect() as connection:
                # Closed with SO_LINGER 0 it is reset, and the answer meets a connection that is gone.
                connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, bytes.fromhex("0100000000000000"))
                connection.sendall(whole)
        self.expect_stamp(self.authority)
        self.expect_clean_stop(self.authority)

    def test_answers_that_nobody_reads(self):
        with self.authority.connect() as connection:
            connection.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 2048)
            connection.settimeout(1)
            try:
                for _ in range(5000):
                    connection.sendall(post_octets(request()))
            except OSError:
                pass  # full, or given up by the other side
            self.expect_stamp(self.authority)
        self.expect_clean_stop(self.authority)


class Patience(Server):
    OPTIONS = ("--threads", 4)

    def test_slow_client_is_served(self):
        body, nonce = fresh_request()
        octets = post_octets(body)
        with Connection(self.authority) as connection:
            for start in range(0, len(octets), 20):
                connection.send(octets[start:start + 20])
                time.sleep(0.05)
            status, response = connection.answer()
        self.assertEqual(status, 200)
        self.assertIn(nonce.to_bytes(8, "big"), response)

    def test_client_that_never_comes_to_an_end_is_cut_off(self):
        begun = time.monotonic()
        with self.authority.connect() as connection, self.assertRaises(OSError):
            connection.sendall(b"POST / HTTP/1.1\r\nHost: l\r\n")
            while time.monotonic() - begun < 20:
                connection.sendall(b"A: b\r\n")
                time.sleep(0.2)
        self.expect_stamp(self.authority)

    def test_silent_clients_hold_nobody_up_for_long(self):
        """More of them than there are threads: stamps go on, at the latest when the first have had their time."""
        half = post_octets(request())[:30]
        silent = []
        try:
            for number in range(12):
                connection = self.authority.connect()
                connection.sendall(half if number % 2 else b"")
                silent.append(connection)
            self.expect_stamp(self.authority)
        finally:
            for connection in silent:
                connection.close()
        self.expect_stamp(self.authority)
        self.expect_clean_stop(self.authority)

    def test_more_clients_than_threads(self):
        failures = []

        def stamp_often():
            try:
                for _ in range(10):
                    self.expect_stamp(self.authority)
            except BaseException as failure:
                failures.append(failure)

        threads = [threading.Thread(target=stamp_often) for _ in range(32)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(failures, [])
        self.expect_clean_stop(self.authority)


if __name__ == "__main__":
    main()
