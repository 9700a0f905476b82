#!/usr/bin/env python3
"""scripts/load on a small scale, and that the load generator notices an authority that is wrong."""

import http.server
import os
import shutil
import subprocess
import threading

from authority_process import PKI, PROGRAMS, REPLY, SOURCE, AuthorityTest, main

LOAD = PROGRAMS.parent / "bench/authority_load"


class WrongAuthority(http.server.ThreadingHTTPServer):
    """Answers with OpenSSL's command, in a way that a test chooses."""

    def __init__(self, folder, answer):
        super().__init__(("127.0.0.1", 0), Handler)
        self.folder = folder
        self.answer = answer
        self.lock = threading.Lock()
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def stamp(self, query):
        (self.folder / "query").write_bytes(query)
        subprocess.run(["openssl", "ts", "-reply", "-config", "tsa.cnf", "-section", "tsa_p256", "-queryfile", "query",
                        "-out", "reply"], cwd=self.folder, capture_output=True, check=True)
        return (self.folder / "reply").read_bytes()


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_POST(self):
        query = self.rfile.read(int(self.headers["Content-Length"]))
        with self.server.lock:
            status, body = self.server.answer(self.server, query)
        self.send_response(status)
        self.send_header("Content-Type", REPLY)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass


class LoadGenerator(AuthorityTest):
    def test_small_load(self):
        """Growth is for long runs: the first stamps touch memory, and sanitizers keep what was freed."""
        for key in ("p256", "rsa2048"):
            with self.subTest(key):
                printed = self.expect_success(SOURCE / "scripts/load", "--key", key, "--build", PROGRAMS.parent,
                                              "--stamps", 500, "--warm-up", 100, "--raw-time", 100, "--growth", 1000)
                self.assertIn("600 stamps checked, no serial number twice", printed)
                for connections in (1, 2, 8, 64):
                    self.assertRegex(printed, rf"(?m)^ +{connections} +125 +\d+ +\d+% +\d+\.\d\d +\d+\.\d\d +\d+$")
                self.assertRegex(printed, r"resident memory of the authority: \d+\.\d MiB after 100 stamps, "
                                          r"\d+\.\d MiB after 500 more")

    def test_misused(self):
        for options in (["--key", "dsa"], ["--key"], ["--build"]):
            with self.subTest(options):
                done = self.run_in_folder(SOURCE / "scripts/load", *options)
                self.assertEqual(done.returncode, 2)
                self.assertIn("usage: scripts/load", done.stderr)

    def load(self, answer, *options):
        """The load generator on an authority that gives `answer`."""
        folder = self.folder / "pki"
        if not folder.exists():
            shutil.copytree(PKI, folder, ignore=shutil.ignore_patterns("tokens", "gost"))
        with WrongAuthority(folder, answer) as authority:
            done = self.run_in_folder(LOAD, "--port", authority.server_address[1], "--certificate",
                                      PKI / "tsa_p256.pem", "--key", PKI / "tsa_p256.key", "--process", os.getpid(),
                                      "--stamps", 8, "--warm-up", 2, "--raw-time", 10, "--connections", "1,2",
                                      *options)
            authority.shutdown()
        return done

    def expect_noticed(self, reason, answer, *options):
        done = self.load(answer, *options)
        self.assertEqual(done.returncode, 1, done.stdout + done.stderr)
        self.assertIn(reason, done.stderr)

    def test_good_authority_of_another_make(self):
        done = self.load(lambda authority, query: (200, authority.stamp(query)), "--growth", 1000)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("10 stamps checked, no serial number twice", done.stdout)

    def test_answer_to_another_request(self):
        first = []

        def repeat(authority, query):
            first.append(first[0] if first else authority.stamp(query))
            return 200, first[0]

        self.expect_noticed("the stamp is for another message", repeat)

    def test_other_nonce(self):
        def change_nonce(authority, query):
            return 200, authority.stamp(query[:-4] + bytes([query[-4] ^ 1]) + query[-3:])

        self.expect_noticed("the nonce is not that of the request", change_nonce)

    def test_serial_number_that_comes_twice(self):
        def forget(authority, query):
            (authority.folder / "serial_p256").unlink(missing_ok=True)
            return 200, authority.stamp(query)

        self.expect_noticed("came twice", forget)

    def test_signature_that_does_not_hold(self):
        def damage(authority, query):
            stamp = authority.stamp(query)
            return 200, stamp[:-1] + bytes([stamp[-1] ^ 1])

        self.expect_noticed("the signature does not hold", damage)

    def test_rejection(self):
        self.expect_noticed("not granted: status 2", lambda *_: (200, bytes.fromhex("30053003020102")))

    def test_octets_that_are_no_response(self):
        self.expect_noticed("an answer cannot be read: CRYPT_E_ASN1_INTERNAL", lambda *_: (200, b"garbage"))

    def test_error_of_the_server(self):
        self.expect_noticed("answered with HTTP/1.1 503", lambda *_: (503, b""))

    def test_growth(self):
        kept = []

        def grow(authority, query):
            kept.append(os.urandom(1 << 20))
            return 200, authority.stamp(query)

        self.expect_noticed("the authority grew", grow, "--growth", 5)

    def test_nobody_there(self):
        done = self.run_in_folder(LOAD, "--port", 1, "--certificate", PKI / "tsa_p256.pem", "--key",
                                  PKI / "tsa_p256.key", "--process", os.getpid(), "--raw-time", 10)
        self.assertEqual(done.returncode, 1)
        self.assertIn("cannot connect to 127.0.0.1:1", done.stderr)


if __name__ == "__main__":
    main()
