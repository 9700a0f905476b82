#!/usr/bin/env python3
"""The program `inspect` on messages that OpenSSL's commands made, and on damaged ones.

    inspect_test.py PROGRAMS PKI [TEST...]

PROGRAMS is the directory of the built programs, PKI what tests/support/make_pki.sh made.
"""

import base64
import contextlib
import io
import json
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import unittest

import manifest_check
from ber import Node, der, parse
from inspect_samples import Samples, content_octets, generalized_time

PROGRAMS, PKI = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
INSPECT = PROGRAMS / "inspect"

# What a sanitizer finds is not to be taken for a file that was refused.
ENVIRONMENT = {**os.environ, "ASAN_OPTIONS": "exitcode=99", "UBSAN_OPTIONS": "exitcode=99"}

CONTENT_TYPE = "1.2.840.113549.1.9.3"
MESSAGE_DIGEST = "1.2.840.113549.1.9.4"
SIGNING_TIME = "1.2.840.113549.1.9.5"
DATA = bytes.fromhex("2A864886F70D010701")


def setUpModule():
    global SAMPLES, scratch
    scratch = tempfile.TemporaryDirectory()
    SAMPLES = Samples(pathlib.Path(scratch.name), PKI)


def tearDownModule():
    scratch.cleanup()


class Inspection(unittest.TestCase):
    def run_inspect(self, *arguments, octets=None):
        done = subprocess.run([INSPECT, *map(str, arguments)], cwd=SAMPLES.folder, input=octets, env=ENVIRONMENT,
                              capture_output=True, check=False, timeout=120)
        self.assertIn(done.returncode, (0, 1), done.stderr)
        return done

    def json_of(self, *names, octets=None, status=0):
        """The object of each file."""
        done = self.run_inspect("--json", *names, octets=octets)
        self.assertEqual(done.returncode, status, done.stderr)
        objects = [json.loads(line) for line in done.stdout.splitlines()]
        self.assertEqual([entry["file"] for entry in objects], list(names))
        return objects if len(names) > 1 else objects[0]

    def decoded(self, name, kind):
        entry = self.json_of(name)
        self.assertEqual(entry["kind"], kind)
        self.assertEqual(entry["size"], len(SAMPLES.read(name)))
        self.assertNotIn("faults", entry)
        return entry["decoded"]

    def text_of(self, *names):
        done = self.run_inspect(*names)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout.decode()

    def expect_fact(self, text, label, value):
        self.assertRegex(text, rf"(?m)^ +{label}  +{value}$")

    def expect_fault(self, octets, offset, reason, what):
        """Octets that are refused: one line on standard error, and the same for programs."""
        SAMPLES.write("damaged", octets)
        entry = self.json_of("damaged", status=1)
        self.assertEqual([fault["what"] for fault in entry["faults"]][0], what)
        self.assertEqual(entry["faults"][0]["offset"], offset, entry["faults"])
        self.assertIn(reason, entry["faults"][0]["reason"])
        line = self.run_inspect("damaged").stderr.decode().splitlines()[0]
        self.assertTrue(line.startswith(f"inspect: damaged: {what} refused at offset {offset}: "), line)
        return entry


class Kinds(Inspection):
    def test_each_kind_is_told_by_the_octets(self):
        kinds = {"full.tsq": "request", "full.tsr": "response", "rejected.tsr": "response", "full.tst": "token",
                 "authenticode.req": "authenticode-request", "stamp.p7": "stamp", "rich.der": "cert", "list.crl": "crl", "mail.p7": "cms", "enveloped.p7": "cms",
                 "digested.p7": "cms", "status.ocq": "ocsp", "status.ocr": "ocsp", "general.cmp": "cmp",
                 "request.p10": "pkcs10", "key.p8": "private-key", "key.pub": "public-key", "tsa_p256.p12": "pkcs12",
                 "plain.der": "der", "file": "text"}
        for entry in self.json_of(*kinds):
            self.assertEqual(entry["kind"], kinds[entry["file"]], entry["file"])

    def test_other_kinds_are_named_by_their_outer_type(self):
        types = {"enveloped.p7": "CMS ContentInfo of envelopedData", "digested.p7": "CMS ContentInfo of digestedData",
                 "status.ocq": "OCSP request", "status.ocr": "OCSP response", "general.cmp": "CMP PKIMessage",
                 "request.p10": "PKCS #10 certification request", "key.p8": "PKCS #8 private key",
                 "tsa_p256.p12": "PKCS #12 container", "key.pub": "SubjectPublicKeyInfo",
                 "plain.der": "SEQUENCE begun by UTF8String", "file": "text"}
        for entry in self.json_of(*types):
            self.assertEqual(entry["decoded"], {"type": types[entry["file"]]})
            self.assertIn(f"{entry['file']}: {types[entry['file']]}, {entry['size']} octets\n",
                          self.text_of(entry["file"]))

    def test_elements_of_other_types(self):
        for octets, name in ((b"\x05\x00", "NULL"), (b"\x30\x00", "empty SEQUENCE"), (b"\x80\x01a", "[0]"),
                             (b"\x5f\x21\x00", "[APPLICATION 31 or more]"), (b"\x02\x01\x05", "INTEGER"),
                             (bytes.fromhex("300506032A0304"), "SEQUENCE begun by the object identifier 1.2.3.4")):
            SAMPLES.write("element", octets)
            self.assertEqual(self.json_of("element")["decoded"]["type"], name)


