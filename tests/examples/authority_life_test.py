#!/usr/bin/env python3
"""The authority as a process: how it starts and stops, its serial numbers, its keys, and what it says."""

import collections
import re
import shutil
import signal
import threading
import time

from authority_process import (PKI, Authority, AuthorityTest, Connection, NoAnswer, fresh_request, main, serial_number,
                               tst_info)


class Life(AuthorityTest):
    def start(self, *options, **named):
        authority = Authority(self.folder, *options, **named)
        self.addCleanup(authority.__exit__)
        return authority.__enter__()

    def expect_no_start(self, *options, **named):
        """It says why and ends, before it listens. Returns what it said."""
        authority = Authority(self.folder, *options, **named)
        self.addCleanup(authority.__exit__)
        authority.process.wait(timeout=20)
        self.assertEqual(authority.process.returncode, 1, authority.errors())
        self.assertEqual(authority.log.read_text(), "")
        self.assertRegex(authority.errors(), r"\Aauthority: [^\n]+\n\Z")
        return authority.errors()


class Client(threading.Thread):
    """Asks over one connection after the other until there is nobody to ask."""

    def __init__(self, authority, counted=None):
        super().__init__()
        self.authority = authority
        self.serials = []
        self.failure = None
        self.closed_without_answer = 0
        self.counted = counted

    def run(self):
        try:
            while self.stamp_until_closed():
                pass
        except BaseException as failure:
            self.failure = failure

    def stamp_until_closed(self):
        """Whether there is somebody to connect to."""
        try:
            connection = Connection(self.authority)
        except OSError:
            return False
        with connection:
            try:
                while True:
                    self.stamp(connection)
            except (NoAnswer, ConnectionResetError, BrokenPipeError):
                self.closed_without_answer += 1
        return True

    def stamp(self, connection):
        body, nonce = fresh_request()
        status, response = connection.post(body)
        assert status == 200, status
        assert nonce.to_bytes(8, "big") in response
        self.serials.append(serial_number(response))
        if self.counted is not None:
            self.counted.release()


class Termination(Life):
    def test_answers_what_it_has_begun(self):
        """64 clients at full speed: each answer that began came whole, each other request had none of it."""
        authority = self.start()
        counted = threading.Semaphore(0)
        clients = [Client(authority, counted) for _ in range(64)]
        for client in clients:
            client.start()
        for _ in range(200):
            self.assertTrue(counted.acquire(timeout=20))
        self.assertEqual(authority.stop(), 0, authority.errors())
        for client in clients:
            client.join(25)
            self.assertFalse(client.is_alive())
            self.assertIsNone(client.failure)
        serials = [serial for client in clients for serial in client.serials]
        self.assertEqual(len(set(serials)), len(serials))
        self.assertGreaterEqual(len(authority.stamp_lines()), len(serials))

    def test_request_that_is_on_its_way_is_answered(self):
        """It has been accepted, its head has been read: the rest comes while the authority ends."""
        authority = self.start()
        body, nonce = fresh_request()
        with Connection(authority) as connection:
            connection.send(f"POST / HTTP/1.1\r\nHost: l\r\nContent-Type: application/timestamp-query\r\n"
                            f"Content-Length: {len(body)}\r\n\r\n".encode() + body[:10])
            time.sleep(0.3)
            authority.process.send_signal(signal.SIGTERM)
            time.sleep(0.3)
            connection.send(body[10:])
            status, response = connection.answer()
        self.assertEqual(status, 200)
        self.assertIn(nonce.to_bytes(8, "big"), response)
        self.assertEqual(authority.process.wait(timeout=20), 0)

    def test_idle_connections_do_not_keep_it(self):
        authority = self.start()
        idle = [authority.connect() for _ in range(10)]
        begun = time.monotonic()
        self.assertEqual(authority.stop(), 0)
        self.assertLess(time.monotonic() - begun, 20)
        for connection in idle:
            connection.close()

    def test_interrupt_is_an_end_as_well(self):
        authority = self.start()
        self.expect_stamp(authority)
        authority.process.send_signal(signal.SIGINT)
        self.assertEqual(authority.process.wait(timeout=20), 0, authority.errors())

    def test_port_is_free_at_once(self):
        authority = self.start()
        self.expect_stamp(authority)
        port = authority.port
        self.assertEqual(authority.stop(), 0)
        self.expect_stamp(self.start(port=port))


