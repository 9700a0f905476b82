// CToken beside the message service: which calls are made in which order, what a failure leaves behind, and
// copies of unusual content.

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <string>
#include <vector>

#include "runtime/context.h"
#include "tests/support/blob.h"
#include "tests/support/codec_heap.h"
#include "tests/support/message_service.h"
#include "tests/support/result_code.h"
#include "tests/support/sample_token.h"
#include "tests/support/test_keys.h"
#include "tsp/token.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob;
using test::blob_of;
using test::certificate;
using test::element;
using test::join;
using test::MessageService;
using test::Octets;
using test::sample_token;
using test::sequence;
using test::TestKey;
using test::TokenParts;

using Calls = std::vector<std::string>;

constexpr char kSha256Oid[] = "2.16.840.1.101.3.4.2.1";

CToken decoded(const Octets& octets) {
    CToken token;
    token.decode(blob_of(octets));
    return token;
}

CToken unsigned_token() {
    return CToken("1.2.3", CAlgorithmIdentifierEx(kSha256Oid), blob("aa bb"),
                  CBigInteger(blob("05").pbData(), 1), CDateTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u), false);
}

void sign(CToken& token) {
    const TestKey key("tsa_p256");
    token.sign(key.provider(), AT_SIGNATURE, certificate("tsa_p256"), CAlgorithmIdentifierEx(kSha256Oid));
}

TokenParts unknown_digest() {
    TokenParts parts;
    parts.digest_algorithm = sequence({element(0x06, "2a 03 04")});
    return parts;
}

// Decoding

TEST(TokenDecodeCalls, AskForSizeAndBytesOfAttributesAndOfEveryCertificate) {
    TokenParts parts;
    parts.signed_attributes = sequence({element(0x06, "2a 03"), element(0x31, element(0x02, "01"))});
    parts.unsigned_attributes = parts.signed_attributes;
    parts.certificates = join({test::sample_certificate("02 01 01"), test::sample_certificate("02 01 09")});
    MessageService service;
    const CToken token = decoded(sample_token(parts));
    Calls calls = service.calls();
    calls.erase(calls.begin(), std::find(calls.begin(), calls.end(), "CryptMsgGetParam 9"));
    EXPECT_EQ(calls, (Calls{"CryptMsgGetParam 9", "CryptMsgGetParam 9", "CryptMsgGetParam 10",
                            "CryptMsgGetParam 10", "CryptMsgGetParam 11", "CryptMsgGetParam 12",
                            "CryptMsgGetParam 12", "CryptMsgGetParam 12", "CryptMsgGetParam 12"}));
}

TEST(TokenDecodeCalls, EndAtAnotherContentType) {
    TokenParts parts;
    parts.content_type = test::kDataType;
    CToken token;
    MessageService service;
    EXPECT_CODE(CRYPT_E_BAD_MSG, token.decode(blob_of(sample_token(parts))));
    EXPECT_EQ(service.calls(),
              (Calls{"CryptMsgOpenToDecode", "CryptMsgUpdate", "CryptMsgGetParam 2", "CryptMsgGetParam 2",
                     "CryptMsgGetParam 4", "CryptMsgGetParam 4", "CryptMsgClose"}));
}

TEST(TokenDecode, ForgetsTheUnknownAlgorithmOfTheTokenBefore) {
    CToken token = decoded(sample_token(unknown_digest()));
    token.decode(blob_of(sample_token()));
    EXPECT_CODE(CRYPT_E_ASN1_BADTAG, token.verify(blob("04 00")));
}

// Verifying

TEST(TokenVerifyCalls, CountSignersBeforeTheCertificateIsOpened) {
    CToken token = unsigned_token();
    sign(token);
    const CBlob der = certificate("tsa_p256");
    MessageService service;
    EXPECT_TRUE(token.verify(der));
    EXPECT_EQ(service.calls(), (Calls{"CryptMsgGetParam 5", "CertCreateCertificateContext", "CryptMsgControl",
                                      "CertFreeCertificateContext"}));
}

// Intended: two signers are no failure, the signature just does not hold; the certificate is not looked at.
TEST(TokenVerifyCalls, EndWithTheCountOfTwoSigners) {
    TokenParts parts;
    parts.signer_count = 2;
    const CToken token = decoded(sample_token(parts));
    MessageService service;
    EXPECT_FALSE(token.verify(CBlob()));
    EXPECT_EQ(service.calls(), (Calls{"CryptMsgGetParam 5"}));
}

TEST(TokenVerifyCalls, AreNoneForAnUnknownAlgorithm) {
    const CToken token = decoded(sample_token(unknown_digest()));
    MessageService service;
    EXPECT_CODE(CRYPT_E_UNKNOWN_ALGO, token.verify(CBlob()));
    EXPECT_TRUE(service.calls().empty());
}

TEST(TokenVerify, LeavesTheTokenAsItWas) {
    CToken token = unsigned_token();
    sign(token);
    const CBlob before = token.encode();
    EXPECT_FALSE(token.verify(certificate("other_tsa")));
    EXPECT_CODE(CRYPT_E_ASN1_BADTAG, token.verify(blob("04 00")));
    EXPECT_TRUE(token.verify(certificate("tsa_p256")));
    EXPECT_EQ(token.encode(), before);
}

