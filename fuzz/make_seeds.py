"""Makes what the fuzz targets start from: encodings of the test vectors, of OpenSSL's commands and of this library's
own, one file each in OUT/<target>/, and dictionaries OUT/der.dict and OUT/text.dict of pieces of them.

Does nothing when the folder already holds what this version makes."""

import argparse
import hashlib
import shutil
import subprocess
import sys
from pathlib import Path

# Classes of the object layer, and the types of the catalogue that they read.
CLASSES = {
    "CAlgorithmIdentifier": ["AlgorithmIdentifier"],
    "CExtension": ["Extension"],
    "CExtensions": ["Extensions"],
    "CAttribute": ["Attribute"],
    "CAttributes": ["SignedAttributes", "UnauthAttributes"],
    "CContentInfo": ["ContentInfo", "TimeStampToken"],
    "CBigInteger": ["CertificateSerialNumber"],
    "CGeneralName": ["GeneralName"],
    "CGeneralNames": ["GeneralNames"],
    "CAttributeTypeAndValue": ["AttributeTypeAndValue"],
    "CRelativeDistinguishedName": ["RelativeDistinguishedName"],
    "CName": ["Name"],
    "CPKIFailureInfo": ["PKIFailureInfo"],
    "CPKIStatusInfo": ["PKIStatusInfo"],
    "CReasonFlags": ["ReasonFlags"],
    "CTimeChoice": ["Time"],
    "CCertificateValue": ["Certificate"],
    "CCertificateValues": ["CertificateValues"],
    "CPolicyInformation": ["PolicyInformation"],
    "CPolicyInformationList": ["CertificatePoliciesSyntax"],
    "CInfoTypeAndValue": ["InfoTypeAndValue"],
    "CInfoTypeAndValueList": ["GenMsgContent", "GenRepContent"],
    "CIssuerSerial": ["IssuerSerial"],
    "CESSCertID": ["ESSCertID"],
    "CESSCertIDv2": ["ESSCertIDv2"],
    "COtherCertID": ["OtherCertID"],
    "COtherHashAlgAndValue": ["OtherHashAlgAndValue"],
    "COtherHash": ["OtherHash"],
    "CCertId": ["CertId"],
    "CRevAnnContent": ["RevAnnContent"],
    "CAuthorityInfoAccessSyntax": ["AuthorityInfoAccessSyntax"],
    "CDistributionPointName": ["DistributionPointName"],
    "CCRLDistPointsSyntax": ["CRLDistPointsSyntax"],
    "CAttrContentType": ["ContentType"],
    "CAttrMessageDigest": ["MessageDigest"],
    "CAttrSigningTime": ["SigningTime"],
    "CExtCRLReason": ["CRLReason"],
    "CExtHoldInstructionCode": ["HoldInstruction", "ContentType"],
    "CExtInvalidityDate": ["InvalidityDate"],
    "CExtCertificateIssuer": ["GeneralNames"],
    "CExtPrivateKeyUsagePeriod": ["PrivateKeyUsagePeriod"],
    "CAttrSigningCertificate": ["SigningCertificate"],
    "CAttrSigningCertificateV2": ["SigningCertificateV2"],
    "CAttrOtherSigningCertificate": ["OtherSigningCertificate"],
    "CSignerInfo": ["SignerInfo"],
    "OctetString": ["MessageDigest"],
}
STRINGS = ["0c0761d096f09f9880", "1201 39", "130141", "140141", "160141", "1e0400410416", "1c080000004100000416"]
MESSAGES = {
    "request": ["TimeStampReq"],
    "response": ["TimeStampResp"],
    "token": ["TimeStampToken", "ContentInfo"],
    "cms_request": ["TimeStampAuthenticodeRequest"],
    "cms_stamp": ["TimeStampToken"],
    "service_message": ["TimeStampToken", "ContentInfo"],
    "service_certificate": ["Certificate"],
}

TEXTS = {
    "object_id_text": ["1.2.840.113549.1.9.16.1.4", "2.999.1", "0.0", "2.25.4294967295", "1.2.", " 1 .+2"],
    "big_integer_text": ["\0\0" + text for text in ("0", "-1", "255", "-128", "0xff", "0b101", "0o17", "1" * 60)]
    + ["\4\0" + "0f" * 30, "\1\0" + "01" * 30],
    "hexadecimal_text": ["\1DEADBEEF", "\0de ad\nbe ef", "\4 00 1", "\x08" + "0123456789abcdef" * 4],
    "name_text": [prefix + text for prefix in "\0\1" for text in (
        "CN=Alpha", "CN=Time Stamping,O=Example,C=RU", "CN=A+SN=B", "1.2.3=#0C0141", "E=a@b,DC=c", "OU=\u042f,2.5.4.99=#0500")],
    "character_text": [prefix + text for prefix in "\0\1\2" for text in (
        "text", "\u0416\u20ac\U0001f600", "a\u0301", "\x7f\u0080\u07ff\u0800\uffff\U00010000")],
    "time_text": [prefix + text for prefix in "\0\4" for text in (
        "20240229123456.789Z", "2024022912", "202402291234+0130", "240229123456Z", "2402291234-0100",
        "2024-02-29T12:34:56.789Z", "2024-02-29T12:34:56+14:00", "19500101000000Z", "99991231235959.999999Z")]
    + [kind + "\x0f20240229123456Z\1\0\7\xe8\1\0\2\2\0\x1d\3\0\x17\4\0\0\5\0\7" for kind in "\1\2"]
    + ["\3\1" + unit + "\0\0\0\1\x10\0\0\0" for unit in "snhdwmy"],
}
TEXT_WORDS = ["CN=", "O=", "=#", ",", "+", "0x", "0b", "0o", "-", "Z", "T", ".", "+0300", "2.25.", "1.2.840.", "\u0416"]