class Fields(Inspection):
    def test_request(self):
        decoded = self.decoded("full.tsq", "request")
        text = SAMPLES.openssl("ts", "-query", "-in", "full.tsq", "-text")
        nonce = content_octets(text.partition("Nonce: ")[2].split()[0])
        digest = SAMPLES.openssl("dgst", "-sha512", "-r", "file").split()[0]
        self.assertEqual(decoded, {"version": 1, "hash": "sha512", "imprint": digest,
                                   "fields": ["policy", f"nonce{len(nonce) // 2}", "certReq"], "policy": "1.2.3.4.1",
                                   "nonce": nonce, "certReq": True})

    def test_request_without_anything_optional(self):
        decoded = self.decoded("plain.tsq", "request")
        self.assertEqual(decoded["fields"], [])
        self.assertFalse(decoded["certReq"])
        self.assertNotIn("nonce", decoded)
        self.assertNotIn("policy", decoded)

    def test_extensions_of_a_request(self):
        extension = der(0x30, bytes.fromhex("06032A0304"), b"\x01\x01\xff", der(0x04, b"\x05\x00"))
        request = parse(SAMPLES.read("plain.tsq"))
        request.children.append(Node(0xA0, extension))
        SAMPLES.write("extended.tsq", request.encode())
        self.assertEqual(self.decoded("extended.tsq", "request")["extensions"],
                         [{"oid": "1.2.3.4", "critical": True, "value": "0500"}])

    def test_stamps_are_what_openssl_says(self):
        manifest = []
        for name, kind, certificates in (("full.tsr", "response", 2), ("full.tst", "token", 2),
                                         ("plain.tsr", "response", 0), ("plain.tst", "token", 0)):
            decoded = SAMPLES.stamp_by_openssl(name)
            decoded.update(certs=certificates, crls=0, signers=1)
            manifest.append({"file": name, "kind": kind, "bytes": len(SAMPLES.read(name)), "decoded": decoded})
        self.assertIsNone(manifest[3]["decoded"]["nonce"])
        self.assertIsNotNone(manifest[0]["decoded"]["nonce"])
        self.assertEqual(manifest[0]["decoded"]["accuracy"], {"s": 1, "ms": 500})
        self.assertEqual(manifest[2]["decoded"]["ordering"], "ff")
        lines = "".join(json.dumps(entry) + "\n" for entry in manifest)
        SAMPLES.write("manifest.jsonl", lines.encode())
        self.assertEqual(manifest_check.main(INSPECT, SAMPLES.folder), 0)
        SAMPLES.write("manifest.jsonl", lines.replace("1.2.3.4.1", "1.2.3.4.2").encode())
        with contextlib.redirect_stdout(io.StringIO()) as printed:
            self.assertEqual(manifest_check.main(INSPECT, SAMPLES.folder), 1)
        self.assertIn('full.tsr: policy is "1.2.3.4.1" and not "1.2.3.4.2"\n', printed.getvalue())

    def test_signer_and_attributes_of_a_token(self):
        decoded = self.decoded("full.tst", "token")
        self.assertEqual(decoded["tsaName"], "name:C=XX,O=Test,CN=Test TSA P-256")
        self.assertEqual(decoded["signer"]["issuer"], "C=XX,O=Test,CN=Test Authority")
        self.assertEqual(decoded["signer"]["serial"], "00f123456789abcdef")
        self.assertEqual(decoded["signer"]["digestAlgorithm"], "sha256")
        self.assertEqual(decoded["signer"]["signatureAlgorithm"], "ecdsa-with-SHA256")
        attributes = {attribute["oid"]: attribute for attribute in decoded["signedAttributes"]}
        self.assertEqual(attributes[CONTENT_TYPE]["texts"], ["TSTInfo (1.2.840.113549.1.9.16.1.4)"])
        fingerprint = SAMPLES.openssl("x509", "-in", "tsa_p256.pem", "-noout", "-fingerprint", "-sha256")
        digest = fingerprint.strip().partition("=")[2].replace(":", "").lower()
        self.assertEqual(attributes["1.2.840.113549.1.9.16.2.47"]["texts"], [f"sha256 {digest}"])
        self.assertEqual([certificate["subject"] for certificate in decoded["certificates"]],
                         ["C=XX,O=Test,CN=Test TSA P-256", "C=XX,O=Test,CN=Test Authority"])

    def test_signing_certificate_of_the_first_version(self):
        fingerprint = SAMPLES.openssl("x509", "-in", "tsa_rsa2048.pem", "-noout", "-fingerprint", "-sha1")
        digest = fingerprint.strip().partition("=")[2].replace(":", "").lower()
        texts = [attribute.get("texts") for attribute in self.decoded("plain.tst", "token")["signedAttributes"]]
        self.assertIn([f"sha1 {digest}"], texts)

    def test_rejection(self):
        decoded = self.decoded("rejected.tsr", "response")
        self.assertEqual(decoded["status"], 2)
        self.assertEqual(decoded["failInfo"], ["unacceptedPolicy"])
        self.assertEqual(decoded["statusString"], ["Requested policy is not supported."])

    def test_authenticode_request(self):
        decoded = self.decoded("authenticode.req", "authenticode-request")
        self.assertEqual(decoded, {"timeStampAlgorithm": "1.3.6.1.4.1.311.3.2.1",
                                   "contentType": "1.2.840.113549.1.7.1", "content": "00112233",
                                   "attributes": [{"oid": SIGNING_TIME, "values": ["170d3234303232393233353935385a"],
                                                   "texts": ["2024-02-29 23:59:58 UTC"]}]})

    def test_authenticode_request_of_another_content(self):
        request = parse(SAMPLES.read("authenticode.req"))
        octets = der(0x30, request[0].encode(), der(0x30, bytes.fromhex("06032A0304"), der(0xA0, b"\x05\x00")))
        SAMPLES.write("other.req", octets)
        decoded = self.decoded("other.req", "authenticode-request")
        self.assertEqual((decoded["contentType"], decoded["content"]), ("1.2.3.4", "0500"))
        self.assertNotIn("attributes", decoded)

    def test_authenticode_stamp(self):
        decoded = self.decoded("stamp.p7", "stamp")
        self.assertEqual(bytes.fromhex(decoded["content"]), SAMPLES.read("file"))
        printed = SAMPLES.openssl("cms", "-cmsout", "-print", "-noout", "-inform", "DER", "-in", "stamp.p7")
        time = generalized_time(printed.partition("signingTime")[2].partition("UTCTIME:")[2].splitlines()[0])
        self.assertEqual(re.sub("[-:T]", "", decoded["signingTime"]), time)
        self.assertEqual((decoded["certs"], decoded["crls"], decoded["signers"]), (1, 0, 1))
        signer = decoded["signerInfos"][0]
        self.assertEqual(signer["serial"], "11")
        self.assertEqual({attribute["oid"] for attribute in signer["signedAttributes"]},
                         {CONTENT_TYPE, MESSAGE_DIGEST, SIGNING_TIME})

    def test_signed_message_of_another_kind(self):
        decoded = self.decoded("mail.p7", "cms")
        self.assertEqual(decoded["eContentType"], "1.2.840.113549.1.7.1")
        self.assertEqual(decoded["signerInfos"][0]["signatureAlgorithm"], "rsaEncryption")
        # The object layer reads no signer that is named by subject key identifier.
        self.assertEqual(self.decoded("by_key_identifier.p7", "cms")["signerInfos"][0]["code"], "CRYPT_E_ASN1_INTERNAL")

    def test_certificate(self):
        decoded = self.decoded("rich.der", "cert")
        self.assertEqual(decoded["version"], 3)
        self.assertEqual(decoded["serial"], "0123")
        self.assertEqual(decoded["issuer"], "C=XX,O=Test,CN=Test Authority")
        self.assertEqual(decoded["subject"], "C=XX,O=Quotes\\, \\\"and\\\" \\+ more,CN=Rich")
        self.assertEqual(decoded["signatureAlgorithm"], "ecdsa-with-SHA256")
        dates = SAMPLES.openssl("x509", "-in", "rich.der", "-inform", "DER", "-noout", "-dates", "-dateopt", "iso_8601")
        for key in ("notBefore", "notAfter"):
            self.assertIn(f"{key}={decoded[key].replace('T', ' ')}", dates)
        key = decoded["publicKey"]
        self.assertEqual((key["algorithm"], key["bits"], key["exponent"]), ("rsaEncryption", 2048, "010001"))

    def test_public_key_on_a_curve(self):
        key = self.decoded("tsa_p384.der", "cert")["publicKey"]
        self.assertEqual((key["algorithm"], key["parameters"]), ("id-ecPublicKey", "P-384"))
        public = SAMPLES.openssl("pkey", "-in", "tsa_p384.key", "-pubout", "-outform", "DER", "-out", "public.der")
        self.assertEqual(public, "")
        self.assertTrue(SAMPLES.read("public.der").hex().endswith(key["key"]))

    def test_extensions_of_a_certificate(self):
        extensions = {entry["oid"]: entry for entry in self.decoded("rich.der", "cert")["extensions"]}
        texts = {"2.5.29.19": "CA, path length 0", "2.5.29.15": "keyCertSign, cRLSign",
                 "2.5.29.37": "timeStamping, 1.2.3.4",
                 "2.5.29.17": "DNS:tsa.example, email:tsa@example.org, URI:http://tsa.example/, IP:192.0.2.1, "
                              "name:CN=Directory, OID:1.2.3",
                 "1.3.6.1.5.5.7.1.1": "ocsp URI:http://ocsp.example/, caIssuers URI:http://ca.example/ca.cer",
                 "2.5.29.31": "URI:http://crl.example/list.crl", "2.5.29.32": "1.2.3.4.5"}
        for oid, text in texts.items():
            self.assertEqual(extensions[oid]["text"], text)
        self.assertTrue(extensions["2.5.29.19"]["critical"])
        self.assertFalse(extensions["2.5.29.37"]["critical"])
        self.assertEqual(extensions["1.2.3.4.6"]["value"], der(0x0C, b"private").hex())
        identifier = SAMPLES.openssl("x509", "-in", "rich.der", "-inform", "DER", "-noout", "-ext",
                                     "subjectKeyIdentifier")
        self.assertEqual(extensions["2.5.29.14"]["text"], identifier.split()[-1].replace(":", "").lower())

    def test_revocation_list(self):
        decoded = self.decoded("list.crl", "crl")
        self.assertEqual((decoded["version"], decoded["issuer"]), (2, "C=XX,O=Test,CN=Test Authority"))
        dates = SAMPLES.openssl("crl", "-in", "list.pem", "-noout", "-lastupdate", "-nextupdate", "-dateopt",
                                "iso_8601")
        self.assertIn(f"lastUpdate={decoded['thisUpdate'].replace('T', ' ')}", dates)
        self.assertIn(f"nextUpdate={decoded['nextUpdate'].replace('T', ' ')}", dates)
        self.assertEqual(decoded["revokedCount"], 2)
        entries = {entry["serial"]: entry for entry in decoded["revoked"]}
        self.assertEqual(set(entries), {"7f000102030405060708090a0b0c0d0e0f101112", "1000"})
        compromised = entries["7f000102030405060708090a0b0c0d0e0f101112"]
        self.assertEqual(compromised["extensions"][0]["text"], "keyCompromise")
        self.assertNotIn("extensions", entries["1000"])
        texts = {entry["oid"]: entry["text"] for entry in decoded["extensions"]}
        self.assertEqual(texts["2.5.29.20"], "0x1235")
        self.assertTrue(texts["2.5.29.35"].startswith("key "))

    def test_revocation_list_without_entries(self):
        decoded = self.decoded("empty.crl", "crl")
        self.assertEqual(decoded["revokedCount"], 0)
        self.assertNotIn("revoked", decoded)

    def test_octets_behind_a_message_are_counted(self):
        SAMPLES.write("longer.tsq", SAMPLES.read("plain.tsq") + b"\x00\x01\x02")
        self.assertEqual(self.json_of("longer.tsq")["decoded"]["trailing"], 3)


