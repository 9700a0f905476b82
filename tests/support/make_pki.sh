#!/bin/sh
# Makes the keys and certificates of the tests with the openssl command: make_pki.sh DIRECTORY
#
# Does nothing when the directory already holds what this version of the script makes. Files in it:
#
#   ca.pem ca.der ca.key              the authority of all but the `other_` certificates
#   tsa_<kind>.key                    private key of a time-stamp authority, PKCS #8 PEM without password; <kind> is
#                                     rsa2048, p256, p384, pss (an id-RSASSA-PSS key), ed25519
#   tsa_<kind>.pem tsa_<kind>.der     its certificate: critical extended key usage timeStamping
#   other_ca.pem other_tsa.key other_tsa.pem other_tsa.der
#                                     an unrelated authority and its time-stamp authority (P-256)
#   tsa_p256_traditional.key          "EC PRIVATE KEY" behind "EC PARAMETERS"
#   tsa_p256_pkcs8.der                PKCS #8, DER
#   tsa_p256_encrypted.key            PKCS #8 PEM with the password "secret"
#   tsa_p256.p12                      PKCS #12 of key and certificate with the password "secret"
#   tsa_p256_empty.p12                the same with an empty password
#   tsa_p256_public.pem               the public key alone
#   two_keys.pem                      the private keys of tsa_rsa2048 and tsa_p256, in this order
#   tsa.cnf                           configuration for `openssl ts -reply -section tsa_<kind>` (run it in the directory)
set -eu

directory=$1
script=$(cd "$(dirname "$0")" && pwd)/$(basename "$0")
if [ -f "$directory/complete" ] && cmp -s "$script" "$directory/complete"; then
    exit 0
fi
rm -rf "$directory"
mkdir -p "$directory"
cd "$directory"

cat > extensions.cnf <<END
[req]
distinguished_name = name
[name]
[ca]
basicConstraints = critical,CA:TRUE
keyUsage = critical,keyCertSign,cRLSign
subjectKeyIdentifier = hash
[tsa]
basicConstraints = critical,CA:FALSE
keyUsage = critical,digitalSignature,nonRepudiation
extendedKeyUsage = critical,timeStamping
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
END

# make_authority NAME COMMON_NAME
make_authority() {
    openssl genpkey -quiet -algorithm EC -pkeyopt ec_paramgen_curve:P-256 -out "$1.key"
    openssl req -x509 -new -key "$1.key" -sha256 -days 3650 -subj "/C=XX/O=Test/CN=$2" \
        -config extensions.cnf -extensions ca -out "$1.pem"
    openssl x509 -in "$1.pem" -outform DER -out "$1.der"
}

# certify NAME AUTHORITY SERIAL COMMON_NAME, for the key in NAME.key
certify() {
    openssl req -new -key "$1.key" -subj "/C=XX/O=Test/CN=$4" -config extensions.cnf -out "$1.csr"
    openssl x509 -req -in "$1.csr" -CA "$2.pem" -CAkey "$2.key" -set_serial "$3" -sha256 -days 3650 \
        -extfile extensions.cnf -extensions tsa -out "$1.pem"
    openssl x509 -in "$1.pem" -outform DER -out "$1.der"
    rm "$1.csr"
}

# add_section KIND DIGEST
add_section() {
    cat >> tsa.cnf <<END
[tsa_$1]
serial = ./serial_$1
crypto_device = builtin
signer_cert = ./tsa_$1.pem
signer_key = ./tsa_$1.key
certs = ./ca.pem
signer_digest = $2
default_policy = 1.2.3.4.1
digests = sha1, sha224, sha256, sha384, sha512
accuracy = secs:1, millisecs:500
ordering = no
tsa_name = yes
ess_cert_id_chain = no
ess_cert_id_alg = sha256
END
}

make_all() {
    make_authority ca "Test Authority"
    openssl genpkey -quiet -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out tsa_rsa2048.key
    openssl genpkey -quiet -algorithm EC -pkeyopt ec_paramgen_curve:P-256 -out tsa_p256.key
    openssl genpkey -quiet -algorithm EC -pkeyopt ec_paramgen_curve:P-384 -out tsa_p384.key
    openssl genpkey -quiet -algorithm RSA-PSS -pkeyopt rsa_keygen_bits:2048 -out tsa_pss.key
    openssl genpkey -quiet -algorithm ED25519 -out tsa_ed25519.key
    # Serial numbers: small, with a sign octet, and twenty octets long.
    certify tsa_rsa2048 ca 0x11 "Test TSA RSA"
    certify tsa_p256 ca 0xF123456789ABCDEF "Test TSA P-256"
    certify tsa_p384 ca 0x7F000102030405060708090A0B0C0D0E0F101112 "Test TSA P-384"
    certify tsa_pss ca 0x1000 "Test TSA PSS"
    certify tsa_ed25519 ca 0x80 "Test TSA Ed25519"

    make_authority other_ca "Other Authority"
    openssl genpkey -quiet -algorithm EC -pkeyopt ec_paramgen_curve:P-256 -out other_tsa.key
    certify other_tsa other_ca 0x11 "Other TSA"

    { openssl ecparam -name prime256v1; openssl pkey -in tsa_p256.key -traditional; } > tsa_p256_traditional.key
    openssl pkcs8 -topk8 -nocrypt -in tsa_p256.key -outform DER -out tsa_p256_pkcs8.der
    openssl pkcs8 -topk8 -in tsa_p256.key -passout pass:secret -out tsa_p256_encrypted.key
    openssl pkcs12 -export -inkey tsa_p256.key -in tsa_p256.pem -passout pass:secret -out tsa_p256.p12
    openssl pkcs12 -export -inkey tsa_p256.key -in tsa_p256.pem -passout pass: -out tsa_p256_empty.p12
    openssl pkey -in tsa_p256.key -pubout -out tsa_p256_public.pem
    cat tsa_rsa2048.key tsa_p256.key > two_keys.pem

    : > tsa.cnf
    add_section rsa2048 sha256
    add_section p256 sha256
    add_section p384 sha384
}

make_all 2> log || { cat log >&2; exit 1; }
cp "$script" complete
