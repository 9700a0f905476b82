#!/bin/sh
# Makes keys and certificates of GOST R 34.10 with the openssl command and its engine: make_gost.sh PKI
#
# PKI is what make_pki.sh made; the files go into PKI/gost. Does nothing when they are there already. Without the
# engine (Debian: libengine-gost-openssl) the only file is `absent`, which says so, and the tests are skipped.
#
#   ca.pem                            the authority (GOST R 34.10-2012, 256 bits)
#   tsa_<kind>.key .pem .der          private key of a time-stamp authority, PKCS #8 PEM without password, and its
#                                     certificate; <kind> is gost2012_256, gost2012_512, gost2001
#   tsa_gost2012_256.p12              key and certificate with the password "secret", encrypted with AES
#   tsa_gost2012_256_gost.p12         the same, encrypted and protected with GOST algorithms
#   openssl.cnf                       configuration (OPENSSL_CONF) for commands without an option for an engine
#   tsa.cnf                           the same for `openssl ts -reply -section tsa_<kind>`; run it in the directory
set -eu

directory=$1/gost
script=$(cd "$(dirname "$0")" && pwd)/$(basename "$0")
if [ -f "$directory/complete" ] && cmp -s "$script" "$directory/complete"; then
    exit 0
fi
rm -rf "$directory"
mkdir -p "$directory"
cd "$directory"

if ! openssl engine gost > log 2>&1; then
    echo "OpenSSL's engine gost is not installed (Debian: libengine-gost-openssl)" > absent
    exit 0
fi

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

cat > openssl.cnf <<END
openssl_conf = init
[init]
engines = engines
[engines]
gost = gost
[gost]
engine_id = gost
default_algorithms = ALL
END

# new_key KIND NAME
new_key() {
    openssl genpkey -quiet -engine gost -algorithm "$1" -pkeyopt paramset:A -out "$2.key"
}

# certify KIND SERIAL DIGEST
certify() {
    openssl req -engine gost -new -key "tsa_$1.key" -subj "/C=XX/O=Test/CN=Test TSA $1" -config extensions.cnf \
        -out "tsa_$1.csr"
    openssl x509 -engine gost -req -in "tsa_$1.csr" -CA ca.pem -CAkey ca.key -set_serial "$2" -days 3650 \
        -extfile extensions.cnf -extensions tsa -out "tsa_$1.pem"
    openssl x509 -in "tsa_$1.pem" -outform DER -out "tsa_$1.der"
    rm "tsa_$1.csr"
    cat >> tsa.cnf <<END
[tsa_$1]
serial = ./serial_$1
signer_cert = ./tsa_$1.pem
signer_key = ./tsa_$1.key
certs = ./ca.pem
signer_digest = $3
default_policy = 1.2.3.4.1
digests = sha256, $3
ess_cert_id_alg = sha256
END
}

make_all() {
    cp openssl.cnf tsa.cnf
    new_key gost2012_256 ca
    openssl req -engine gost -x509 -new -key ca.key -days 3650 -subj "/C=XX/O=Test/CN=Test GOST Authority" \
        -config extensions.cnf -extensions ca -out ca.pem
    new_key gost2012_256 tsa_gost2012_256
    new_key gost2012_512 tsa_gost2012_512
    new_key gost2001 tsa_gost2001
    certify gost2012_256 0x21 md_gost12_256
    certify gost2012_512 0x22 md_gost12_512
    certify gost2001 0x23 md_gost94
    openssl pkcs12 -engine gost -export -inkey tsa_gost2012_256.key -in tsa_gost2012_256.pem -passout pass:secret \
        -out tsa_gost2012_256.p12
    openssl pkcs12 -engine gost -export -inkey tsa_gost2012_256.key -in tsa_gost2012_256.pem -passout pass:secret \
        -keypbe gost89 -certpbe gost89 -macalg md_gost12_256 -out tsa_gost2012_256_gost.p12
}

make_all 2> log || { cat log >&2; exit 1; }
cp "$script" complete
