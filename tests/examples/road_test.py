#!/usr/bin/env python3
"""The example programs from a request to a checked stamp, with OpenSSL's commands as the other side.

    road_test.py PROGRAMS SOURCE PKI [TEST...]

PROGRAMS is the directory of the built programs, SOURCE the top of the tree, PKI what tests/support/make_pki.sh made.
"""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAMS, SOURCE, PKI = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])

SHA256 = bytes.fromhex("0609608648016503040201")  # 2.16.840.1.101.3.4.2.1
POLICY = "2.999.1"


def der(tag, *contents):
    """One element with a length of one octet."""
    content = b"".join(contents)
    assert len(content) < 128
    return bytes([tag, len(content)]) + content


def request(version=1, algorithm=SHA256, digest=bytes(32), *rest):
    """A TimeStampReq (RFC 3161 2.4.1) of its first elements and `rest`."""
    imprint = der(0x30, der(0x30, algorithm), der(0x04, digest))
    return der(0x30, der(0x02, bytes([version])), imprint, *rest)


class Road(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.write("file", b"what is stamped")

    def write(self, name, contents):
        (self.folder / name).write_bytes(contents)

    def run_in_folder(self, *command):
        return subprocess.run([str(part) for part in command], cwd=self.folder, capture_output=True, text=True,
                              check=False, timeout=60)

    def expect_success(self, *command):
        done = self.run_in_folder(*command)
        self.assertEqual(done.returncode, 0, f"{command}: {done.stdout}{done.stderr}")
        return done.stdout

    def expect_failure(self, reason, *command):
        """Any failure is one line on standard error, and exit status 1."""
        done = self.run_in_folder(*command)
        self.assertEqual(done.returncode, 1, done.stdout + done.stderr)
        self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)
        self.assertIn(reason, done.stderr)

    def ask(self, *options):
        return self.expect_success(PROGRAMS / "make_request", *options, "file", "request.tsq")

    def answer(self, kind="p256"):
        return self.expect_success(PROGRAMS / "answer_request", "request.tsq", "response.tsr", PKI / f"tsa_{kind}.pem",
                                   PKI / f"tsa_{kind}.key")

    def check(self, kind="p256"):
        return self.expect_success(PROGRAMS / "check_response", "request.tsq", "response.tsr", PKI / f"tsa_{kind}.pem")

    def expect_unchecked(self, reason, certificate=PKI / "tsa_p256.pem"):
        self.expect_failure(reason, PROGRAMS / "check_response", "request.tsq", "response.tsr", certificate)

    def verify_with_openssl(self):
        verified = self.expect_success("openssl", "ts", "-verify", "-queryfile", "request.tsq", "-in", "response.tsr",
                                       "-CAfile", PKI / "ca.pem")
        self.assertIn("Verification: OK", verified)

    def status_by_openssl(self):
        return self.expect_success("openssl", "ts", "-reply", "-in", "response.tsr", "-text")