class ForPeople(Inspection):
    def test_facts_stand_in_one_column(self):
        text = self.text_of("full.tsr")
        lines = [line for line in text.splitlines()[1:] if line.strip() and "  " in line.strip()]
        columns = {len(line) - len(line.lstrip().partition("  ")[2].lstrip()) for line in lines
                   if not line.startswith(" " * 20)}
        self.assertEqual(len(columns), 1, text)

    def test_token(self):
        text = self.text_of("full.tsr")
        self.assertTrue(text.startswith(f"full.tsr: time-stamp response, {len(SAMPLES.read('full.tsr'))} octets\n"))
        self.expect_fact(text, "Status", r"0 \(granted\)")
        self.expect_fact(text, "Policy", r"1\.2\.3\.4\.1")
        self.expect_fact(text, "Hash algorithm", r"sha512 \(2\.16\.840\.1\.101\.3\.4\.2\.3\)")
        self.expect_fact(text, "Time", r"20\d\d-\d\d-\d\d \d\d:\d\d:\d\d UTC")
        self.expect_fact(text, "Accuracy", "1 s 500 ms")
        self.expect_fact(text, "Authority", "name:C=XX,O=Test,CN=Test TSA P-256")
        for section in ("Token", "Signer", "Signed attributes", "Certificate 1", "Certificate 2"):
            self.assertRegex(text, rf"(?m)^ +{section}$")

    def test_hexadecimal_digits_stand_in_groups(self):
        digest = SAMPLES.openssl("dgst", "-sha512", "-r", "file").split()[0].upper()
        groups = [digest[i:i + 8] for i in range(0, len(digest), 8)]
        text = self.text_of("full.tsq")
        self.assertRegex(text, rf"Hash +{' '.join(groups[:8])}\n +{' '.join(groups[8:])}\n")

    def test_no_control_character_of_a_file_reaches_the_terminal(self):
        evil = "a\x1b[2Jb\nc\u202ed\x7f\u009b".encode()
        name = der(0x30, der(0x31, der(0x30, bytes.fromhex("0603550403"), der(0x0C, evil))))
        certificate = parse(SAMPLES.read("rich.der"))
        certificate[0].children[5] = Node(0x30, parse(name).content)
        SAMPLES.write("evil\x1b[31m.der", certificate.encode())
        done = self.run_inspect("evil\x1b[31m.der")
        self.assertEqual(done.returncode, 0, done.stderr)
        text = done.stdout.decode()
        self.assertIn(r"CN=a\u{1B}[2Jb\u{A}c\u{202E}d\u{7F}\u{9B}", text)
        self.assertTrue(text.startswith(r"evil\u{1B}[31m.der: certificate"))
        self.assert_harmless(text)
        entry = self.run_inspect("--json", "evil\x1b[31m.der").stdout
        self.assert_harmless(entry.decode("ascii"))
        self.assertEqual(json.loads(entry)["decoded"]["subject"], "CN=" + evil.decode())

    def assert_harmless(self, text):
        self.assertTrue(all(character == "\n" or character.isprintable() for character in text), repr(text))