HOUR = bytes.fromhex("0000000350d7f000")  # seconds since 1601
SIGNED = [  # flags and lengths as fuzz/signing.cpp takes them
    b"\0\1\1\x20" + b"h" * 32 + b"\2\1\2" + HOUR + b"\0\0\0\0" + bytes([options]) + rest
    for options, rest in (
        (0, b""), (1, b""), (2, b"\0\0\0\1\0\2\0\3"), (4, b"\4nonc"), (8, b"\0"), (8, b"\3\3a.b"), (8, b"\2\4\x7f\0\0\1"),
        (16, b"\5" b"1.2.3\2\5\0\1"), (32, b"\1\5" b"1.2.3\2\1\3abc\1\1z"), (64, b"\1\5" b"1.2.3\1\0\2\5\0"), (128, b""),
        (255, b"\0\0\0\1\0\2\0\3\1\7\0\1\5" b"1.2.3\2\5\0\1\1\5" b"1.2.3\1\1\3abc\1\5" b"1.2.4\1\0\2\5\0"),
    )
] + [b"\1" + HOUR + b"\0\0\0\0\x10" + b"signature value.\0\0\3\1", b"\1" + HOUR + b"\0\0\0\0\4\4\2ab\1"]

TAGS = [0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x0A, 0x0C, 0x13, 0x16, 0x17, 0x18, 0x1C, 0x1E, 0x24, 0x30, 0x31, 0xA0, 0xA1,
        0xA2, 0xA3, 0xA4, 0x80, 0x81, 0x82, 0x86, 0x87, 0x88]
PIECES = ["0000", "0500", "0101ff", "020101", "020103", "3000", "3100", "0400", "0403020102", "3080", "a080", "2480",
          "81ff", "84ffffffff", "847fffffff", "84ffffd8f1", "8500", "830000ff", "ff7f", "1f8100", "bf01"]


def read_vectors(folder):
    """(type, name, octets) of each row of the vector files."""
    for file in sorted(folder.glob("types*.txt")):
        fields = {}
        key = ""
        for line in [*file.read_text(encoding="ascii").splitlines(), ""]:
            if line.startswith("#"):
                continue
            if not line.strip():
                if fields:
                    yield fields["Type"], fields["Name"], bytes.fromhex(fields["Der"])
                fields = {}
            elif line[0].isspace():
                fields[key] += line
            else:
                key, _, value = line.partition(" = ")
                fields[key] = value


def choices(replay):
    """{target: {name: the octets that choose it}}"""
    found = {}
    output = subprocess.run([replay, "--choices"], check=True, capture_output=True, text=True).stdout
    for line in output.splitlines():
        target, name, octets = line.split()
        found.setdefault(target, {})[name] = bytes.fromhex(octets)
    return found


class Seeds:
    def __init__(self, folder):
        self.folder = folder

    def add(self, target, name, octets):
        folder = self.folder / target
        folder.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(octets)


def add_vectors(seeds, vectors, chosen):
    for type_name, row, der in vectors:
        octets = chosen["catalogue"].get(type_name)
        if octets is None:
            sys.exit(f"make_seeds.py: the catalogue has no type {type_name}")
        seeds.add("catalogue", f"{type_name}-{row}", octets + der)
        for class_name, types in CLASSES.items():
            if type_name in types:
                seeds.add("objects", f"{class_name}-{type_name}-{row}", chosen["objects"][class_name] + der)
        for target, types in MESSAGES.items():
            if type_name in types:
                seeds.add(target, f"{type_name}-{row}", der)
    for string in STRINGS:
        seeds.add("objects", f"CharacterString-{string[:2]}", chosen["objects"]["CharacterString"] + bytes.fromhex(string))
    for class_name in chosen["objects"]:
        if not any((seeds.folder / "objects").glob(f"{class_name}-*")):
            sys.exit(f"make_seeds.py: no test vector is one that {class_name} reads")


def run_openssl(folder, command):
    done = subprocess.run(["openssl", *command.split()], cwd=folder, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"make_seeds.py: openssl {command}: {done.stderr}")


