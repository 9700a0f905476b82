#!/usr/bin/env python3
"""What the authority stamps and what it refuses, with curl as the client and OpenSSL's commands to judge by."""

import base64
import subprocess
import unittest

from authority_process import POLICY, PKI, PROGRAMS, QUERY, REPLY, Authority, AuthorityTest, main, request, tst_info
from ber import der, parse

OTHER_POLICY = "2.999.2"

# RFC 3161 2.4.2, in the words of `openssl ts -reply -text`
BAD_ALGORITHM = "unrecognized or unsupported algorithm identifier"
BAD_REQUEST = "transaction not permitted or supported"
BAD_DATA_FORMAT = "the data submitted has the wrong format"
UNACCEPTED_POLICY = "the requested TSA policy is not supported by the TSA"
UNACCEPTED_EXTENSION = "the requested extension is not supported by the TSA"


class Client(AuthorityTest):
    def setUp(self):
        super().setUp()
        self.started = 0
        (self.folder / "data").write_bytes(b"what is stamped")

    def start(self, *options, kind="p256"):
        """One with serial numbers of its own."""
        self.started += 1
        authority = Authority(self.folder, *options, key=PKI / f"tsa_{kind}.key", certificate=PKI / f"tsa_{kind}.pem",
                              serials=self.folder / f"serials{self.started}")
        self.addCleanup(authority.__exit__)
        return authority.__enter__()

    def query(self, *options):
        self.expect_success("openssl", "ts", "-query", "-data", "data", *options, "-out", "request.tsq")

    def post(self, authority):
        """Sends request.tsq, and leaves the answer in response.tsr."""
        said = self.expect_success("curl", "-sS", "-H", f"Content-Type: {QUERY}", "--data-binary", "@request.tsq",
                                   "-o", "response.tsr", "-w", "%{http_code} %{content_type}", authority.url)
        self.assertEqual(said, f"200 {REPLY}")

    def text(self):
        return self.expect_success("openssl", "ts", "-reply", "-in", "response.tsr", "-text")

    def verify(self, *options):
        verified = self.expect_success("openssl", "ts", "-verify", "-queryfile", "request.tsq", "-in", "response.tsr",
                                       "-CAfile", PKI / "ca.pem", *options)
        self.assertIn("Verification: OK", verified)

    def stamp(self, authority, *options):
        self.query(*options)
        self.post(authority)
        return self.text()