class Pem(Inspection):
    def test_one_block_is_its_message(self):
        entry = self.json_of("tsa_p256.pem")
        self.assertEqual((entry["kind"], entry["pem"]), ("cert", "CERTIFICATE"))
        self.assertEqual(entry["decoded"], self.decoded("tsa_p256.der", "cert"))
        self.assertIn("tsa_p256.pem: certificate, ", self.text_of("tsa_p256.pem"))

    def test_several_blocks_are_a_list(self):
        text = b"Some words\n" + SAMPLES.read("tsa_p256.pem") + b"and\n" + SAMPLES.read("list.pem")
        SAMPLES.write("two.pem", text)
        entry = self.json_of("two.pem")
        self.assertEqual(entry["kind"], "pem")
        self.assertEqual([block["kind"] for block in entry["blocks"]], ["cert", "crl"])
        self.assertEqual(self.text_of("two.pem").count("two.pem: "), 2)

    def test_block_of_any_label_is_told_by_its_octets(self):
        encoded = base64.encodebytes(SAMPLES.read("full.tsr"))
        SAMPLES.write("response.pem", b"-----BEGIN TOKEN-----\n" + encoded + b"-----END TOKEN-----\n")
        self.assertEqual(self.json_of("response.pem")["kind"], "response")

    def test_private_keys_are_named_and_not_shown(self):
        for name in ("tsa_p256.key", "tsa_p256_encrypted.key", "key.p8"):
            entry = self.json_of(name)
            self.assertEqual((entry["kind"], list(entry["decoded"])), ("private-key", ["type"]))

    def test_broken_block_is_named_by_its_place(self):
        text = b"words\n" + SAMPLES.read("tsa_p256.pem")
        SAMPLES.write("broken.pem", text.replace(b"MII", b"%%%", 1))
        entry = self.json_of("broken.pem", status=1)
        self.assertEqual(entry["faults"][0]["offset"], 6)
        SAMPLES.write("broken.pem", text[:-30])
        self.assertEqual(self.json_of("broken.pem", status=1)["faults"][0]["offset"], 6)

    def test_damaged_message_in_a_block(self):
        octets = SAMPLES.read("tsa_p256.der")[:-1]
        block = b"-----BEGIN CERTIFICATE-----\n" + base64.encodebytes(octets) + b"-----END CERTIFICATE-----\n"
        SAMPLES.write("damaged.pem", SAMPLES.read("tsa_p256.pem") + block)
        entry = self.json_of("damaged.pem", status=1)
        self.assertNotIn("faults", entry["blocks"][0])
        self.assertEqual(entry["blocks"][1]["faults"][0]["offset"], 0)