def make_messages(work, pki):
    """What OpenSSL's commands make: {target: {name: octets}}."""
    content = work / "content"
    content.write_bytes(bytes.fromhex("3003020105"))
    made = {target: {} for target in ("request", "response", "token", "cms_stamp", "service_message")}
    queries = {"plain": "-sha256", "full": "-sha512 -cert -tspolicy 1.2.3.4.1", "bare": "-sha1 -no_nonce"}
    for name, options in queries.items():
        run_openssl(work, f"ts -query -data content {options} -out query")
        made["request"][name] = (work / "query").read_bytes()
        for kind in ("rsa2048", "p256"):
            reply = f"ts -reply -config tsa.cnf -section tsa_{kind} -queryfile {work}/query -out {work}/reply"
            run_openssl(pki, reply)
            made["response"][f"{name}_{kind}"] = (work / "reply").read_bytes()
            run_openssl(pki, reply + " -token_out")
            made["token"][f"{name}_{kind}"] = (work / "reply").read_bytes()
    signing = {
        "attributes": "cms -sign -binary -nodetach", "no_attributes": "cms -sign -binary -nodetach -noattr",
        "bare": "cms -sign -binary -nodetach -nocerts -nosmimecap", "key_identifier": "cms -sign -binary -nodetach -keyid",
        "detached": "cms -sign -binary", "indefinite": "cms -sign -binary -nodetach -stream -indef",
        "tst_info": "cms -sign -binary -nodetach -econtent_type 1.2.840.113549.1.9.16.1.4",
        "chain": f"cms -sign -binary -nodetach -certfile {pki}/ca.pem", "cades": "cms -sign -binary -nodetach -cades",
        "pkcs7": "smime -sign -binary -nodetach", "sha1": "cms -sign -binary -nodetach -md sha1",
    }
    for kind in ("rsa2048", "p256", "pss"):
        for name, command in signing.items():
            if kind == "pss" and name not in ("attributes", "bare"):
                continue
            key = f"-signer {pki}/tsa_{kind}.pem -inkey {pki}/tsa_{kind}.key"
            run_openssl(work, f"{command} -outform DER -in content -out message {key}")
            for target in ("service_message", "cms_stamp", "token"):
                made[target][f"{name}_{kind}"] = (work / "message").read_bytes()
    made["service_message"].update(made["token"])
    return made


def object_ids(octets, found):
    """Collects what looks like an OBJECT IDENTIFIER anywhere in `octets`."""
    for at in range(len(octets) - 2):
        length = octets[at + 1]
        if octets[at] == 0x06 and 0 < length < 20 and at + 2 + length <= len(octets):
            content = octets[at + 2 : at + 2 + length]
            if content[-1] < 0x80:
                found.add(octets[at : at + 2 + length])


def quoted(octets):
    return '"' + "".join(f"\\x{octet:02X}" for octet in octets) + '"\n'


def write_dictionaries(out, vectors):
    found = set()
    for _, _, der in vectors:
        object_ids(der, found)
    pieces = [bytes([tag]) for tag in TAGS] + [bytes.fromhex(piece) for piece in PIECES] + sorted(found)
    (out / "der.dict").write_text("".join(map(quoted, pieces)), encoding="ascii")
    (out / "text.dict").write_text("".join(quoted(word.encode()) for word in TEXT_WORDS), encoding="ascii")


def fingerprint(vectors, chosen, pki):
    digest = hashlib.sha256(Path(__file__).read_bytes())
    digest.update(repr((vectors, chosen)).encode())
    digest.update((pki / "tsa_p256.der").read_bytes())
    return digest.hexdigest()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--replay", required=True, help="the program fuzz_replay")
    parser.add_argument("--pki", required=True, type=Path, help="the folder of test keys and certificates")
    parser.add_argument("--vectors", required=True, type=Path, help="the folder of test vectors")
    parser.add_argument("--out", required=True, type=Path)
    arguments = parser.parse_args()

    vectors = list(read_vectors(arguments.vectors))
    chosen = choices(arguments.replay)
    made_before = arguments.out / "complete"
    version = fingerprint(vectors, chosen, arguments.pki)
    if made_before.is_file() and made_before.read_text(encoding="ascii") == version:
        return
    shutil.rmtree(arguments.out, ignore_errors=True)
    work = arguments.out / "work"
    work.mkdir(parents=True)
    seeds = Seeds(arguments.out)
    add_vectors(seeds, vectors, chosen)
    for target, messages in make_messages(work.resolve(), arguments.pki.resolve()).items():
        for name, octets in messages.items():
            seeds.add(target, f"openssl_{name}", octets)
    for certificate in sorted(arguments.pki.glob("*tsa_*.der")):
        seeds.add("service_certificate", certificate.name, certificate.read_bytes())
    for target, texts in TEXTS.items():
        for number, text in enumerate(texts):
            seeds.add(target, str(number), text.encode("utf-8" if max(text) > "\xff" else "latin-1"))
    for number, octets in enumerate(SIGNED):
        seeds.add("signing", str(number), octets)
    write_dictionaries(arguments.out, vectors)
    shutil.rmtree(work)
    made_before.write_text(version, encoding="ascii")


if __name__ == "__main__":
    main()
