// CToken::sign and CToken::verify with real keys.

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "platform/cryptoapi.h"
#include "tests/support/blob.h"
#include "tests/support/codec_heap.h"
#include "tests/support/message_service.h"
#include "tests/support/result_code.h"
#include "tests/support/test_keys.h"
#include "tsp/token.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob;
using test::certificate;
using test::hex;
using test::MessageService;
using test::TestKey;

constexpr char kSha256Oid[] = "2.16.840.1.101.3.4.2.1";

CBigInteger number(const char* hex) {
    const CBlob octets = blob(hex);
    return CBigInteger(octets.pbData(), octets.cbData());
}

CToken unsigned_token() {
    return CToken("1.2.3", CAlgorithmIdentifierEx(kSha256Oid), blob("aa bb"), number("05"),
                  CDateTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u), false);
}

void sign(CToken& token, const std::string& name = "tsa_p256") {
    const TestKey key(name);
    token.sign(key.provider(), AT_SIGNATURE, certificate(name), CAlgorithmIdentifierEx(kSha256Oid));
}

CToken signed_token(const std::string& name = "tsa_p256") {
    CToken token = unsigned_token();
    sign(token, name);
    return token;
}

CAttribute attribute(const char* oid, std::initializer_list<const char*> values) {
    CAttribute result(oid);
    for (const char* value : values) {
        result.add(blob(value));
    }
    return result;
}

std::string issuer_of(const CBlob& der) {
    PCCERT_CONTEXT context =
        CertCreateCertificateContext(X509_ASN_ENCODING, der.pbData(), static_cast<DWORD>(der.cbData()));
    const std::string issuer =
        test::to_hex(context->pCertInfo->Issuer.pbData, context->pCertInfo->Issuer.cbData);
    CertFreeCertificateContext(context);
    return issuer;
}

// A round trip for each kind of key

class SignedToken : public testing::TestWithParam<const char*> {};

TEST_P(SignedToken, VerifiesAsSigned) {
    EXPECT_TRUE(signed_token(GetParam()).verify(certificate(GetParam())));
}

TEST_P(SignedToken, VerifiesAfterDecoding) {
    const CToken original = signed_token(GetParam());
    CToken token;
    token.decode(original.encode());
    EXPECT_TRUE(token.verify(certificate(GetParam())));
    EXPECT_STREQ(token.get_policy(), "1.2.3");
    EXPECT_EQ(hex(token.get_hashedMessage()), "aa bb");
    EXPECT_EQ(hex(token.get_serialNumber()), "05");
    EXPECT_STREQ(token.get_genTimeZ(), "20240102030405Z");
    EXPECT_TRUE(token.get_signerInfo() == original.get_signerInfo());
    EXPECT_EQ(token.encode(), original.encode());
}

TEST_P(SignedToken, DoesNotVerifyWithAnotherCertificate) {
    EXPECT_FALSE(signed_token(GetParam()).verify(certificate("other_tsa")));
}

INSTANTIATE_TEST_SUITE_P(Keys, SignedToken, testing::Values("tsa_rsa2048", "tsa_p256", "tsa_p384", "tsa_pss"),
                         [](const auto& row) { return std::string(row.param); });

TEST(CTokenSign, SignsWithEd25519AndSha512) {
    const TestKey key("tsa_ed25519");
    CToken token = unsigned_token();
    token.sign(key.provider(), AT_SIGNATURE, certificate("tsa_ed25519"),
               CAlgorithmIdentifierEx("2.16.840.1.101.3.4.2.3"));
    EXPECT_TRUE(token.verify(certificate("tsa_ed25519")));
}

// What is handed to the service

TEST(CTokenSign, AsksTheServiceStepByStep) {
    const TestKey key("tsa_p256");
    CToken token = unsigned_token();
    MessageService service;
    token.sign(key.provider(), AT_SIGNATURE, certificate("tsa_p256"), CAlgorithmIdentifierEx(kSha256Oid));
    EXPECT_EQ(service.calls(), (std::vector<std::string>{
                                   "CertCreateCertificateContext", "CryptMsgOpenToEncode", "CryptMsgUpdate",
                                   "CryptMsgGetParam 2", "CryptMsgGetParam 2", "CryptMsgGetParam 28",
                                   "CryptMsgGetParam 28", "CertFreeCertificateContext"}));
    EXPECT_EQ(service.open_certificates(), 0);
}