class Granted(Road):
    def test_stamp_of_each_kind_of_key_holds_here_and_for_openssl(self):
        for kind in ("p256", "p384", "rsa2048", "pss"):
            with self.subTest(kind):
                self.ask("--policy", POLICY)
                self.answer(kind)
                self.check(kind)
                self.verify_with_openssl()

    def test_hash_of_each_algorithm_is_stamped(self):
        for name in ("SHA256", "SHA384", "SHA512", "SHA3-256", "SHA3-384", "SHA3-512"):
            with self.subTest(name):
                self.ask("--hash", name)
                self.answer()
                self.assertIn(f"{name} ", self.check())

    def test_stamp_is_printed_for_people(self):
        asked = self.ask("--policy", POLICY)
        granted = self.answer()
        printed = dict(line.split(None, 1) for line in self.check().splitlines())
        self.assertRegex(printed["Time"], r"^\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d(\.\d+)? UTC$")
        self.assertEqual(printed["Policy"], POLICY)
        self.assertEqual(printed["Accuracy"], "1.000000 s")
        self.assertIn(f"nonce {printed['Nonce']}", asked)
        self.assertIn(f"serial number {printed['Serial']}", granted)
        self.assertIn("CN=Test TSA P-256", printed["Authority"])
        digest = self.expect_success("openssl", "dgst", "-sha256", "-r", "file").split()[0]
        self.assertEqual(printed["Hash"], f"SHA256 {digest.upper()}")

    def test_nonces_and_serial_numbers_are_fresh(self):
        self.assertNotEqual(self.ask(), self.ask())
        self.assertNotEqual(self.answer(), self.answer())

    def test_request_of_openssl_is_answered(self):
        self.expect_success("openssl", "ts", "-query", "-data", "file", "-sha512", "-cert", "-tspolicy", POLICY, "-out",
                            "request.tsq")
        self.answer()
        self.verify_with_openssl()
        self.check()

    def test_certificates_are_sent_only_when_asked_for(self):
        self.expect_success("openssl", "ts", "-query", "-data", "file", "-sha256", "-out", "request.tsq")
        self.answer()
        self.expect_success("openssl", "ts", "-reply", "-in", "response.tsr", "-token_out", "-out", "token.der")
        listed = self.expect_success("openssl", "pkcs7", "-inform", "DER", "-in", "token.der", "-print_certs")
        self.assertEqual(listed.strip(), "")

    def test_stamp_of_openssl_is_checked(self):
        self.ask("--policy", "1.2.3.4.1")
        shutil.copytree(PKI, self.folder / "authority")
        done = subprocess.run(["openssl", "ts", "-reply", "-config", "tsa.cnf", "-section", "tsa_p256", "-queryfile",
                               "../request.tsq", "-out", "../response.tsr"], cwd=self.folder / "authority",
                              capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("Accuracy    1.500000 s", self.check())

    def test_program_of_the_readme_runs(self):
        shutil.copy(PKI / "tsa_p256.key", self.folder / "tsa.key")
        shutil.copy(PKI / "tsa_p256.der", self.folder / "tsa.der")
        self.assertIn("signature holds", self.expect_success(PROGRAMS / "one_stamp"))
        program = (SOURCE / "examples/one_stamp.cpp").read_text(encoding="utf-8")
        self.assertIn(program, (SOURCE / "README.md").read_text(encoding="utf-8"))


class Refused(Road):
    def expect_rejection(self, reason, contents):
        self.write("request.tsq", contents)
        self.assertIn(f"rejected ({reason})", self.answer())
        self.assertFalse((self.folder / "token").exists())
        return self.status_by_openssl()

    def test_unknown_hash(self):
        self.assertIn("unrecognized or unsupported algorithm identifier",
                      self.expect_rejection("badAlg", request(1, bytes.fromhex("06052B0E03021A"), bytes(20))))

    def test_octets_that_are_no_request(self):
        for contents in (b"", b"garbage", request()[:-1], request(1)[:20]):
            with self.subTest(contents.hex()):
                self.assertIn("the data submitted has the wrong format",
                              self.expect_rejection("badDataFormat", contents))

    def test_hash_of_another_length(self):
        self.expect_rejection("badDataFormat", request(1, SHA256, bytes(31)))
        self.expect_rejection("badDataFormat", request(1, SHA256, bytes(33)))

    def test_other_version(self):
        self.expect_rejection("badRequest", request(2))

    def test_other_policy(self):
        self.assertIn("the requested TSA policy is not supported",
                      self.expect_rejection("unacceptedPolicy", request(1, SHA256, bytes(32), bytes.fromhex("06022A03"))))

    def test_any_extension(self):
        extension = der(0x30, bytes.fromhex("06032A0304"), der(0x04, bytes.fromhex("0500")))
        self.assertIn("the requested extension is not supported",
                      self.expect_rejection("unacceptedExtension", request(1, SHA256, bytes(32), der(0xA0, extension))))

    def test_rejection_is_reported_to_the_client(self):
        self.write("request.tsq", request(1, SHA256, bytes(32), bytes.fromhex("06022A03")))
        self.answer()
        self.expect_unchecked("not granted (status 2) unacceptedPolicy: the policy here is 2.999.1")

    def test_plain_request_is_not_refused(self):
        self.write("request.tsq", request())
        self.assertIn("granted", self.answer())


class TroubleOfTheAuthority(Road):
    def expect_trouble(self, reason, certificate, key):
        self.ask()
        self.expect_failure(reason, PROGRAMS / "answer_request", "request.tsq", "response.tsr", certificate, key)
        self.assertIn("the request cannot be handled due to system failure", self.status_by_openssl())
        self.expect_unchecked("systemFailure")

    def test_missing_key(self):
        self.expect_trouble("NTE_BAD_KEYSET (0x80090016)", PKI / "tsa_p256.pem", "missing.key")

    def test_key_of_another_certificate(self):
        self.expect_trouble("NTE_BAD_PUBLIC_KEY (0x80090015)", PKI / "tsa_p256.pem", PKI / "other_tsa.key")

    def test_missing_certificate(self):
        self.expect_trouble("missing.pem: ERROR_FILE_NOT_FOUND (0x80070002)", "missing.pem", PKI / "tsa_p256.key")

    def test_file_without_certificate(self):
        self.expect_trouble("no certificate in it", PKI / "tsa_p256.key", PKI / "tsa_p256.key")


class Unchecked(Road):
    def test_stamp_of_another_request(self):
        self.ask()
        self.answer()
        self.ask()
        self.expect_unchecked("the nonce is not that of the request")
        self.write("file", b"another file")
        self.ask()
        self.expect_unchecked("the stamp is for another message")

    def test_other_policy_than_asked_for(self):
        self.ask()
        without = (self.folder / "request.tsq").read_bytes()
        self.answer()
        # The same request with a policy behind its imprint, which stands behind the three octets of the version.
        imprint_end = 5 + 2 + without[6]
        policy = bytes.fromhex("06022A03")
        self.write("request.tsq", der(0x30, without[2:imprint_end], policy, without[imprint_end:]))
        self.expect_unchecked("stamped under the policy 2.999.1, asked for 1.2.3")

    def test_changed_signature(self):
        self.ask()
        self.answer()
        response = bytearray((self.folder / "response.tsr").read_bytes())
        response[-1] ^= 1
        self.write("response.tsr", bytes(response))
        self.expect_unchecked("the signature does not hold")

    def test_certificate_of_another_authority(self):
        self.ask()
        self.answer()
        self.expect_unchecked("the signature", PKI / "tsa_rsa2048.pem")

    def test_malformed_response(self):
        self.ask()
        self.write("response.tsr", b"garbage")
        self.expect_unchecked("decoding response.tsr: CRYPT_E_ASN1_INTERNAL (0x80093101)")
        self.write("response.tsr", b"")
        self.expect_unchecked("decoding response.tsr: E_INVALIDARG (0x80070057)")

    def test_missing_response(self):
        self.ask()
        self.expect_unchecked("reading response.tsr: ERROR_FILE_NOT_FOUND (0x80070002)")


class Misused(Road):
    def test_missing_files(self):
        self.expect_failure("reading missing: ERROR_FILE_NOT_FOUND (0x80070002)", PROGRAMS / "make_request", "missing",
                            "request.tsq")
        self.expect_failure("reading missing: ERROR_FILE_NOT_FOUND (0x80070002)", PROGRAMS / "answer_request",
                            "missing", "response.tsr", PKI / "tsa_p256.pem", PKI / "tsa_p256.key")

    def test_directory_is_no_file(self):
        self.expect_failure("reading /: ERROR_FILE_CORRUPT (0x80070570)", PROGRAMS / "make_request", "/", "request.tsq")

    def test_full_disk_is_noticed(self):
        self.expect_failure("writing /dev/full", PROGRAMS / "make_request", "file", "/dev/full")

    def test_bad_policy(self):
        self.expect_failure("encoding the request: E_INVALIDARG (0x80070057)", PROGRAMS / "make_request", "--policy",
                            "no oid", "file", "request.tsq")

    def test_arguments(self):
        for program in ("make_request", "answer_request", "check_response"):
            with self.subTest(program):
                self.expect_failure("usage: ", PROGRAMS / program)
        self.expect_failure("unknown hash", PROGRAMS / "make_request", "--hash", "MD5", "file", "request.tsq")
        self.expect_failure("unknown option --nonce", PROGRAMS / "make_request", "--nonce", "1", "file", "request.tsq")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]], verbosity=2)
