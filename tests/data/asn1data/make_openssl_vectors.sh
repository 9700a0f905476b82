#!/bin/sh
# Writes types_by_openssl.txt: values in DER that the openssl command (3.0) made, those of the national algorithms with
# Debian's libengine-gost-openssl. Keys and signatures differ each time.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
: > rows

# row TYPE NAME FILE COMMAND [PATH]: the value in a file, or the part of it that PATH leads to, and all values inside
row() {
    python3 "$here/take_apart.py" rows "$1" "$2" "$3" "openssl $4" "${5:-}"
}

key() { openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:P-256 -out "$1" 2> /dev/null; }

cat > ca.cnf <<'CONFIG'
oid_section = more
[more]
INNLE = 1.2.643.100.4
identificationKind = 1.2.643.100.114
[req]
distinguished_name = dn
prompt = no
req_extensions = asked
[dn]
C = RU
O = Quillmark
CN = Signer
[asked]
subjectAltName = DNS:example.org
[many]
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
name = Signer of Quillmark
surname = Signer
givenName = Quill
generationQualifier = II
dnQualifier = 1
pseudonym = Feather
domainComponent = example
unstructuredName = Unstructured
postalCode = 101000
OGRN = 1234567890123
SNILS = 12345678901
INN = 123456789012
OGRNIP = 123456789012345
INNLE = 1234567890
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
subjectSignTool = Quill 1
issuerSignTool = ASN1:SEQUENCE:tools
identificationKind = ASN1:INTEGER:0
[tools]
signTool = UTF8:Quill 1
cATool = UTF8:Authority 2
signToolCert = UTF8:1/2
cAToolCert = UTF8:3/4
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
sed 's/^distinguished_name = dn/distinguished_name = many/' ca.cnf > many.cnf
openssl req -new -config many.cnf -key user.key -outform DER -out many.der
row Name ManyAttributes many.der "req -new" 0.1
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

openssl ocsp -issuer ca.pem -cert user.pem -no_nonce -reqout ocsp_request.der
openssl ocsp -index index.txt -CA ca.pem -rsigner ca.pem -rkey ca.key -reqin ocsp_request.der \
    -respout ocsp_response.der -ndays 3 -resp_key_id > /dev/null 2>&1
row OCSPResponse ByKey ocsp_response.der "ocsp -index -resp_key_id -respout"

printf text > content
cat > ts.cnf <<'CONFIG'
[tsa]
default_tsa = this
[this]
serial = ts_serial
default_policy = 1.2.3.4
digests = sha256
accuracy = secs:1, millisecs:500, microsecs:100
ordering = yes
tsa_name = yes
ess_cert_id_chain = yes
ess_cert_id_alg = sha256
signer_digest = sha256
CONFIG
printf '1234567890ABCDEF01\n' > ts_serial
key tsa.key
printf 'extendedKeyUsage = critical,timeStamping\n' > tsa.ext
openssl req -new -config ca.cnf -subj /CN=Authority -key tsa.key -out tsa.req
openssl x509 -req -in tsa.req -CA ca.pem -CAkey ca.key -set_serial 7 -extfile tsa.ext -out tsa.pem 2> /dev/null
openssl ts -query -data content -sha256 -tspolicy 1.2.3.4 -cert -out query.tsq 2> /dev/null
row TimeStampReq WithEverything query.tsq "ts -query -tspolicy -cert"
openssl ts -reply -config ts.cnf -queryfile query.tsq -signer tsa.pem -inkey tsa.key -chain ca.pem -out reply.tsr \
    2> /dev/null
row TimeStampResp Granted reply.tsr "ts -reply"
row TimeStampRespRaw Granted reply.tsr "ts -reply"
openssl ts -reply -in reply.tsr -token_out -out token.der 2> /dev/null
row SignatureTimeStampToken Token token.der "ts -reply -token_out"
row ContentInfoLegacy Token token.der "ts -reply -token_out"
row TSTInfoRaw Granted token.der "ts -reply -token_out" 1.0.2.1.0.0
openssl ts -query -data content -sha256 -no_nonce -tspolicy 1.2.3.5 -out query.tsq 2> /dev/null
row TimeStampReq WithoutNonce query.tsq "ts -query -no_nonce"
openssl ts -reply -config ts.cnf -queryfile query.tsq -signer tsa.pem -inkey tsa.key -out reply.tsr 2> /dev/null
row TimeStampResp Rejected reply.tsr "ts -reply"

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

openssl cms -sign -in content -binary -nodetach -cades -signer rsa.pem -inkey rsa.key \
    -keyopt rsa_padding_mode:pss -keyopt rsa_pss_saltlen:32 -outform DER -out signed_pss.der
row ContentInfoLegacy SignedPss signed_pss.der "cms -sign -cades -keyopt rsa_padding_mode:pss"
openssl cms -encrypt -in content -binary -rc2-128 -provider default -provider legacy -recip rsa.pem \
    -keyopt rsa_padding_mode:oaep -keyopt rsa_oaep_md:sha256 -outform DER -out enveloped_oaep.der