TEST(CTokenSign, DescribesASignerWithoutAttributesOrCertificates) {
    CToken token = unsigned_token();
    MessageService service;
    bool seen = false;
    service.on_open_to_encode = [&](DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info,
                                    const char* inner_type) {
        seen = true;
        EXPECT_EQ(flags, 0x240u);  // Intended: the bit beside the published flag is passed on
        EXPECT_STREQ(inner_type, "1.2.840.113549.1.9.16.1.4");
        EXPECT_EQ(info.cbSize, 48u);
        ASSERT_EQ(info.cSigners, 1u);
        EXPECT_EQ(info.cCertEncoded, 0u);
        EXPECT_EQ(info.rgCertEncoded, nullptr);
        EXPECT_EQ(info.cCrlEncoded, 0u);
        EXPECT_EQ(info.rgCrlEncoded, nullptr);
        const CMSG_SIGNER_ENCODE_INFO& signer = info.rgSigners[0];
        EXPECT_EQ(signer.cbSize, 96u);
        EXPECT_EQ(signer.dwKeySpec, AT_SIGNATURE);
        EXPECT_STREQ(signer.HashAlgorithm.pszObjId, kSha256Oid);
        EXPECT_EQ(signer.HashAlgorithm.Parameters.cbData, 0u);
        EXPECT_EQ(signer.pvHashAuxInfo, nullptr);
        EXPECT_EQ(signer.cAuthAttr, 0u);
        EXPECT_EQ(signer.rgAuthAttr, nullptr);
        EXPECT_EQ(signer.cUnauthAttr, 0u);
        EXPECT_EQ(signer.rgUnauthAttr, nullptr);
    };
    sign(token);
    EXPECT_TRUE(seen);
}

TEST(CTokenSign, EmptyListsCountAsNothing) {
    CToken token = unsigned_token();
    const CAttributes attributes;
    const CBlobList certificates;
    token.put_signedAttributes(&attributes);
    token.put_unsignedAttributes(&attributes);
    token.put_certificates(&certificates);
    MessageService service;
    service.on_open_to_encode = [&](DWORD /*flags*/, const CMSG_SIGNED_ENCODE_INFO& info,
                                    const char* /*inner_type*/) {
        EXPECT_EQ(info.cCertEncoded, 0u);
        EXPECT_EQ(info.rgCertEncoded, nullptr);
        EXPECT_EQ(info.rgSigners[0].cAuthAttr, 0u);
        EXPECT_EQ(info.rgSigners[0].rgAuthAttr, nullptr);
        EXPECT_EQ(info.rgSigners[0].cUnauthAttr, 0u);
        EXPECT_EQ(info.rgSigners[0].rgUnauthAttr, nullptr);
    };
    sign(token);
    EXPECT_TRUE(token.verify(certificate("tsa_p256")));
}

TEST(CTokenSign, HandsHashParametersOver) {
    const TestKey key("tsa_p256");
    CAlgorithmIdentifierEx algorithm(kSha256Oid);
    algorithm.put_parameters(blob("05 00"));
    CToken token = unsigned_token();
    token.sign(key.provider(), AT_SIGNATURE, certificate("tsa_p256"), algorithm);
    EXPECT_EQ(hex(token.get_signerInfo().get_digestAlgorithm().get_parameters()), "05 00");
    EXPECT_TRUE(token.verify(certificate("tsa_p256")));
}

TEST(CTokenSign, CarriesAttributesAndCertificates) {
    CToken token = unsigned_token();
    CAttributes signed_attributes;
    signed_attributes.push_back(
        attribute("1.2.840.113549.1.9.5", {"17 0d 32 34 30 31 30 32 30 33 30 34 30 35 5a"}));
    signed_attributes.push_back(attribute("1.2.9", {"02 01 01", "02 01 02", "02 01 03"}));
    CAttributes unsigned_attributes;
    for (int i = 0; i < 20; ++i) {
        unsigned_attributes.push_back(attribute("1.2.10", {"02 01 01", "02 01 02", "02 01 03"}));
    }
    CBlobList certificates;
    certificates.push_back(certificate("tsa_p256"));
    certificates.push_back(certificate("ca"));
    token.put_signedAttributes(&signed_attributes);
    token.put_unsignedAttributes(&unsigned_attributes);
    token.put_certificates(&certificates);
    sign(token);

    CToken received;
    received.decode(token.encode());
    EXPECT_TRUE(received.verify(certificate("tsa_p256")));
    ASSERT_NE(received.get_signedAttributes(), nullptr);
    const auto found = received.get_signedAttributes()->find("1.2.9");
    ASSERT_NE(found, received.get_signedAttributes()->end());
    EXPECT_EQ(found->size(), 3u);
    // The service adds the content type and the digest of the content (RFC 5652 5.3).
    EXPECT_EQ(received.get_signedAttributes()->size(), 4u);
    ASSERT_NE(received.get_unsignedAttributes(), nullptr);
    EXPECT_EQ(received.get_unsignedAttributes()->size(), 20u);
    EXPECT_EQ(hex(received.get_unsignedAttributes()->back().begin()->get_value()), "02 01 01");
    ASSERT_NE(received.get_certificates(), nullptr);
    EXPECT_EQ(received.get_certificates()->size(), 2u);
}