class SerialNumbers(Life):
    def stamps_of(self, authority, clients, at_least):
        """Serial numbers that `clients` clients get until `at_least` are there and the authority is killed."""
        counted = threading.Semaphore(0)
        threads = [Client(authority, counted) for _ in range(clients)]
        for thread in threads:
            thread.start()
        for _ in range(at_least):
            self.assertTrue(counted.acquire(timeout=20))
        authority.kill()
        for thread in threads:
            thread.join(25)
        # A connection may break within an answer when the process is killed; wrong answers are another matter.
        failures = [thread.failure for thread in threads
                    if thread.failure and "half an answer" not in str(thread.failure)
                    and not isinstance(thread.failure, OSError)]
        self.assertEqual(failures, [])
        return [serial for thread in threads for serial in thread.serials]

    def test_do_not_repeat_after_a_kill(self):
        serials = []
        for clients in (1, 2, 8, 16, 16, 1, 8, 16):
            serials += self.stamps_of(self.start(), clients, 60)
        repeated = [serial for serial, count in collections.Counter(serials).items() if count > 1]
        self.assertEqual(repeated, [])
        self.assertGreaterEqual(len(serials), 8 * 60)

    def test_do_not_repeat_when_it_is_killed_at_once(self):
        serials = []
        for _ in range(15):
            authority = self.start()
            serials.append(serial_number(self.expect_stamp(authority)))
            authority.kill()
        self.assertEqual(len(set(serials)), len(serials))

    def test_do_not_repeat_after_an_orderly_end(self):
        serials = []
        for _ in range(4):
            authority = self.start()
            serials += [serial_number(self.expect_stamp(authority)) for _ in range(5)]
            self.expect_clean_stop(authority)
        self.assertEqual(len(set(serials)), len(serials))

    def test_are_positive_and_fit_into_twenty_octets(self):
        authority = self.start()
        for _ in range(20):
            content = tst_info(self.expect_stamp(authority))[3].content
            self.assertLess(content[0], 0x80, "positive (RFC 3161 2.4.2)")
            self.assertLessEqual(len(content), 20)
            self.assertFalse(len(content) > 1 and content[0] == 0 and content[1] < 0x80, "DER: no octet too many")

    def test_second_process_on_the_same_file_is_refused(self):
        authority = self.start()
        self.expect_no_start()
        self.expect_stamp(authority)
        self.expect_clean_stop(authority)
        self.expect_stamp(self.start())

    def test_second_process_by_another_name_of_the_file_is_refused(self):
        authority = self.start()
        (self.folder / "link").symlink_to(self.folder / "serials")
        self.expect_no_start(serials=self.folder / "link")
        self.expect_no_start(serials=f"{self.folder}/./serials")
        self.expect_stamp(authority)

    def test_file_in_the_current_folder(self):
        for _ in range(2):
            authority = self.start(serials="bare_name")
            self.expect_stamp(authority)
            self.expect_clean_stop(authority)
        self.assertTrue((self.folder / "bare_name").exists())

    def test_damaged_file_is_refused_and_left_as_it_is(self):
        authority = self.start()
        self.expect_stamp(authority)
        authority.kill()
        file = self.folder / "serials"
        good = file.read_bytes()
        damaged = {"empty": b"", "cut": good[:len(good) // 2], "garbage": b"garbage\n", "octets": bytes(64),
                   "longer": good + b"1", "text before": b"x" + good}
        for name, contents in damaged.items():
            with self.subTest(name):
                file.write_bytes(contents)
                self.expect_no_start()
                self.assertEqual(file.read_bytes(), contents)
        file.write_bytes(good)
        self.expect_stamp(self.start())

    def test_place_where_no_file_can_be_is_refused(self):
        self.expect_no_start(serials=self.folder / "missing" / "serials")
        self.expect_no_start(serials=self.folder)
        self.expect_no_start(serials="/dev/full")
        self.expect_no_start(serials=f"{self.folder}/missing/")


class Keys(Life):
    def test_encrypted_with_a_password_file(self):
        for contents in ("secret", "secret\n"):
            with self.subTest(contents):
                (self.folder / "password").write_text(contents)
                authority = self.start("--password-file", self.folder / "password",
                                       key=PKI / "tsa_p256_encrypted.key")
                self.expect_stamp(authority)
                self.expect_clean_stop(authority)

    def test_encrypted_with_a_wrong_password_or_none(self):
        (self.folder / "password").write_text("wrong password\n")
        said = self.expect_no_start("--password-file", self.folder / "password", key=PKI / "tsa_p256_encrypted.key")
        self.assertNotIn("wrong password", said, "a password is nobody's to read")
        self.expect_no_start(key=PKI / "tsa_p256_encrypted.key")
        self.expect_no_start("--password-file", self.folder / "missing", key=PKI / "tsa_p256_encrypted.key")

    def test_of_another_certificate(self):
        self.expect_no_start(key=PKI / "other_tsa.key")

    def test_missing_files(self):
        self.expect_no_start(key=self.folder / "missing.key")
        self.expect_no_start(certificate=self.folder / "missing.pem")
        self.expect_no_start("--chain", self.folder / "missing.pem")

    def test_certificate_that_is_none(self):
        self.expect_no_start(certificate=PKI / "tsa_p256.key")

    def test_certificate_that_is_not_for_stamps(self):
        """RFC 3161 2.3: the extended key usage is critical, and timeStamping alone."""
        self.expect_no_start(key=PKI / "ca.key", certificate=PKI / "ca.pem")
        for usage in ("timeStamping", "critical,timeStamping,codeSigning", "critical,codeSigning"):
            with self.subTest(usage):
                self.certify("-addext", f"extendedKeyUsage={usage}")
                self.expect_no_start(key=PKI / "tsa_p256.key", certificate=self.folder / "own.pem")
        self.certify("-addext", "extendedKeyUsage=critical,timeStamping")
        self.expect_stamp(self.start(key=PKI / "tsa_p256.key", certificate=self.folder / "own.pem"))

    def certify(self, *options):
        self.expect_success("openssl", "req", "-x509", "-new", "-key", PKI / "tsa_p256.key", "-subj", "/CN=Own",
                            *options, "-out", "own.pem")

    def test_certificate_that_is_over(self):
        self.expect_success("openssl", "req", "-new", "-key", PKI / "tsa_p256.key", "-subj", "/CN=Own", "-out",
                            "own.csr")
        (self.folder / "own.cnf").write_text("extendedKeyUsage = critical,timeStamping\n")
        self.expect_success("openssl", "x509", "-req", "-in", "own.csr", "-signkey", PKI / "tsa_p256.key", "-days",
                            "-1", "-extfile", "own.cnf", "-out", "own.pem")
        self.expect_no_start(certificate=self.folder / "own.pem")

    def token_environment(self):
        """Of a process with a copy of the tokens, which SoftHSM writes to even when it only reads their keys."""
        tokens = PKI / "tokens"
        if (tokens / "absent").exists():
            self.skipTest((tokens / "absent").read_text())
        store = self.folder / "store"
        shutil.copytree(tokens / "store", store)
        configuration = self.folder / "softhsm2.conf"
        configuration.write_text(f"directories.tokendir = {store}\nobjectstore.backend = file\nlog.level = ERROR\n")
        return {"SOFTHSM2_CONF": str(configuration)}

    def token_key(self, attributes, query=""):
        module = (PKI / "tokens/module").read_text().strip()
        return f"pkcs11:{attributes}?module-path={module}{query}"

    def test_on_a_token(self):
        authority = self.start(key=self.token_key("token=signer;object=ec;type=private", "&pin-value=1234"),
                               environment=self.token_environment())
        clients = [threading.Thread(target=self.expect_stamp, args=[authority]) for _ in range(8)]
        for client in clients:
            client.start()
        for client in clients:
            client.join()
        self.assertEqual(len(authority.stamp_lines()), 8)
        self.expect_clean_stop(authority)

    def test_on_a_token_with_its_pin_in_a_file(self):
        environment = self.token_environment()
        (self.folder / "pin").write_text("1234\n")
        authority = self.start("--password-file", self.folder / "pin", key=self.token_key("token=signer;object=ec"),
                               environment=environment)
        self.expect_stamp(authority)
        self.expect_clean_stop(authority)

    def test_on_a_token_with_a_wrong_pin(self):
        said = self.expect_no_start(key=self.token_key("token=signer;object=ec", "&pin-value=98765"),
                                    environment=self.token_environment())
        self.assertNotIn("98765", said)


class Misuse(Life):
    def test_options(self):
        for option, value in (("--threads", "0"), ("--threads", "x"), ("--threads", "-1"), ("--max-request", "0"),
                              ("--hash", "MD5"), ("--signature-hash", "MD5"), ("--policy", "no oid"),
                              ("--nonsense", "1")):
            with self.subTest(option, value=value):
                self.expect_no_start(option, value)

    def test_port_that_is_taken(self):
        authority = self.start()
        self.expect_no_start(port=authority.port, serials=self.folder / "others")
        self.expect_stamp(authority)

    def test_address_of_another_machine(self):
        self.expect_no_start(address="192.0.2.1")


class Log(Life):
    def test_one_whole_line_a_stamp(self):
        """16 clients at once, and every serial number in one line of the one form."""
        authority = self.start()
        serials = []
        failures = []

        def stamp_often():
            try:
                with Connection(authority) as connection:
                    for _ in range(25):
                        status, response = connection.post(fresh_request()[0])
                        assert status == 200
                        serials.append(serial_number(response))
            except BaseException as failure:
                failures.append(failure)

        clients = [threading.Thread(target=stamp_often) for _ in range(16)]
        for client in clients:
            client.start()
        for client in clients:
            client.join()
        self.assertEqual(failures, [])
        self.expect_clean_stop(authority)
        fields = [self.fields_of(line) for line in authority.stamp_lines()]
        self.assertEqual(sorted(int(line["serial"], 16) for line in fields), sorted(serials))
        self.assertEqual({line["address"] for line in fields}, {"127.0.0.1"})

    def fields_of(self, line):
        form = (r"(?P<time>\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z) rfc3161 (?P<serial>[0-9a-f]+) "
                r"(?P<policy>[0-9.]+) (?P<hash>\S+) (?P<imprint>[0-9a-f]+) (?P<address>[0-9.]+)")
        matched = re.fullmatch(form, line)
        self.assertTrue(matched, line)
        return matched.groupdict()

    def test_line_says_what_the_stamp_says(self):
        authority = self.start()
        response = self.expect_stamp(authority)
        said = self.fields_of(*authority.stamp_lines())
        info = tst_info(response)
        generated = info[4].content.decode()
        self.assertEqual(re.sub(r"[-:TZ]", "", said["time"])[:14], generated[:14])
        self.assertEqual(int(said["serial"], 16), serial_number(response))
        self.assertEqual((said["policy"], said["hash"]), ("2.999.1", "sha256"))
        self.assertEqual(bytes.fromhex(said["imprint"]), info[2][1].content)

    def test_refusals_have_a_line_each(self):
        authority = self.start()
        self.assertEqual(authority.ask(b"garbage")[0], 200)
        self.assertEqual(authority.ask(b"garbage", "text/plain")[0], 415)
        self.assertEqual(authority.ask(b"garbage", "application/octet-stream")[0], 400)
        self.expect_clean_stop(authority)
        said = [(address, reason) for address, reason, _ in authority.refusals()]
        self.assertEqual(said, [("127.0.0.1", "badDataFormat"), ("127.0.0.1", "415"), ("127.0.0.1", "400")])
        self.assertEqual(authority.stamp_lines(), [])

    def test_client_writes_no_line_of_its_own(self):
        authority = self.start()
        with Connection(authority) as connection:
            connection.send(b"POST /a%0Aauthority:%20forged HTTP/1.1\r\nHost: l\r\nContent-Type: a\x0bb\x1b[2J\r\n"
                            b"Content-Length: 0\r\n\r\n")
            connection.answer()
        self.expect_clean_stop(authority)
        self.assertEqual(len(authority.refusals()), 1)
        self.assertTrue(authority.errors().strip().isprintable())


if __name__ == "__main__":
    main()