row ContentInfo EnvelopedOaep enveloped_oaep.der "cms -encrypt -rc2-128 -keyopt rsa_padding_mode:oaep"
row RSAES_OAEP_params Sha256 enveloped_oaep.der "cms -encrypt -keyopt rsa_padding_mode:oaep" 1.0.1.0.2.1
row RC2CBCParameter Rc2 enveloped_oaep.der "cms -encrypt -rc2-128" 1.0.2.1.1
row RC2_CBC_parameter Rc2 enveloped_oaep.der "cms -encrypt -rc2-128" 1.0.2.1.1
row RC2ParameterVersion Rc2 enveloped_oaep.der "cms -encrypt -rc2-128" 1.0.2.1.1.0
row RC2wrapParameter Rc2 enveloped_oaep.der "cms -encrypt -rc2-128" 1.0.2.1.1.0
row CBCParameter Rc2 enveloped_oaep.der "cms -encrypt -rc2-128" 1.0.2.1.1.1
row AES_IV Iv enveloped.der "cms -encrypt -aes128" 1.0.2.1.1
row KeyWrapAlgorithm OfAgreedKey enveloped.der "cms -encrypt -aes128" 1.0.1.1.2.1
openssl cms -data_create -in content -binary -outform DER -out data.der
row ContentInfo Data data.der "cms -data_create"

openssl dsaparam -outform DER -out dsa.der 1024 2> /dev/null
row Dss_Parms P1024 dsa.der "dsaparam 1024"
openssl dsaparam -genkey -out dsa.key 1024 2> /dev/null
openssl pkey -in dsa.key -pubout -outform DER -out dsa_public.der
row SubjectPublicKeyInfo Dsa dsa_public.der "pkey -pubout"
openssl dgst -sha256 -sign dsa.key -out dsa.sig content
row Dss_Sig_Value Dsa dsa.sig "dgst -sign"
openssl genpkey -genparam -algorithm DHX -pkeyopt dh_rfc5114:1 -out dh.pem
openssl genpkey -paramfile dh.pem -out dh.key
openssl pkey -in dh.key -pubout -outform DER -out dh_public.der
row SubjectPublicKeyInfo DhX942 dh_public.der "pkey -pubout"
row DomainParameters DhX942 dh_public.der "pkey -pubout" 0.1
openssl rsa -in rsa.key -RSAPublicKey_out -outform DER -out rsa_public.der 2> /dev/null
row RsaPubKey Rsa1024 rsa_public.der "rsa -RSAPublicKey_out"
openssl pkcs8 -topk8 -in rsa.key -v2 aes-128-cbc -v2prf hmacWithSHA256 -passout pass:secret -outform DER -out pkcs8.der
row PBES2_params Pbkdf2 pkcs8.der "pkcs8 -topk8 -v2" 0.1
row PBKDF2_params Salt pkcs8.der "pkcs8 -topk8 -v2" 0.1.0.1
openssl dgst -sha256 -binary -out digest content
openssl pkeyutl -sign -inkey rsa.key -in digest -pkeyopt digest:sha256 -out digest.sig
openssl pkeyutl -verifyrecover -inkey rsa.key -in digest.sig -out digest_info.der
row DigestInfo Sha256 digest_info.der "pkeyutl -verifyrecover"

# The national algorithms: a certificate and messages for each key

gost_rows() {
    algorithm=$1 name=$2 digest=$3
    openssl genpkey -engine gost -algorithm "$algorithm" -pkeyopt paramset:A -out gost.key 2> /dev/null
    openssl req -new -x509 -engine gost -config ca.cnf -subj "/CN=$name" -key gost.key -"$digest" -out gost.pem \
        2> gost.log
    openssl x509 -in gost.pem -outform DER -out gost.der 2> /dev/null
    row Certificate "$name" gost.der "req -x509 -engine gost -$digest"
    openssl pkey -engine gost -in gost.key -pubout -outform DER -out gost_public.der 2> /dev/null
    row SubjectPublicKeyInfo "$name" gost_public.der "pkey -engine gost -pubout"
    openssl cms -encrypt -engine gost -in content -binary -gost89 -outform DER -out gost_enveloped.der gost.pem \
        2> gost.log
    row ContentInfo "Enveloped$name" gost_enveloped.der "cms -encrypt -engine gost -gost89"
    if [ "$algorithm" != gost2012_512 ]; then
        row Gost28147_89_EncryptedKey "$name" gost_enveloped.der "cms -encrypt -engine gost" 1.0.1.0.3.0.0
    fi
}
gost_rows gost2001 Gost2001 md_gost94
row GostR3410_2001_PublicKey Gost2001 gost_public.der "pkey -engine gost -pubout" 1.0
row GostR3411_94_DigestParameters Gost2001 gost_public.der "pkey -engine gost -pubout" 0.1.1
row GostR3410_2001_CertificateSignature Gost2001 gost.der "req -x509 -engine gost" 2
gost_rows gost2012_256 Gost2012 md_gost12_256
row GostR3410_2012_256_PublicKey Gost2012 gost_public.der "pkey -engine gost -pubout" 1.0
row Gost28147_89_ParamSet Gost2012 gost_enveloped.der "cms -encrypt -engine gost -gost89" 1.0.2.1.1.1
row Gost28147_89_Key Gost2012 gost_enveloped.der "cms -encrypt -engine gost" 1.0.1.0.3.0.0.0
row Gost28147_89_MAC Gost2012 gost_enveloped.der "cms -encrypt -engine gost" 1.0.1.0.3.0.0.1
gost_rows gost2012_512 Gost2012With512Bits md_gost12_512
row GostR3410_2012_512_PublicKey Gost2012With512Bits gost_public.der "pkey -engine gost -pubout" 1.0

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
