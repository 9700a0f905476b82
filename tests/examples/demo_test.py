#!/usr/bin/env python3
"""scripts/demo with each kind of key: stamped, checked, and verified by another program.

    demo_test.py PROGRAMS SOURCE PKI [TEST...]

PROGRAMS is the directory of the built programs, SOURCE the top of the tree, PKI what tests/support/make_*.sh made.
What a kind of key needs and this machine does not have skips its test.
"""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAMS, SOURCE, PKI = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])


class Demo(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_demo(self, *options):
        return subprocess.run([SOURCE / "scripts/demo", "--programs", PROGRAMS, "--out", self.folder, *options],
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False, timeout=120)

    def expect_stamp(self, kind, *witnesses):
        """The client takes the stamp, and other programs have the last word."""
        done = self.run_demo("--key", kind)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertIn("Signature   holds, by O=Example,CN=Example Time Stamping", done.stdout)
        for witness in witnesses:
            self.assertIn(witness, done.stdout.split("\n== ")[-1] + done.stderr)

    def skip_without(self, fixture):
        absent = PKI / fixture / "absent"
        if absent.exists():
            self.skipTest(absent.read_text(encoding="utf-8"))

    def test_rsa(self):
        self.expect_stamp("rsa", "Verification: OK")

    def test_p256(self):
        self.expect_stamp("p256", "Verification: OK")

    def test_rsa_pss(self):
        self.expect_stamp("rsa-pss", "Verification: OK")

    def test_ed25519(self):
        if shutil.which("certtool") is None:
            self.skipTest("certtool is not installed (Debian: gnutls-bin)")
        self.expect_stamp("ed25519", "Signature status: ok")

    def test_gost_of_256_bits(self):
        self.skip_without("gost")
        self.expect_stamp("gost2012-256", "CMS Verification successful", "Verification: OK")

    def test_gost_of_512_bits(self):
        self.skip_without("gost")
        self.expect_stamp("gost2012-512", "CMS Verification successful", "Verification: OK")

    def test_pkcs11(self):
        self.skip_without("tokens")
        self.expect_stamp("pkcs11", "Verification: OK")
        self.assertFalse((self.folder / "tsa.key").exists(), "the key is in the token alone")

    def test_repeated_in_one_folder(self):
        self.expect_stamp("rsa", "Verification: OK")
        self.expect_stamp("p256", "Verification: OK")

    def test_misused(self):
        for options in (["--key", "dsa"], ["--key"], ["--out"], ["--nonsense"], ["one", "two"]):
            with self.subTest(options):
                done = self.run_demo(*options)
                self.assertEqual(done.returncode, 2)
                self.assertIn("usage: scripts/demo", done.stderr)
        done = self.run_demo(self.folder / "missing")
        self.assertEqual(done.returncode, 1)
        self.assertIn("cannot read", done.stderr)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]], verbosity=2)
