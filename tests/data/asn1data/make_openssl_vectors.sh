#!/bin/sh
# Writes types_by_openssl.txt: values in DER that the openssl command (3.0) made. Keys and signatures differ each time.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
: > rows

# row TYPE NAME FILE COMMAND
row() {
    {
        echo "# openssl $4"
        echo "Type = $1"
        echo "Name = $2"
        printf 'Der = '
        od -An -v -tx1 -w33 "$3" | sed 's/^ //; 2,$s/^/    /'
        echo
    } >> rows
}

key() { openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:P-256 -out "$1" 2> /dev/null; }

cat > ca.cnf <<'CONFIG'
[req]
distinguished_name = dn
prompt = no
req_extensions = asked
[dn]
C = RU
ST = Moscow
L = Moscow
street = Lane 1
O = Quillmark
OU = Time
CN = Signer
title = Clerk
initials = Q
serialNumber = 7
emailAddress = signer@example.org
[asked]
subjectAltName = DNS:example.org
[all]
basicConstraints = critical,CA:TRUE,pathlen:1
keyUsage = critical,digitalSignature,keyCertSign,cRLSign
extendedKeyUsage = timeStamping,OCSPSigning
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid,issuer
subjectAltName = DNS:example.org,email:copy,URI:http://example.org/,IP:192.0.2.1,RID:1.2.3.4,dirName:other,otherName:1.2.3.4;UTF8:Quill
issuerAltName = issuer:copy
certificatePolicies = 1.2.3.4,@policy
policyConstraints = requireExplicitPolicy:3,inhibitPolicyMapping:0
policyMappings = 1.2.3.4:1.2.3.5
nameConstraints = permitted;DNS:example.org,excluded;email:example.com
inhibitAnyPolicy = 2
crlDistributionPoints = point
authorityInfoAccess = OCSP;URI:http://ocsp.example.org/,caIssuers;URI:http://ca.example.org/
subjectInfoAccess = 1.3.6.1.5.5.7.48.3;URI:http://tsa.example.org/
noCheck = ignored
[other]
CN = Other
[policy]
policyIdentifier = 1.2.3.5
CPS.1 = http://example.org/cps
userNotice.1 = @notice
[notice]
explicitText = Text
organization = Quillmark
noticeNumbers = 1,2
[point]
fullname = URI:http://example.org/crl
CRLissuer = dirName:other
reasons = keyCompromise,CACompromise
[ca]
default_ca = this
[this]
dir = .
database = index.txt
crlnumber = crlnumber
default_md = sha256
default_crl_days = 30
crl_extensions = crl
[crl]
authorityKeyIdentifier = keyid
issuingDistributionPoint = critical,@idp
[idp]
fullname = URI:http://example.org/crl
onlyuser = TRUE
CONFIG

key ca.key
openssl req -new -x509 -config ca.cnf -extensions all -key ca.key -days 3650 -out ca.pem
openssl x509 -in ca.pem -outform DER -out ca.der
row Certificate ManyExtensions ca.der "req -new -x509"

key user.key
openssl req -new -config ca.cnf -key user.key -outform DER -out request.der
row CertificationRequest WithExtensionRequest request.der "req -new"
row PCI_HSM_CertificationRequest WithExtensionRequest request.der "req -new"
openssl req -inform DER -in request.der -out request.pem
openssl x509 -req -in request.pem -CA ca.pem -CAkey ca.key -set_serial 0x1234567890abcdef01 -out user.pem 2> /dev/null

printf '01\n' > crlnumber
printf 'R\t350101000000Z\t240102030405Z,keyCompromise\t1234567890ABCDEF01\tunknown\t/CN=Signer\n' > index.txt
openssl ca -gencrl -config ca.cnf -cert ca.pem -keyfile ca.key -out crl.pem 2> /dev/null
openssl crl -in crl.pem -outform DER -out crl.der
row CertificateList Revoked crl.der "ca -gencrl"
row CertificateListLegacy Revoked crl.der "ca -gencrl"

openssl ocsp -issuer ca.pem -cert user.pem -signer user.pem -signkey user.key -reqout ocsp_request.der
row OCSPRequest Signed ocsp_request.der "ocsp -signer -reqout"
openssl ocsp -index index.txt -CA ca.pem -rsigner ca.pem -rkey ca.key -reqin ocsp_request.der \
    -respout ocsp_response.der -ndays 3 > /dev/null 2>&1
row OCSPResponse Revoked ocsp_response.der "ocsp -index -respout"

printf text > content
openssl genrsa -out rsa.key 1024 2> /dev/null
openssl req -new -x509 -config ca.cnf -key rsa.key -subj /CN=Receiver -out rsa.pem
openssl cms -sign -in content -binary -nodetach -signer user.pem -inkey user.key -certfile ca.pem -outform DER \
    -out signed.der
row ContentInfo Signed signed.der "cms -sign"
row ContentInfoLegacy Signed signed.der "cms -sign"
openssl cms -encrypt -in content -binary -aes128 -outform DER -out enveloped.der rsa.pem user.pem
row ContentInfo EnvelopedForTwoKeys enveloped.der "cms -encrypt"
openssl cms -encrypt -in content -binary -aes128 -secretkey 000102030405060708090a0b0c0d0e0f -secretkeyid 0102 \
    -pwri_password secret -outform DER -out enveloped_kek.der
row ContentInfo EnvelopedForSecrets enveloped_kek.der "cms -encrypt -secretkey -pwri_password"
openssl cms -digest_create -in content -binary -outform DER -out digested.der
row ContentInfo Digested digested.der "cms -digest_create"
openssl cms -EncryptedData_encrypt -in content -binary -aes128 -secretkey 000102030405060708090a0b0c0d0e0f \
    -outform DER -out encrypted.der
row ContentInfo Encrypted encrypted.der "cms -EncryptedData_encrypt"

# cmp COMMAND NAME [OPTION...]: request and response with the server inside openssl
cmp() {
    command=$1 name=$2
    shift 2
    openssl cmp -cmd "$command" -use_mock_srv -srv_cert ca.pem -srv_key ca.key -srv_trusted user.pem \
        -srv_untrusted ca.pem -rsp_cert user.pem -cert user.pem -key user.key -trusted ca.pem -untrusted ca.pem \
        -no_check_time -unprotected_errors -ignore_keyusage "$@" \
        -reqout request_message.der -rspout response_message.der > cmp.log 2>&1 || true
    [ -s request_message.der ] && row PKIMessage "Request$name" request_message.der "cmp -cmd $command -reqout"
    [ -s response_message.der ] && row PKIMessage "Response$name" response_message.der "cmp -cmd $command -rspout"
    rm -f request_message.der response_message.der
}
cmp ir Initialization -newkey user.key -subject /CN=New -certout new.pem
cmp p10cr Certification -csr request.pem -certout new.pem
cmp rr Revocation -oldcert user.pem -revreason 1
cmp genm General -infotype signKeyPairTypes

cp rows "$here/types_by_openssl.txt"