// Signing

TEST(TokenSign, RefusesAProviderThatIsReleased) {
    HCRYPTPROV released = 0;
    {
        const TestKey key("tsa_p256");
        released = key.provider();
    }
    CToken token = unsigned_token();
    EXPECT_CODE(
        HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE),
        token.sign(released, AT_SIGNATURE, certificate("tsa_p256"), CAlgorithmIdentifierEx(kSha256Oid)));
}

TEST(TokenSign, LeavesTheProviderToItsOwner) {
    const TestKey key("tsa_p256");
    const CBlob der = certificate("tsa_p256");
    for (int i = 0; i < 2; ++i) {
        CToken token = unsigned_token();
        token.sign(key.provider(), AT_SIGNATURE, der, CAlgorithmIdentifierEx(kSha256Oid));
        EXPECT_TRUE(token.verify(der));
    }
}

// The version, the hash, the time and the rest are looked for in turn on the codec's heap.
TEST(TokenSign, ThrowsTheMemoryCodesBeforeTheOldMessageIsTouched) {
    CToken token = unsigned_token();
    sign(token);
    const CAccuracy accuracy{1, 0, 0};
    token.put_accuracy(&accuracy);
    const CBlob as_signed = token.encode();
    const TestKey key("tsa_p256");
    const CBlob der = certificate("tsa_p256");
    MessageService service;
    std::vector<HRESULT> codes;
    bool refused = true;
    for (std::size_t n = 0; refused; ++n) {
        test::CodecHeap heap;
        heap.fail_after(n);
        service.forget_calls();
        try {
            token.sign(key.provider(), AT_SIGNATURE, der, CAlgorithmIdentifierEx(kSha256Oid));
        } catch (const CAtlException& failure) {
            codes.push_back(failure);
        } catch (const ASN1RTLException&) {
        } catch (const std::bad_alloc&) {
        }
        refused = heap.failed();
        if (!service.calls().empty()) {
            break;  // the TSTInfo is encoded
        }
        EXPECT_EQ(token.encode(), as_signed) << "allocation " << n;
        EXPECT_TRUE(token.verify(der)) << "allocation " << n;
    }
    EXPECT_NE(std::find(codes.begin(), codes.end(), E_OUTOFMEMORY), codes.end()) << "for the version";
    EXPECT_NE(std::find(codes.begin(), codes.end(), CRYPT_E_ASN1_MEMORY), codes.end()) << "for the rest";
}

// Intended: signing adds no attribute of its own.
TEST(TokenSign, HandsOverTheAttributesThatWerePutAndNoOther) {
    CToken token = unsigned_token();
    CAttributes attributes;
    attributes.push_back(CAttribute("1.2.9"));
    attributes.back().add(blob("02 01 01"));
    attributes.back().add(blob("02 01 02"));
    token.put_signedAttributes(&attributes);
    MessageService service;
    service.on_open_to_encode = [](DWORD /*flags*/, const CMSG_SIGNED_ENCODE_INFO& info,
                                   const char* /*inner_type*/) {
        const CMSG_SIGNER_ENCODE_INFO& signer = info.rgSigners[0];
        ASSERT_EQ(signer.cAuthAttr, 1u);
        EXPECT_STREQ(signer.rgAuthAttr[0].pszObjId, "1.2.9");
        ASSERT_EQ(signer.rgAuthAttr[0].cValue, 2u);
        EXPECT_EQ(
            test::to_hex(signer.rgAuthAttr[0].rgValue[1].pbData, signer.rgAuthAttr[0].rgValue[1].cbData),
            "02 01 02");
        EXPECT_EQ(signer.cUnauthAttr, 0u);
    };
    sign(token);
    EXPECT_EQ(token.get_signedAttributes()->size(), 1u) << "the field is as it was put";
}

// Copies

TEST(TokenCopy, TakesANameOfNoKind) {
    CToken token = unsigned_token();
    const CGeneralName nothing;
    token.put_tsa(&nothing);
    CToken copy(token);
    ASSERT_NE(copy.get_tsa(), nullptr);
    EXPECT_TRUE(*copy.get_tsa() == nothing);
    copy = token;
    EXPECT_TRUE(*copy.get_tsa() == nothing);
    try {
        sign(copy);
        ADD_FAILURE() << "there is no such name on the wire";
    } catch (const CAtlException&) {
    }
}

TEST(TokenCopy, AsksForItsOwnSigner) {
    CToken token = decoded(sample_token());
    CToken copy(token);
    copy.put_nonce(nullptr);
    MessageService service;
    TokenParts other;
    other.signer_identifier = sequence({sequence({}), element(0x02, "09")});
    service.answer(CMSG_ENCODED_SIGNER, test::sample_signer(other));
    (void)copy.encode();
    EXPECT_EQ(test::hex(copy.get_signerInfo().get_serialNumber()), "09");
    EXPECT_EQ(test::hex(token.get_signerInfo().get_serialNumber()), "07");
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