class Usage(Inspection):
    def test_standard_input(self):
        for name in ("full.tsr", "tsa_p256.pem"):
            entry = self.json_of("-", octets=SAMPLES.read(name))
            self.assertEqual(entry["decoded"], self.json_of(name)["decoded"])
        self.assertTrue(self.run_inspect("-", octets=b"text\n").stdout.startswith(b"standard input: text, 5 octets\n"))

    def test_files_behind_a_broken_one_are_printed(self):
        SAMPLES.write("broken", SAMPLES.read("full.tsr")[:-1])
        entries = self.json_of("full.tsq", "broken", "missing", "rich.der", status=1)
        self.assertEqual([entry["kind"] for entry in entries], ["request", "response", "unreadable", "cert"])
        self.assertEqual(["faults" in entry for entry in entries], [False, True, True, False])
        done = self.run_inspect("full.tsq", "broken", "missing", "rich.der")
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"\nrich.der: certificate, ", done.stdout)
        faults = [line.split(b": ")[1] for line in done.stderr.splitlines()]
        self.assertEqual(faults, [b"broken", b"broken", b"missing"])  # the response, and the token in it
        self.assertIn(b"inspect: missing: No such file or directory\n", done.stderr)

    def test_directory_is_no_file(self):
        self.assertEqual(self.run_inspect(".").stderr, b"inspect: .: Is a directory\n")

    def test_arguments(self):
        for arguments in ((), ("--json",), ("--unknown", "full.tsq")):
            done = self.run_inspect(*arguments)
            self.assertEqual((done.returncode, done.stdout), (1, b""))
            self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)
        self.assertIn(b"--json", self.run_inspect("--help").stdout)

    def test_full_disk_is_noticed(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([INSPECT, SAMPLES.folder / "full.tsr"], stdout=full, stderr=subprocess.PIPE,
                                  check=False, timeout=60)
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"writing to standard output", done.stderr)


