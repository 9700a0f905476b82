#!/bin/sh
# Makes PKCS #11 tokens in software with SoftHSM: make_tokens.sh PKI
#
# PKI is what make_pki.sh made; the files go into PKI/tokens, and no token of the system is touched. Does nothing when
# they are there already. Without the programs (Debian: softhsm2, opensc, libengine-pkcs11-openssl) the only file is
# `absent`, which says so, and the tests are skipped.
#
#   softhsm2.conf                     configuration (SOFTHSM2_CONF) that leads SoftHSM to these tokens
#   module                            the path of SoftHSM's PKCS #11 module
#   tsa_generated.der tsa_always.der  certificates of these keys, by PKI/ca.pem
#
# Tokens, each with its PIN, and their keys:
#
#   signer 1234        rsa, ec (copies of PKI/tsa_rsa2048.key and tsa_p256.key), generated (P-256, made in the token)
#   each 7777          always (P-256, made in the token; wants the PIN for each signature)
#   other 5678, locked 1111, silent 2222, inline 3333, called 4444
#                      ec, for tests that each want a token into which nobody has logged in
#   empty 6666         none
set -eu

pki=$(cd "$1" && pwd)
directory=$pki/tokens
script=$(cd "$(dirname "$0")" && pwd)/$(basename "$0")
if [ -f "$directory/complete" ] && cmp -s "$script" "$directory/complete"; then
    exit 0
fi
rm -rf "$directory"
mkdir -p "$directory/store"
cd "$directory"

module=
for candidate in /usr/lib/softhsm/libsofthsm2.so /usr/lib/*/softhsm/libsofthsm2.so /usr/lib64/softhsm/libsofthsm.so; do
    if [ -z "$module" ] && [ -f "$candidate" ]; then
        module=$candidate
    fi
done
if [ -z "$module" ] || ! openssl engine pkcs11 > log 2>&1 || ! command -v softhsm2-util pkcs11-tool >> log; then
    echo "SoftHSM or OpenSSL's engine pkcs11 is not installed (Debian: softhsm2 opensc libengine-pkcs11-openssl)" > absent
    exit 0
fi
echo "$module" > module

cat > softhsm2.conf <<END
directories.tokendir = $directory/store
objectstore.backend = file
log.level = ERROR
END
export SOFTHSM2_CONF="$directory/softhsm2.conf"

# new_token LABEL PIN
new_token() {
    softhsm2-util --module "$module" --init-token --free --label "$1" --pin "$2" --so-pin 0000
}

# import TOKEN PIN LABEL ID KEY
import() {
    softhsm2-util --module "$module" --import "$5" --token "$1" --pin "$2" --label "$3" --id "$4"
}

# generate TOKEN PIN LABEL SERIAL [OPTION...]: a P-256 key, which does not leave the token, so that its certificate is
# made for the public half
generate() {
    token=$1 pin=$2 label=$3 serial=$4
    shift 4
    pkcs11-tool --module "$module" --token-label "$token" --login --pin "$pin" --keypairgen --key-type EC:prime256v1 \
        --label "$label" --id 03 "$@"
    pkcs11-tool --module "$module" --token-label "$token" --read-object --type pubkey --label "$label" -o public.der
    openssl pkey -pubin -inform DER -in public.der -out public.pem
    cat > extensions.cnf <<END
basicConstraints = critical,CA:FALSE
keyUsage = critical,digitalSignature
extendedKeyUsage = critical,timeStamping
END
    openssl x509 -new -force_pubkey public.pem -subj "/C=XX/O=Test/CN=Test TSA $label" -CA "$pki/ca.pem" \
        -CAkey "$pki/ca.key" -set_serial "$serial" -sha256 -days 3650 -extfile extensions.cnf -outform DER \
        -out "tsa_$label.der"
}

make_all() {
    new_token signer 1234
    import signer 1234 rsa 01 "$pki/tsa_rsa2048.key"
    import signer 1234 ec 02 "$pki/tsa_p256.key"
    generate signer 1234 generated 0x31
    new_token each 7777
    generate each 7777 always 0x32 --always-auth
    new_token empty 6666
    while read -r label pin; do
        new_token "$label" "$pin"
        import "$label" "$pin" ec 02 "$pki/tsa_p256.key" < /dev/null
    done <<END
other 5678
locked 1111
silent 2222
inline 3333
called 4444
END
}

make_all > log 2>&1 || { cat log >&2; exit 1; }
cp "$script" complete