class Stamps(Client):
    def test_of_each_kind_of_key(self):
        for kind in ("rsa2048", "p256", "p384", "pss"):
            with self.subTest(kind):
                self.stamp(self.start(kind=kind), "-sha256", "-cert")
                self.verify()

    def test_of_each_hash(self):
        authority = self.start()
        for name in ("sha256", "sha384", "sha512"):
            with self.subTest(name):
                self.assertIn(f"Hash Algorithm: {name}", self.stamp(authority, f"-{name}", "-cert"))
                self.verify()

    def test_with_the_digest_asked_for(self):
        for name in ("sha256", "sha384", "sha512"):
            for kind in ("p256", "rsa2048"):
                with self.subTest(name, kind=kind):
                    authority = self.start("--signature-hash", name.upper(), kind=kind)
                    self.stamp(authority, "-sha256", "-cert")
                    self.verify()
                    token = parse((self.folder / "response.tsr").read_bytes())[1]
                    digest_algorithm = token[1][0].first(0x31)[0][0].content
                    self.assertEqual(digest_algorithm[-1], {"sha256": 1, "sha384": 2, "sha512": 3}[name])

    def certificates_sent(self):
        self.expect_success("openssl", "ts", "-reply", "-in", "response.tsr", "-token_out", "-out", "token.der")
        listed = self.expect_success("openssl", "pkcs7", "-inform", "DER", "-in", "token.der", "-print_certs")
        return listed.count("subject=")

    def test_certificates_only_when_asked_for(self):
        authority = self.start()
        self.stamp(authority, "-sha256", "-cert")
        self.assertEqual(self.certificates_sent(), 2, "its own and that of the chain")
        self.stamp(authority, "-sha256")
        self.assertEqual(self.certificates_sent(), 0)
        self.verify("-untrusted", PKI / "tsa_p256.pem")

    def test_nonce_comes_back_and_none_when_there_was_none(self):
        authority = self.start()
        asked = self.stamp(authority, "-sha256", "-cert")
        nonce = next(line for line in asked.splitlines() if line.startswith("Nonce:"))
        self.assertIn(nonce, self.expect_success("openssl", "ts", "-query", "-in", "request.tsq", "-text"))
        self.assertIn("Nonce: unspecified", self.stamp(authority, "-sha256", "-cert", "-no_nonce"))
        self.verify()

    def test_long_nonce(self):
        authority = self.start()
        nonce = der(0x02, bytes.fromhex("7f" + "5a" * 31))
        (self.folder / "request.tsq").write_bytes(request(rest=nonce))
        self.post(authority)
        self.assertIn(nonce, (self.folder / "response.tsr").read_bytes())

    def test_policies(self):
        authority = self.start("--policy", OTHER_POLICY)
        self.assertIn(f"Policy OID: {POLICY}\n", self.stamp(authority, "-sha256", "-cert"))
        for policy in (POLICY, OTHER_POLICY):
            self.assertIn(f"Policy OID: {policy}\n", self.stamp(authority, "-sha256", "-cert", "-tspolicy", policy))
            self.verify()

    def test_name_of_the_authority_only_when_told_so(self):
        self.assertIn("TSA: unspecified", self.stamp(self.start(), "-sha256"))
        self.assertIn("TSA: DirName:/C=XX/O=Test/CN=Test TSA P-256",
                      self.stamp(self.start("--tsa-name"), "-sha256", "-cert"))
        self.verify()

    def test_ordering_only_when_told_so(self):
        self.assertIn("Ordering: no", self.stamp(self.start(), "-sha256"))
        self.assertIn("Ordering: yes", self.stamp(self.start("--ordering"), "-sha256", "-cert"))
        self.verify()

    def test_accuracy(self):
        self.assertIn("Accuracy: 0x01 seconds", self.stamp(self.start(), "-sha256"))

    def test_time_is_now(self):
        authority = self.start()
        before = subprocess.run(["date", "-u", "+%Y%m%d%H%M%S"], capture_output=True, text=True, check=True).stdout
        self.stamp(authority, "-sha256")
        stamped = tst_info((self.folder / "response.tsr").read_bytes())[4].content.decode()
        after = subprocess.run(["date", "-u", "+%Y%m%d%H%M%S"], capture_output=True, text=True, check=True).stdout
        self.assertLessEqual(before.strip(), stamped[:14])
        self.assertLessEqual(stamped[:14], after.strip())
        self.assertEqual(stamped[-1], "Z")

    def test_our_client_takes_them(self):
        authority = self.start("--tsa-name")
        for name in ("SHA256", "SHA384", "SHA512"):
            with self.subTest(name):
                self.expect_success(PROGRAMS / "make_request", "--hash", name, "--policy", POLICY, "data",
                                    "request.tsq")
                self.post(authority)
                printed = self.expect_success(PROGRAMS / "check_response", "request.tsq", "response.tsr",
                                              PKI / "tsa_p256.pem")
                self.assertIn("Signature   holds, by C=XX,O=Test,CN=Test TSA P-256", printed)
                self.assertIn("Accuracy    1.000000 s", printed)


class Refusals(Client):
    """Each is an answer of the protocol, and the authority goes on."""

    def setUp(self):
        super().setUp()
        self.authority = self.start("--hash", "SHA256", "SHA512")

    def expect_rejection(self, reason, contents):
        (self.folder / "request.tsq").write_bytes(contents)
        self.post(self.authority)
        text = self.text()
        self.assertIn("Status: Rejected.", text)
        self.assertIn(f"Failure info: {reason}", text)
        self.assertIn("TST info:\nNot included.", text)
        self.expect_stamp(self.authority)

    def test_unknown_hash(self):
        self.expect_rejection(BAD_ALGORITHM, request(algorithm=bytes.fromhex("06052B0E03021A"), digest=bytes(20)))
        self.expect_rejection(BAD_ALGORITHM, request(algorithm=bytes.fromhex("06032A0304"), digest=bytes(20)))

    def test_hash_that_is_known_and_not_accepted(self):
        sha384 = bytes.fromhex("0609608648016503040202")
        self.expect_rejection(BAD_ALGORITHM, request(algorithm=sha384, digest=bytes(48)))

    def test_hash_of_another_length(self):
        for octets in (0, 31, 33):
            self.expect_rejection(BAD_DATA_FORMAT, request(digest=bytes(octets)))

    def test_octets_that_are_no_request(self):
        whole = request()
        cut = [whole[:size] for size in range(1, len(whole), 7)]
        for contents in (b"\0", b"garbage", der(0x30), der(0x31, whole[2:]), der(0x04, whole), *cut):
            with self.subTest(contents.hex()):
                self.expect_rejection(BAD_DATA_FORMAT, contents)

    def test_no_octets(self):
        self.expect_rejection(BAD_DATA_FORMAT, b"")

    def test_other_version(self):
        for version in (0, 2):
            (self.folder / "request.tsq").write_bytes(request(version=version))
            self.post(self.authority)
            text = self.text()
            self.assertIn("Status: Rejected.", text)
            self.assertRegex(text, f"Failure info: ({BAD_REQUEST}|{BAD_DATA_FORMAT})")

    def test_other_policy(self):
        self.expect_rejection(UNACCEPTED_POLICY, request(rest=bytes.fromhex("06022A03")))

    def test_any_extension(self):
        extension = der(0x30, bytes.fromhex("06032A0304"), der(0x04, bytes.fromhex("0500")))
        self.expect_rejection(UNACCEPTED_EXTENSION, request(rest=der(0xA0, extension)))

    def test_critical_extension(self):
        extension = der(0x30, bytes.fromhex("06032A0304"), bytes.fromhex("0101FF"), der(0x04, bytes.fromhex("0500")))
        self.expect_rejection(UNACCEPTED_EXTENSION, request(rest=der(0xA0, extension)))

    def test_refusals_are_told_to_the_operator(self):
        self.expect_rejection(UNACCEPTED_POLICY, request(rest=bytes.fromhex("06022A03")))
        self.assertIn("unacceptedPolicy", self.authority.errors())
        self.assertEqual(len(self.authority.stamp_lines()), 1, "the stamp behind the refusal")