class Damaged(Inspection):
    """Where decoding stopped: offsets are those of the elements as another reader finds them."""

    def test_empty_file(self):
        self.expect_fault(b"", 0, "there are no octets", "message")

    def test_octets_that_are_no_element(self):
        self.expect_fault(b"\x00\x01\x02", 0, "no element begins with an octet 00", "message")

    def test_element_beyond_the_end(self):
        for name, what in (("full.tsq", "request"), ("full.tsr", "response"), ("full.tst", "token"),
                           ("stamp.p7", "stamp"), ("rich.der", "certificate"),
                           ("list.crl", "certificate revocation list"), ("mail.p7", "signed message"),
                           ("status.ocr", "OCSP response")):
            octets = SAMPLES.read(name)
            length = len(parse(octets).content)
            self.expect_fault(octets[:-1], 0, f"is {length}, but {length - 1} octets are left", what)

    def test_element_beyond_its_container(self):
        octets = bytearray(SAMPLES.read("plain.der"))
        octets[3] = 9
        self.expect_fault(bytes(octets), 2, "the length of this element (UTF8String) is 9, but 7 octets are left",
                          "SEQUENCE begun by UTF8String")

    def test_request_with_another_element(self):
        request = parse(SAMPLES.read("full.tsq"))
        imprint = request[1]
        imprint[1].tag = 0x05
        self.expect_fault(request.encode(), imprint[1].offset,
                          "MessageImprint has NULL in place of hashedMessage (OCTET STRING", "request")

    def test_request_with_elements_in_another_order(self):
        request = parse(SAMPLES.read("full.tsq"))
        policy, nonce = request[2], request[3]
        request.children[2:4] = [nonce, policy]
        self.expect_fault(request.encode(), policy.offset + len(nonce.encode()),
                          "TimeStampReq has OBJECT IDENTIFIER where", "request")

    def test_request_with_indefinite_length_inside(self):
        request = parse(SAMPLES.read("plain.tsq"))
        imprint = request[1]
        whole = b"\x30\x80" + b"".join(child.encode() for child in imprint.children) + b"\x00\x00"
        octets = der(0x30, request[0].encode(), whole)
        self.expect_fault(octets, imprint.offset, "this element has the indefinite length", "request")

    def test_authenticode_request_with_an_attribute_of_another_type(self):
        request = parse(SAMPLES.read("authenticode.req"))
        request[1][0][1][0].tag = 0x05
        self.expect_fault(request.encode(), request[1][0].offset, "Attribute is refused: CRYPT_E_ASN1_INTERNAL",
                          "request")

    def test_authenticode_request_without_content(self):
        request = parse(SAMPLES.read("authenticode.req"))
        octets = der(0x30, request[0].encode(), request[1].encode())
        self.expect_fault(octets, 0, "TimeStampAuthenticodeRequest ends before content", "request")

    def test_authenticode_request_with_an_empty_set(self):
        request = parse(SAMPLES.read("authenticode.req"))
        octets = der(0x30, request[0].encode(), der(0x31), request[2].encode())
        self.expect_fault(octets, request[1].offset, "attributes is empty", "request")

    def test_response_with_more_failure_bits_than_there_are(self):
        response = parse(SAMPLES.read("rejected.tsr"))
        response[0].first(0x03).content = bytes(6)
        self.expect_fault(response.encode(), response[0].offset, "PKIStatusInfo is refused: CRYPT_E_ASN1_INTERNAL",
                          "response")

    def content(self, token):
        """EncapsulatedContentInfo (RFC 5652 5.2)."""
        return token[1][0][2]

    def test_token_with_another_element_in_its_content(self):
        token = parse(SAMPLES.read("full.tst"))
        string = self.content(token)[1][0]
        info = parse(string.content)
        time = info.first(0x18)
        start = string.offset + len(string.encode()) - len(string.content)
        time.tag = 0x17
        string.content = info.encode()
        self.expect_fault(token.encode(), start + time.offset, "TSTInfo has UTCTime in place of genTime", "token")

    def test_token_of_other_content(self):
        token = parse(SAMPLES.read("full.tst"))
        kind = self.content(token)[0]
        kind.content = DATA
        entry = self.expect_fault(token.encode(), kind.offset, "the content has the type 1.2.840.113549.1.7.1", "token")
        self.assertEqual(entry["faults"][0]["code"], "CRYPT_E_BAD_MSG")
        self.assertEqual(entry["decoded"]["eContentType"], "1.2.840.113549.1.7.1")

    def test_token_that_nobody_signed(self):
        token = parse(SAMPLES.read("full.tst"))
        signed_data = token[1][0]
        signers = signed_data.children[-1]
        signers.children = []
        octets = token.encode()
        entry = self.expect_fault(octets, len(octets) - 2, "nobody has signed", "token")
        self.assertEqual(entry["decoded"]["signers"], 0)
        self.assertEqual(entry["decoded"]["certs"], 2)

    def test_certificate_with_another_element(self):
        certificate = parse(SAMPLES.read("rich.der"))
        key = certificate[0][6][1]
        key.tag = 0x04
        self.expect_fault(certificate.encode(), key.offset,
                          "SubjectPublicKeyInfo has OCTET STRING in place of subjectPublicKey", "certificate")

    def test_revocation_list_with_a_bad_date(self):
        revoked = parse(SAMPLES.read("list.crl"))
        date = revoked[0].children[5][1][1]
        date.content = b"991399999999Z"
        self.expect_fault(revoked.encode(), date.offset, "Time is refused", "certificate revocation list")

    def test_stamp_without_signer(self):
        stamp = parse(SAMPLES.read("mail.p7"))
        stamp[1][0].children.pop()
        octets = stamp.encode()
        self.expect_fault(octets, parse(octets)[1][0].offset, "SignedData ends before signerInfos", "signed message")

    def add_attribute_certificate(self, message, token):
        """One of version 2 (RFC 5652 10.2.2), which the service steps over and the codec does not know."""
        certificates = token[1][0].first(0xA0)
        certificates.children.append(Node(0xA2, b"\x02\x01\x01"))
        octets = message.encode()
        return octets, octets.rindex(b"\xa2\x03\x02\x01\x01")

    def test_token_inside_a_refused_response_is_read(self):
        response = parse(SAMPLES.read("full.tsr"))
        octets, offset = self.add_attribute_certificate(response, response[1])
        entry = self.expect_fault(octets, offset, "certificates has [2] in place of CertificateChoices", "response")
        self.assertEqual(len(entry["faults"]), 1)
        self.assertEqual(entry["decoded"], {"status": 0, **self.json_of("full.tst")["decoded"]})
        text = self.run_inspect("damaged").stdout.decode()
        self.assertIn("  Token, read by itself\n", text)
        self.expect_fact(text, "Policy", r"1\.2\.3\.4\.1")

    def test_token_with_that_certificate_is_read(self):
        token = parse(SAMPLES.read("full.tst"))
        octets, _ = self.add_attribute_certificate(token, token)
        SAMPLES.write("attribute.tst", octets)
        self.assertEqual(self.json_of("attribute.tst")["decoded"]["certs"], 2)

    def test_refused_response_with_a_refused_token(self):
        response = parse(SAMPLES.read("full.tsr"))
        kind = self.content(response[1])[0]
        kind.content = DATA
        entry = self.expect_fault(response.encode(), kind.offset, "the content has the type", "response")
        self.assertEqual([fault["what"] for fault in entry["faults"]], ["response", "token"])
        self.assertEqual(entry["faults"][1]["offset"], kind.offset)
        self.assertEqual(entry["decoded"]["status"], 0)


