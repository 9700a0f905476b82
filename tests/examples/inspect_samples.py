"""Messages of all kinds by the openssl command, and what that command says is in them."""

import datetime
import re
import shutil
import subprocess

from ber import der

AUTHENTICODE_REQUEST = """asn1 = SEQUENCE:request
[request]
algorithm = OID:1.3.6.1.4.1.311.3.2.1
attributes = SET:attributes
content = SEQUENCE:content
[attributes]
time = SEQUENCE:attribute
[attribute]
type = OID:1.2.840.113549.1.9.5
values = SET:values
[values]
time = UTC:240229235958Z
[content]
type = OID:1.2.840.113549.1.7.1
data = EXPLICIT:0,FORMAT:HEX,OCTETSTRING:00112233
"""

TSA_CONFIGURATION = """
[tsa_plain]
serial = ./serial_plain
crypto_device = builtin
signer_cert = ./tsa_rsa2048.pem
signer_key = ./tsa_rsa2048.key
signer_digest = sha256
default_policy = 1.2.3.4.1
digests = sha256
ordering = yes
tsa_name = no
ess_cert_id_chain = no
ess_cert_id_alg = sha1
"""

CA_CONFIGURATION = """
[ca]
default_ca = authority
[authority]
database = index.txt
crlnumber = crlnumber
default_md = sha256
default_crl_days = 30
crl_extensions = list
[list]
authorityKeyIdentifier = keyid
[request]
distinguished_name = name
[name]
[rich]
basicConstraints = critical,CA:TRUE,pathlen:0
keyUsage = critical,keyCertSign,cRLSign
extendedKeyUsage = timeStamping,1.2.3.4
subjectKeyIdentifier = hash
subjectAltName = DNS:tsa.example,email:tsa@example.org,URI:http://tsa.example/,IP:192.0.2.1,dirName:name_of,RID:1.2.3
authorityInfoAccess = OCSP;URI:http://ocsp.example/,caIssuers;URI:http://ca.example/ca.cer
crlDistributionPoints = URI:http://crl.example/list.crl
certificatePolicies = 1.2.3.4.5
1.2.3.4.6 = ASN1:UTF8String:private
[name_of]
CN = Directory
"""