class Authenticode(Client):
    """The older exchange: base64 both ways."""

    SIGNATURE = bytes(range(64))
    COUNTERSIGN = bytes.fromhex("060A2B060104018237030201")  # 1.3.6.1.4.1.311.3.2.1
    DATA = bytes.fromhex("06092A864886F70D010701")

    def body(self):
        content = der(0x30, self.DATA, der(0xA0, der(0x04, self.SIGNATURE)))
        return der(0x30, self.COUNTERSIGN, content)

    def ask(self, authority, text):
        return authority.ask(text, "application/octet-stream")

    def test_signature_is_countersigned(self):
        for kind in ("p256", "rsa2048"):
            with self.subTest(kind):
                authority = self.start(kind=kind)
                status, answer = self.ask(authority, base64.b64encode(self.body()))
                self.assertEqual(status, 200, answer)
                (self.folder / "stamp.der").write_bytes(base64.b64decode(b"".join(answer.split()), validate=True))
                self.expect_success("openssl", "cms", "-verify", "-inform", "DER", "-in", "stamp.der", "-binary",
                                    "-CAfile", PKI / "ca.pem", "-purpose", "timestampsign", "-out", "content")
                self.assertEqual((self.folder / "content").read_bytes(), self.SIGNATURE)
                printed = self.expect_success("openssl", "cms", "-cmsout", "-print", "-inform", "DER", "-in",
                                              "stamp.der")
                self.assertIn("signingTime (1.2.840.113549.1.9.5)", printed)

    def test_base64_in_lines(self):
        authority = self.start()
        for separator in (b"\n", b"\r\n"):
            text = base64.encodebytes(self.body()).replace(b"\n", separator)
            self.assertEqual(self.ask(authority, text)[0], 200)

    def test_bad_bodies(self):
        authority = self.start()
        good = base64.b64encode(self.body())
        no_octet_string = der(0x30, self.COUNTERSIGN, der(0x30, self.DATA, der(0xA0, der(0x02, b"\1"))))
        no_content = der(0x30, self.COUNTERSIGN, der(0x30, self.DATA))
        other_purpose = der(0x30, bytes.fromhex("06032A0304"), der(0x30, self.DATA, der(0xA0, der(0x04, b"\1"))))
        bad = {
            "empty": b"",
            "no base64": b"!!!!",
            "cut base64": good[:-1],
            "padding within": good[:8] + b"=" + good[8:],
            "binary": self.body(),
            "no request": base64.b64encode(b"garbage"),
            "cut request": base64.b64encode(self.body()[:-1]),
            "other content": base64.b64encode(no_octet_string),
            "no content": base64.b64encode(no_content),
            "other purpose": base64.b64encode(other_purpose),
        }
        for name, text in bad.items():
            with self.subTest(name):
                self.assertEqual(self.ask(authority, text)[0], 400)
                self.expect_stamp(authority)
        self.assertEqual(self.ask(authority, good)[0], 200)


if __name__ == "__main__":
    main()