class Hostile(Inspection):
    """Nothing that a file holds ends the program or reaches the terminal."""

    def inspect_all(self, messages):
        names = []
        for index, octets in enumerate(messages):
            names.append(f"hostile{index}")
            SAMPLES.write(names[-1], octets)
        for arguments in (["--json"], []):
            done = self.run_inspect(*arguments, *names)
            text = (done.stdout + done.stderr).decode()
            bad = {character for character in text if character != "\n" and not character.isprintable()}
            # Characters that print nothing visible may still be letters of a script.
            self.assertFalse({character for character in bad if ord(character) < 0xA0}, bad)
            if arguments:
                entries = [json.loads(line) for line in done.stdout.splitlines()]
                self.assertEqual([entry["file"] for entry in entries], names)

    KINDS = ("full.tsq", "full.tsr", "full.tst", "plain.tsr", "rejected.tsr", "authenticode.req", "stamp.p7", "rich.der", "list.crl",
             "by_key_identifier.p7", "status.ocr", "two.pem")

    @classmethod
    def setUpClass(cls):
        SAMPLES.write("two.pem", SAMPLES.read("tsa_p256.pem") + SAMPLES.read("list.pem"))

    def test_truncated_messages(self):
        for name in self.KINDS:
            octets = SAMPLES.read(name)
            self.inspect_all(octets[:length] for length in range(0, len(octets), max(1, len(octets) // 100)))

    def test_mutated_messages(self):
        randomness = random.Random(3161)
        for name in self.KINDS:
            octets = SAMPLES.read(name)
            self.inspect_all(mutated(octets, randomness) for _ in range(150))

    def test_nested_elements(self):
        definite = b""
        for _ in range(20000):
            definite = der(0x30, definite)
        self.inspect_all((definite, b"\x30\x80" * 50000, b"\x30\x80" * 50000 + b"\x00\x00" * 50000, b"\xa0\x80" * 40,
                          b"\x24\x80" * 1000))

    def test_nested_elements_within_a_message(self):
        deep = b""
        for _ in range(20000):
            deep = der(0x30, deep)
        request = parse(SAMPLES.read("plain.tsq"))
        request[1][0].children = [request[1][0][0], Node(0x30, deep)]
        token = parse(SAMPLES.read("full.tst"))
        info = parse(self_content(token).content)
        info.children.insert(3, Node(0x30, deep))
        self_content(token).content = info.encode()
        self.inspect_all((request.encode(), token.encode()))


def self_content(token):
    return token[1][0][2][1][0]


def mutated(octets, randomness):
    changed = bytearray(octets)
    for _ in range(randomness.randint(1, 4)):
        position = randomness.randrange(len(changed))
        action = randomness.randrange(4)
        if action == 0:
            changed[position] = randomness.randrange(256)
        elif action == 1:
            changed[position] ^= 1 << randomness.randrange(8)
        elif action == 2:
            del changed[position:position + randomness.randint(1, 8)]
        else:
            changed[position:position] = randomness.randbytes(randomness.randint(1, 4))
    return bytes(changed)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
