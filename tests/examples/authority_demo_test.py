#!/usr/bin/env python3
"""scripts/demo --serve: what it prints can be run as it stands, and it ends in good order."""

import os
import re
import shutil
import signal
import subprocess
import time

from authority_process import PKI, PROGRAMS, SOURCE, AuthorityTest, main


class Serving(AuthorityTest):
    def start(self, *options):
        """The demo, until it has printed the commands."""
        self.output = self.folder / "output"
        with open(self.output, "wb") as output:
            # A session of its own, so that the interrupt of a terminal can be sent to all of it.
            demo = subprocess.Popen([SOURCE / "scripts/demo", "--serve", "--programs", PROGRAMS, "--out",
                                     self.folder / "a demo", *options], stdin=subprocess.DEVNULL, stdout=output,
                                    stderr=subprocess.STDOUT, start_new_session=True)
        self.addCleanup(self.end, demo)
        deadline = time.monotonic() + 60
        while "until Ctrl-C" not in self.text():
            self.assertIsNone(demo.poll(), self.text())
            self.assertLess(time.monotonic(), deadline, self.text())
            time.sleep(0.05)
        return demo

    def text(self):
        return self.output.read_text()

    @staticmethod
    def end(demo):
        if demo.poll() is None:
            os.killpg(demo.pid, signal.SIGKILL)
            demo.wait()

    def commands(self):
        """The paragraphs that begin with a remark, each behind the change of the folder."""
        printed = self.text().split("Try, in another shell:")[1].split("\n== ")[0]
        change, *paragraphs = [part.strip() for part in printed.strip().split("\n\n")]
        return [f"{change}\n{paragraph}" for paragraph in paragraphs]

    def run_commands(self):
        """What all of the printed commands say that have their program here."""
        said = []
        for commands in self.commands():
            if "osslsigncode" not in commands or shutil.which("osslsigncode"):
                said.append(self.expect_success("bash", "-e", "-u", "-c", commands))
        return "".join(said)

    def expect_served(self, kind):
        demo = self.start("--key", kind)
        said = self.run_commands()
        self.assertIn("Verification: OK", said)
        stamps = 1
        if shutil.which("osslsigncode"):
            self.assertEqual(said.count("Timestamp Server Signature verification: ok"), 2)
            stamps = 3
        demo.send_signal(signal.SIGTERM)
        self.assertEqual(demo.wait(timeout=20), 0, self.text())
        lines = self.text().split("until Ctrl-C\n")[1].splitlines()
        self.assertEqual([re.split(" ", line)[1] for line in lines], ["rfc3161", "rfc3161", "authenticode"][:stamps])

    def test_rsa(self):
        self.expect_served("rsa")

    def test_p256(self):
        self.expect_served("p256")

    def test_pkcs11(self):
        absent = PKI / "tokens/absent"
        if absent.exists():
            self.skipTest(absent.read_text())
        self.expect_served("pkcs11")

    def test_rsa_pss(self):
        demo = self.start("--key", "rsa-pss")
        self.assertIn("Verification: OK", self.expect_success("bash", "-e", "-u", "-c", self.commands()[0]))
        demo.terminate()
        self.assertEqual(demo.wait(timeout=20), 0, self.text())

    def test_interrupt_of_the_terminal(self):
        """It goes to all processes of the terminal, and the authority ends once and cleanly."""
        demo = self.start()
        os.killpg(demo.pid, signal.SIGINT)
        self.assertEqual(demo.wait(timeout=20), 0, self.text())

    def test_again_in_the_same_folder(self):
        for _ in range(2):
            demo = self.start()
            self.assertIn("Verification: OK", self.expect_success("bash", "-e", "-u", "-c", self.commands()[0]))
            demo.terminate()
            self.assertEqual(demo.wait(timeout=20), 0, self.text())

    def test_port_that_is_taken(self):
        self.start()
        port = re.search(r"http://127\.0\.0\.1:(\d+)/", self.text())[1]
        done = self.run_in_folder(SOURCE / "scripts/demo", "--serve", "--programs", PROGRAMS, "--out",
                                  self.folder / "another", "--port", port)
        self.assertEqual(done.returncode, 1)
        self.assertIn("authority: ", done.stderr)

    def test_kinds_that_other_programs_do_not_know(self):
        for kind in ("ed25519", "gost2012-256"):
            self.assertEqual(self.run_in_folder(SOURCE / "scripts/demo", "--serve", "--key", kind).returncode, 2)


if __name__ == "__main__":
    main()