class Samples:
    """A folder of files; `folder / name` is where each of them is."""

    def __init__(self, folder, pki):
        self.folder = folder
        shutil.copytree(pki, folder, dirs_exist_ok=True)
        self.write("file", b"what is stamped")
        with open(folder / "tsa.cnf", "a", encoding="utf-8") as configuration:
            configuration.write(TSA_CONFIGURATION)
        self.write("ca.cnf", CA_CONFIGURATION.encode())
        self.make_stamps()
        self.make_certificates()
        self.make_revocation_lists()
        self.make_messages()

    def write(self, name, contents):
        (self.folder / name).write_bytes(contents)

    def read(self, name):
        return (self.folder / name).read_bytes()

    def openssl(self, *arguments, check=True):
        done = subprocess.run(["openssl", *map(str, arguments)], cwd=self.folder, capture_output=True, text=True,
                              check=False, timeout=60)
        if check and done.returncode != 0:
            raise AssertionError(f"openssl {arguments}: {done.stderr}")
        return done.stdout

    def make_stamps(self):
        query = ("ts", "-query", "-data", "file")
        self.openssl(*query, "-sha512", "-cert", "-tspolicy", "1.2.3.4.1", "-out", "full.tsq")
        self.openssl(*query, "-sha256", "-no_nonce", "-out", "plain.tsq")
        self.openssl(*query, "-sha256", "-tspolicy", "1.2.3.4.9", "-out", "other_policy.tsq")
        reply = ("ts", "-reply", "-config", "tsa.cnf", "-section")
        self.openssl(*reply, "tsa_p256", "-queryfile", "full.tsq", "-out", "full.tsr")
        self.openssl(*reply, "tsa_plain", "-queryfile", "plain.tsq", "-out", "plain.tsr")
        # For OpenSSL a rejection is a failure, though it writes one.
        self.openssl(*reply, "tsa_p256", "-queryfile", "other_policy.tsq", "-out", "rejected.tsr", check=False)
        for name in ("full", "plain"):
            self.openssl("ts", "-reply", "-in", f"{name}.tsr", "-token_out", "-out", f"{name}.tst")

    def make_certificates(self):
        self.openssl("req", "-new", "-key", "tsa_rsa2048.key", "-subj", "/C=XX/O=Quotes, \"and\" \\+ more/CN=Rich",
                     "-config", "ca.cnf", "-out", "rich.csr")
        self.openssl("req", "-in", "rich.csr", "-outform", "DER", "-out", "request.p10")
        self.openssl("x509", "-req", "-in", "rich.csr", "-CA", "ca.pem", "-CAkey", "ca.key", "-set_serial", "0x0123",
                     "-days", "30", "-extfile", "ca.cnf", "-extensions", "rich", "-outform", "DER", "-out", "rich.der")

    def make_revocation_lists(self):
        self.write("index.txt", b"")
        self.write("index.txt.attr", b"")
        self.write("crlnumber", b"1234\n")
        authority = ("ca", "-config", "ca.cnf", "-cert", "ca.pem", "-keyfile", "ca.key")
        self.openssl(*authority, "-gencrl", "-out", "empty.pem")
        self.openssl(*authority, "-revoke", "tsa_p384.pem", "-crl_reason", "keyCompromise")
        self.openssl(*authority, "-revoke", "tsa_pss.pem")
        self.openssl(*authority, "-gencrl", "-out", "list.pem")
        for name in ("empty", "list"):
            self.openssl("crl", "-in", f"{name}.pem", "-outform", "DER", "-out", f"{name}.crl")

    def make_messages(self):
        sign = ("cms", "-sign", "-binary", "-nodetach", "-in", "file", "-signer", "tsa_rsa2048.pem", "-inkey",
                "tsa_rsa2048.key", "-outform", "DER")
        # Without the capabilities of mail programs: just the three attributes of an Authenticode stamp.
        self.openssl(*sign, "-nosmimecap", "-out", "stamp.p7")
        self.openssl(*sign, "-out", "mail.p7")
        self.openssl(*sign, "-keyid", "-out", "by_key_identifier.p7")
        self.write("authenticode.cnf", AUTHENTICODE_REQUEST.encode())
        self.openssl("asn1parse", "-genconf", "authenticode.cnf", "-noout", "-out", "authenticode.req")
        self.openssl("cms", "-encrypt", "-binary", "-in", "file", "-outform", "DER", "-out", "enveloped.p7",
                     "tsa_rsa2048.pem")
        self.openssl("cms", "-digest_create", "-in", "file", "-outform", "DER", "-out", "digested.p7")
        self.openssl("ocsp", "-issuer", "ca.pem", "-cert", "tsa_p256.pem", "-reqout", "status.ocq")
        self.openssl("ocsp", "-index", "index.txt", "-rsigner", "ca.pem", "-rkey", "ca.key", "-CA", "ca.pem", "-reqin",
                     "status.ocq", "-respout", "status.ocr")
        self.openssl("pkcs8", "-topk8", "-nocrypt", "-in", "tsa_p256.key", "-outform", "DER", "-out", "key.p8")
        self.openssl("pkey", "-in", "tsa_p256.key", "-pubout", "-outform", "DER", "-out", "key.pub")
        name = der(0xA4, der(0x30))
        # The header of a PKIMessage and a body of kind genm (RFC 4210 5.1).
        self.write("general.cmp", der(0x30, der(0x30, b"\x02\x01\x02", name, name), der(0xB5, der(0x30))))
        self.write("plain.der", der(0x30, der(0x0C, b"text"), der(0x01, b"\xff")))

    def stamp_by_openssl(self, name):
        """The values of a token or a response as "decoded" has them."""
        kind = ["-token_in"] if name.endswith(".tst") else []
        text = self.openssl("ts", "-reply", "-in", name, *kind, "-text")
        fields = dict(re.findall(r"^([A-Z][A-Za-z ]+): (.*)$", text, re.MULTILINE))
        decoded = {} if kind else {"status": 0}
        # OpenSSL has names of its own for a few policies of its test configuration.
        decoded["policy"] = {"tsa_policy1": "1.2.3.4.1"}.get(fields["Policy OID"], fields["Policy OID"])
        decoded["hash"] = fields["Hash Algorithm"]
        decoded["imprint"] = hex_dump(text.partition("Message data:")[2].partition("Serial")[0])
        decoded["serial"] = content_octets(fields["Serial number"])
        decoded["genTime"] = generalized_time(fields["Time stamp"])
        decoded["accuracy"] = accuracy(fields["Accuracy"])
        decoded["ordering"] = "ff" if fields["Ordering"] == "yes" else None
        decoded["nonce"] = None if fields["Nonce"] == "unspecified" else content_octets(fields["Nonce"])
        decoded["tsa"] = fields["TSA"] != "unspecified"
        decoded["ext"] = None
        decoded["eContentType"] = "1.2.840.113549.1.9.16.1.4"
        return decoded


def hex_dump(text):
    """The octets of lines like "0000 - aa bb-cc   ...."."""
    lines = [line.strip() for line in text.splitlines() if " - " in line]
    return "".join(re.sub("[ -]", "", line[7:54]) for line in lines)


def content_octets(number):
    """Content octets of the INTEGER (X.690 8.3) that is written as 0x...; the text has no sign."""
    value = int(number, 16)
    return value.to_bytes(value.bit_length() // 8 + 1, "big").hex()


def generalized_time(text):
    return datetime.datetime.strptime(text, "%b %d %H:%M:%S %Y GMT").strftime("%Y%m%d%H%M%SZ")


def accuracy(text):
    if text == "unspecified":
        return None
    parts = re.findall(r"(0x[0-9A-F]+|unspecified) (seconds|millis|micros)", text)
    keys = {"seconds": "s", "millis": "ms", "micros": "us"}
    return {keys[unit]: int(value, 16) for value, unit in parts if value != "unspecified"}