// What is cached

TEST(CTokenSign, EncodeReturnsWhatSignCached) {
    const CToken token = signed_token();
    MessageService service;
    EXPECT_EQ(token.encode(), token.encode());
    EXPECT_TRUE(service.calls().empty());
}

TEST(CTokenSign, DescribesTheSigner) {
    const CToken token = signed_token();
    EXPECT_EQ(hex(token.get_signerInfo().get_issuer()), issuer_of(certificate("tsa_p256")));
    EXPECT_EQ(hex(token.get_signerInfo().get_serialNumber()), "00 f1 23 45 67 89 ab cd ef");
    EXPECT_STREQ(token.get_signerInfo().get_digestAlgorithm().get_algorithm(), kSha256Oid);
    EXPECT_NE(token.get_signerInfo().get_signature().cbData(), 0u);
}

// Intended: what is put after signing shows only after the next signing.
TEST(CTokenSign, PutAfterSigningChangesNothingUntilTheNextSigning) {
    CToken token = signed_token();
    const CBlob before = token.encode();
    const CBigInteger nonce = number("2a");
    token.put_nonce(&nonce);
    EXPECT_EQ(token.encode(), before);
    sign(token);
    EXPECT_NE(token.encode(), before);
    CToken received;
    received.decode(token.encode());
    ASSERT_NE(received.get_nonce(), nullptr);
    EXPECT_EQ(hex(*received.get_nonce()), "2a");
}

TEST(CTokenSign, ADecodedTokenCanBeSignedAnew) {
    CToken token;
    token.decode(signed_token("tsa_rsa2048").encode());
    token.put_signedAttributes(nullptr);
    sign(token);
    EXPECT_TRUE(token.verify(certificate("tsa_p256")));
    EXPECT_FALSE(token.verify(certificate("tsa_rsa2048")));
}

TEST(CTokenSign, SigningAgainClosesTheOldMessage) {
    MessageService service;
    {
        CToken token = signed_token();
        sign(token);
        EXPECT_EQ(service.open_messages(), 1);
        const CToken copy(token);
        EXPECT_EQ(service.open_messages(), 2);
        EXPECT_TRUE(copy.verify(certificate("tsa_p256")));
    }
    EXPECT_EQ(service.open_messages(), 0);
    EXPECT_EQ(service.open_certificates(), 0);
}

// What is refused

TEST(CTokenSign, RefusesAnAccuracyOutOfRange) {
    CToken token = unsigned_token();
    const CAccuracy accuracy{0, 1000, 0};
    token.put_accuracy(&accuracy);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, sign(token));
    EXPECT_CODE(E_FAIL, token.encode());
}

TEST(CTokenSign, AFieldThatCannotBeEncodedLeavesTheOldMessage) {
    CToken token = signed_token();
    const CBlob before = token.encode();
    const CAccuracy accuracy{0, 1000, 0};
    token.put_accuracy(&accuracy);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, sign(token));
    EXPECT_EQ(token.encode(), before);
}

TEST(CTokenSign, ThrowsWhatTheServiceReportsOfBytesThatAreNoCertificate) {
    const TestKey key("tsa_p256");
    CToken token = unsigned_token();
    EXPECT_CODE(CRYPT_E_ASN1_EOD,
                token.sign(key.provider(), AT_SIGNATURE, CBlob(), CAlgorithmIdentifierEx(kSha256Oid)));
    EXPECT_CODE(CRYPT_E_ASN1_BADTAG,
                token.sign(key.provider(), AT_SIGNATURE, blob("04 00"), CAlgorithmIdentifierEx(kSha256Oid)));
    EXPECT_CODE(E_FAIL, token.encode());
}

TEST(CTokenSign, ThrowsWhatTheServiceReportsOfTheRest) {
    const TestKey key("tsa_p256");
    const CBlob der = certificate("tsa_p256");
    CToken token = unsigned_token();
    EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE),
                token.sign(0, AT_SIGNATURE, der, CAlgorithmIdentifierEx(kSha256Oid)));
    EXPECT_CODE(NTE_NO_KEY, token.sign(key.provider(), 3, der, CAlgorithmIdentifierEx(kSha256Oid)));
    EXPECT_CODE(CRYPT_E_UNKNOWN_ALGO,
                token.sign(key.provider(), AT_SIGNATURE, der, CAlgorithmIdentifierEx("1.2.3")));
    EXPECT_CODE(CRYPT_E_OID_FORMAT,
                token.sign(key.provider(), AT_SIGNATURE, der, CAlgorithmIdentifierEx("sha")));
    EXPECT_CODE(NTE_BAD_PUBLIC_KEY, token.sign(key.provider(), AT_SIGNATURE, certificate("other_tsa"),
                                               CAlgorithmIdentifierEx(kSha256Oid)));
}

