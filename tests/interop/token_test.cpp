// Our tokens in `openssl ts -verify` and `openssl cms -verify`.

#include "tsp/token.h"

#include <gtest/gtest.h>

#include <string>

#include "asn1/signing_certificate.h"
#include "tests/interop/authority.h"
#include "tests/support/blob.h"
#include "tsp/response.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::OpenSSLAuthority;

constexpr char kSha256[] = "2.16.840.1.101.3.4.2.1";

/// Binds the signature to the certificate (RFC 5816 2.2.1); the command asks for it.
CAttribute signing_certificate(const OpenSSLAuthority& openssl, const std::string& name) {
    openssl.run("openssl dgst -sha256 -binary -out certificate.digest " + name + ".der");
    CESSCertIDv2List identifiers;
    identifiers.push_back(CESSCertIDv2(openssl.directory().read("certificate.digest")));
    CAttribute attribute("1.2.840.113549.1.9.16.2.47");
    attribute.add(CAttrSigningCertificateV2(identifiers));
    return attribute;
}

/// The name in a certificate, which the name of the authority must be (RFC 3161 2.4.2).
CGeneralName subject_of(const std::string& name) {
    const CBlob der = test::certificate(name);
    PCCERT_CONTEXT context =
        CertCreateCertificateContext(X509_ASN_ENCODING, der.pbData(), static_cast<DWORD>(der.cbData()));
    const CERT_NAME_BLOB& subject = context->pCertInfo->Subject;
    CGeneralName general_name;
    general_name.put_directoryName(CBlob(subject.pbData, subject.cbData));
    CertFreeCertificateContext(context);
    return general_name;
}

/// A stamp of ours over the octets "data".
CToken our_token(const OpenSSLAuthority& openssl, const std::string& name) {
    openssl.run("printf data > data && openssl dgst -sha256 -binary -out digest data");
    const CBlob serial = test::blob("01 02 03 04 05 06 07 08");
    CToken token("1.2.3.9.9", CAlgorithmIdentifierEx(kSha256), openssl.directory().read("digest"),
                 CBigInteger(serial.pbData(), serial.cbData()), CDateTime::Now(), true);
    const CAccuracy accuracy{1, 500, 0};
    token.put_accuracy(&accuracy);
    const CGeneralName tsa = subject_of(name);
    token.put_tsa(&tsa);
    CAttributes attributes;
    attributes.push_back(CAttribute("1.2.840.113549.1.9.5"));
    attributes.back().add(CAttrSigningTime(CDateTime::Now()));
    attributes.push_back(signing_certificate(openssl, name));
    token.put_signedAttributes(&attributes);
    CBlobList certificates;
    certificates.push_back(test::certificate(name));
    certificates.push_back(test::certificate("ca"));
    token.put_certificates(&certificates);
    return token;
}

CToken our_signed_token(const OpenSSLAuthority& openssl, const std::string& name,
                        const char* digest_algorithm = kSha256) {
    CToken token = our_token(openssl, name);
    const test::TestKey key(name);
    token.sign(key.provider(), AT_SIGNATURE, test::certificate(name),
               CAlgorithmIdentifierEx(digest_algorithm));
    return token;
}

class OurToken : public testing::TestWithParam<const char*> {};

TEST_P(OurToken, IsVerifiedAsAStamp) {
    const OpenSSLAuthority openssl;
    openssl.directory().write("token.der", our_signed_token(openssl, GetParam()).encode());
    const std::string output =
        openssl.run("openssl ts -verify -data data -in token.der -token_in -CAfile ca.pem");
    EXPECT_NE(output.find("Verification: OK"), std::string::npos) << output;
}

TEST_P(OurToken, IsVerifiedAsAMessage) {
    const OpenSSLAuthority openssl;
    openssl.directory().write("token.der", our_signed_token(openssl, GetParam()).encode());
    openssl.run("openssl cms -verify -inform DER -in token.der -CAfile ca.pem -purpose any -out content.der");
    const std::string content = openssl.run("openssl asn1parse -inform DER -in content.der");
    EXPECT_NE(content.find("1.2.3.9.9"), std::string::npos) << content;
}

TEST_P(OurToken, IsVerifiedInsideAResponse) {
    const OpenSSLAuthority openssl;
    const CToken token = our_signed_token(openssl, GetParam());
    CResponse response;
    response.put_status(CPKIStatusInfo(PKIStatus_granted));
    response.put_timeStampToken(&token);
    openssl.directory().write("response.tsr", response.encode());
    openssl.run("openssl ts -verify -data data -in response.tsr -CAfile ca.pem");
    const std::string text = openssl.run("openssl ts -reply -in response.tsr -text");
    EXPECT_NE(text.find("Status: Granted."), std::string::npos) << text;
    EXPECT_NE(text.find("Policy OID: 1.2.3.9.9"), std::string::npos) << text;
    EXPECT_NE(text.find("Serial number: 0x0102030405060708"), std::string::npos) << text;
    EXPECT_NE(text.find("Accuracy: 0x01 seconds, 0x01F4 millis, unspecified micros"), std::string::npos)
        << text;
    EXPECT_NE(text.find("Ordering: yes"), std::string::npos) << text;
    EXPECT_NE(text.find("TSA: DirName:/C=XX/O=Test/CN=Test TSA"), std::string::npos) << text;
}

INSTANTIATE_TEST_SUITE_P(Keys, OurToken, testing::Values("tsa_rsa2048", "tsa_p256", "tsa_p384", "tsa_pss"),
                         [](const auto& row) { return std::string(row.param); });

// Version 3.0 of the command knows no Ed25519 in CMS, so it checks the signature over the attributes (RFC
// 5652 5.4).
TEST(OurEd25519Token, HasASignatureOverItsAttributes) {
    const OpenSSLAuthority openssl;
    CToken token;
    token.decode(our_signed_token(openssl, "tsa_ed25519", "2.16.840.1.101.3.4.2.3").encode());
    openssl.directory().write("attributes.der", token.get_signedAttributes()->encode());
    openssl.directory().write("signature", token.get_signerInfo().get_signature());
    openssl.run(
        "openssl pkeyutl -verify -rawin -certin -inkey tsa_ed25519.pem -in attributes.der -sigfile "
        "signature");
}

TEST(OurTokenForeignKey, IsNotVerified) {
    const OpenSSLAuthority openssl;
    openssl.directory().write("token.der", our_signed_token(openssl, "tsa_p256").encode());
    const auto result =
        openssl.directory().run("openssl ts -verify -data data -in token.der -token_in -CAfile other_ca.pem");
    EXPECT_NE(result.status, 0) << result.output;
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
