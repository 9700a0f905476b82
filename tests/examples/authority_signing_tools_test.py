#!/usr/bin/env python3
"""Programs that sign and want a time-stamp, with the authority to ask: each takes the stamp and verifies it afterwards.

What this machine does not have skips its test.
"""

import os
import shutil
import subprocess
import sys
import zipfile

from authority_process import PKI, SOURCE, Authority, AuthorityTest, main

STAMP_HOLDS = "Timestamp Server Signature verification: ok"


class Tool(AuthorityTest):
    def setUp(self):
        super().setUp()
        self.started = 0

    def skip_without(self, *programs, package):
        for program in programs:
            if shutil.which(program) is None:
                self.skipTest(f"{program} is not installed (Debian: {package})")

    def start(self, kind):
        """One with serial numbers of its own."""
        self.started += 1
        authority = Authority(self.folder, "--tsa-name", key=PKI / f"tsa_{kind}.key",
                              certificate=PKI / f"tsa_{kind}.pem", serials=self.folder / f"serials{self.started}")
        self.addCleanup(authority.__exit__)
        return authority.__enter__()

    def new_signer(self):
        """A certificate for the signing of programs, which trusts nobody but itself."""
        self.expect_success("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", "signer.key", "-out",
                            "signer.pem", "-days", "30", "-subj", "/O=Test/CN=Signer", "-addext",
                            "keyUsage=critical,digitalSignature", "-addext", "extendedKeyUsage=codeSigning")


class Osslsigncode(Tool):
    def setUp(self):
        super().setUp()
        self.skip_without("osslsigncode", package="osslsigncode")
        self.new_signer()
        self.expect_success(sys.executable, "-B", SOURCE / "scripts/smallest_program.py", "program.exe")

    def verify(self, file):
        return self.run_in_folder("osslsigncode", "verify", "-CAfile", "signer.pem", "-TSA-CAfile", PKI / "ca.pem",
                                  "-in", file)

    def expect_stamped(self, option, kind):
        authority = self.start(kind)
        signed = f"signed{self.started}.exe"
        self.expect_success("osslsigncode", "sign", "-certs", "signer.pem", "-key", "signer.key", "-h", "sha256",
                            option, authority.url, "-in", "program.exe", "-out", signed)
        done = self.verify(signed)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertIn("Signature verification: ok", done.stdout)
        self.assertIn(STAMP_HOLDS, done.stdout)
        serial = {"rsa2048": "11", "p256": "F123456789ABCDEF"}[kind]  # of its certificate
        self.assertRegex(done.stdout, rf"Serial *: {serial}\b")
        said, = authority.stamp_lines()
        self.assertEqual(said.split()[1], {"-ts": "rfc3161", "-t": "authenticode"}[option])
        return signed

    def expect_broken(self, signed):
        """With one octet of the file changed nothing holds any more."""
        octets = bytearray((self.folder / signed).read_bytes())
        octets[0x200] ^= 1
        (self.folder / "broken.exe").write_bytes(octets)
        self.assertNotEqual(self.verify("broken.exe").returncode, 0)

    def test_stamp_of_rfc_3161(self):
        for kind in ("rsa2048", "p256"):
            with self.subTest(kind):
                self.expect_broken(self.expect_stamped("-ts", kind))

    def test_stamp_of_authenticode(self):
        for kind in ("rsa2048", "p256"):
            with self.subTest(kind):
                self.expect_broken(self.expect_stamped("-t", kind))

    def test_stamp_of_an_authority_that_is_not_trusted(self):
        for option in ("-t", "-ts"):
            with self.subTest(option):
                signed = self.expect_stamped(option, "p256")
                done = self.run_in_folder("osslsigncode", "verify", "-CAfile", "signer.pem", "-TSA-CAfile",
                                          PKI / "other_ca.pem", "-in", signed)
                self.assertNotIn(STAMP_HOLDS, done.stdout)


class Jarsigner(Tool):
    def setUp(self):
        super().setUp()
        self.skip_without("jarsigner", "keytool", package="default-jdk-headless")
        self.new_signer()
        self.expect_success("openssl", "pkcs12", "-export", "-inkey", "signer.key", "-in", "signer.pem", "-name",
                            "signer", "-passout", "pass:secret", "-out", "signer.p12")
        self.expect_success("keytool", "-importcert", "-noprompt", "-alias", "authority", "-file", PKI / "ca.pem",
                            "-keystore", "signer.p12", "-storepass", "secret")
        with zipfile.ZipFile(self.folder / "archive.jar", "w") as archive:
            archive.writestr("META-INF/MANIFEST.MF", "Manifest-Version: 1.0\r\n\r\n")
            archive.writestr("text", "what is signed")

    def test_archive_is_stamped(self):
        for kind, name in (("rsa2048", "RSA"), ("p256", "P-256")):
            with self.subTest(kind):
                authority = self.start(kind)
                self.expect_success("jarsigner", "-keystore", "signer.p12", "-storepass", "secret", "-tsa",
                                    authority.url, "-signedjar", f"{kind}.jar", "archive.jar", "signer")
                verified = self.expect_success("jarsigner", "-verify", "-verbose", "-certs", "-keystore", "signer.p12",
                                               "-storepass", "secret", f"{kind}.jar")
                self.assertIn("jar verified.", verified)
                self.assertIn(f"CN=Test TSA {name}", verified)
                self.assertIn("Timestamp digest algorithm: SHA-256", verified)
                self.assertNotIn("does not include a timestamp", verified)
                self.assertEqual(len(authority.stamp_lines()), 1)


class Rfc3161ng(Tool):
    # The stamp's time is within a minute, and its signature, nonce and imprint are checked by the package.
    CLIENT = """
import datetime, sys, rfc3161ng
url, certificate = sys.argv[1], open(sys.argv[2], "rb").read()
client = rfc3161ng.RemoteTimestamper(url, certificate=certificate, hashname=sys.argv[3])
for nonce in (None, 1, 2**63 - 1):
    for asked in (False, True):
        stamp = client.timestamp(data=b"what is stamped", nonce=nonce, include_tsa_certificate=asked)
        assert client.check(stamp, data=b"what is stamped", nonce=nonce) is True
        age = datetime.datetime.utcnow() - rfc3161ng.get_timestamp(stamp)
        assert abs(age) < datetime.timedelta(minutes=1), age
        try:
            client.check(stamp, data=b"something else")
        except ValueError:
            continue
        raise AssertionError("a stamp for other data")
print("stamps hold")
"""

    def python_with_package(self):
        for python in (sys.executable, "/usr/bin/python3"):
            if os.path.exists(python) and subprocess.run([python, "-c", "import rfc3161ng"], capture_output=True,
                                                         check=False).returncode == 0:
                return python
        self.skipTest("the Python package rfc3161ng is not installed (Debian: python3-rfc3161ng)")

    def test_stamps_hold(self):
        python = self.python_with_package()
        authority = self.start("rsa2048")
        for name in ("sha256", "sha384", "sha512"):
            with self.subTest(name):
                self.assertIn("stamps hold", self.expect_success(python, "-c", self.CLIENT, authority.url,
                                                                 PKI / "tsa_rsa2048.pem", name))
        self.assertEqual(len(authority.stamp_lines()), 18)


if __name__ == "__main__":
    main()