TEST(CTokenSign, RefusesAnAttributeWithoutValues) {
    CToken token = unsigned_token();
    CAttributes attributes;
    attributes.push_back(attribute("1.2.9", {}));
    token.put_unsignedAttributes(&attributes);
    // The service takes it, but a SET of values is never empty (RFC 5652 5.3), so the signer cannot be read.
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, sign(token));
}

// Intended: the old message is closed before the new one is sure. The service knows a handle that is closed.
TEST(CTokenSign, AFailureBehindTheClosingLeavesNothingToEncode) {
    const TestKey key("tsa_p256");
    MessageService service;
    {
        CToken token = signed_token();
        service.forget_calls();
        EXPECT_CODE(CRYPT_E_ASN1_BADTAG, token.sign(key.provider(), AT_SIGNATURE, blob("04 00"),
                                                    CAlgorithmIdentifierEx(kSha256Oid)));
        EXPECT_EQ(service.calls(),
                  (std::vector<std::string>{"CryptMsgClose", "CertCreateCertificateContext"}));
        EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE), token.encode());
        EXPECT_CODE(HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE), token.verify(certificate("tsa_p256")));
        sign(token);
        EXPECT_TRUE(token.verify(certificate("tsa_p256")));
    }
    EXPECT_EQ(service.open_messages(), 0);
}

// Intended: nobody closes a message whose update fails.
TEST(CTokenSign, LosesTheMessageWhenItsUpdateFails) {
    CToken token = unsigned_token();
    MessageService service;
    service.refuse("CryptMsgUpdate", static_cast<DWORD>(NTE_FAIL));
    EXPECT_CODE(NTE_FAIL, sign(token));
    EXPECT_EQ(service.open_messages(), 1);
    EXPECT_EQ(service.open_certificates(), 0);
    EXPECT_CODE(E_FAIL, token.encode());
}

// Intended: unlike other null handles this one throws a last error of 0 as it stands.
TEST(CTokenSign, ThrowsALastErrorOfZeroWhenTheMessageCannotBeOpened) {
    CToken token = unsigned_token();
    MessageService service;
    service.refuse("CryptMsgOpenToEncode", 0);
    EXPECT_CODE(S_OK, sign(token));
    service.refuse("CertCreateCertificateContext", 0);
    EXPECT_CODE(E_FAIL, sign(token));
}

TEST(CTokenSign, KeepsTheMessageWhenItCannotBeReadBack) {
    CToken token = unsigned_token();
    MessageService service;
    service.refuse("CryptMsgGetParam 28", 6);
    EXPECT_CODE(HRESULT_FROM_WIN32(6), sign(token));
    EXPECT_TRUE(token.verify(certificate("tsa_p256")));
    CToken received;
    received.decode(token.encode());
    EXPECT_TRUE(received.verify(certificate("tsa_p256")));
}

TEST(CTokenVerify, FreesTheCertificateWhateverComesOut) {
    const CToken token = signed_token();
    MessageService service;
    EXPECT_TRUE(token.verify(certificate("tsa_p256")));
    EXPECT_FALSE(token.verify(certificate("other_tsa")));
    service.refuse("CryptMsgControl", static_cast<DWORD>(CRYPT_E_MSG_ERROR));
    EXPECT_FALSE(token.verify(certificate("tsa_p256")));
    EXPECT_EQ(service.open_certificates(), 0);
}

TEST(CTokenSign, FailsCleanlyWhereverMemoryEnds) {
    const TestKey key("tsa_p256");
    const CBlob der = certificate("tsa_p256");
    const CAlgorithmIdentifierEx algorithm(kSha256Oid);
    MessageService service;
    {
        CToken token = unsigned_token();
        const CBigInteger nonce = number("2a");
        token.put_nonce(&nonce);
        test::CodecHeap heap;
        bool got_through = false;
        for (std::size_t n = 0; !got_through; ++n) {
            heap.fail_after(n);
            try {
                token.sign(key.provider(), AT_SIGNATURE, der, algorithm);
            } catch (const CAtlException&) {
            } catch (const ASN1RTLException&) {
            } catch (const std::bad_alloc&) {
            }
            got_through = !heap.failed();
            EXPECT_EQ(heap.live_blocks(), 0u) << "after allocation " << n << " failed";
            EXPECT_LE(service.open_messages(), 1);
            EXPECT_EQ(service.open_certificates(), 0);
        }
        EXPECT_TRUE(token.verify(der));
    }
    EXPECT_EQ(service.open_messages(), 0);
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
