// CMSStamp beside the message service: which calls are made in which order, what a failure leaves behind, and
// what the fields then hold.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/blob.h"
#include "tests/support/member_offset.h"
#include "tests/support/message_service.h"
#include "tests/support/provider_calls.h"
#include "tests/support/result_code.h"
#include "tests/support/sample_stamp.h"
#include "tests/support/test_keys.h"
#include "tests/tsp/signed_stamp.h"
#include "tsp/cms_stamp.h"
#include "tsp/detail/cms_stamp_impl.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob;
using test::blob_of;
using test::certificate;
using test::hex;
using test::kSha256Oid;
using test::kStampTime;
using test::MessageService;
using test::offset_of;
using test::open_provider_references;
using test::sample_stamp;
using test::sign;
using test::signed_stamp;
using test::StampParts;
using test::TestKey;
using test::unsigned_stamp;
using test::verifies;

using Calls = std::vector<std::string>;

constexpr HRESULT kInvalidHandle = HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE);

/// Whether somebody still holds a reference on the provider.
bool is_open(HCRYPTPROV provider) {
    const bool open = CryptContextAddRef(provider, nullptr, 0) != 0;
    if (open) {
        CryptReleaseContext(provider, 0);
    }
    return open;
}

// Calls

const Calls kSigning = {
    "CertCreateCertificateContext", "CryptMsgOpenToEncode",       "CryptMsgUpdate", "CryptMsgGetParam 2",
    "CryptMsgGetParam 2",           "CertFreeCertificateContext", "CryptMsgClose"};

TEST(StampSignCalls, GoStepByStep) {
    const TestKey key("tsa_p256");
    CMSStamp stamp = unsigned_stamp();
    MessageService service;
    sign(stamp, key.provider());
    EXPECT_EQ(service.calls(), kSigning);
}

TEST(StampPutCalls, AreThoseOfSigning) {
    CMSStamp stamp = signed_stamp();
    MessageService service;
    stamp.put_signingTime(kStampTime);
    EXPECT_EQ(service.calls(), kSigning);
}

TEST(StampDecodeCalls, GoStepByStep) {
    StampParts parts;
    parts.certificates =
        test::join({test::sample_certificate("02 01 01"), test::sample_certificate("02 01 09")});
    CMSStamp stamp;
    MessageService service;
    stamp.decode(blob_of(sample_stamp(parts)));
    EXPECT_EQ(service.calls(),
              (Calls{"CryptMsgOpenToDecode", "CryptMsgUpdate", "CryptMsgGetParam 2", "CryptMsgGetParam 2",
                     "CryptMsgGetParam 9", "CryptMsgGetParam 9", "CryptMsgGetParam 11", "CryptMsgGetParam 12",
                     "CryptMsgGetParam 12", "CryptMsgGetParam 12", "CryptMsgGetParam 12", "CryptMsgClose"}));
}

// Intended: no count of signers is asked for.
TEST(StampVerifyCalls, GoStepByStep) {
    const CMSStamp stamp = signed_stamp();
    const CBlob der = certificate("tsa_p256");
    MessageService service;
    EXPECT_TRUE(stamp.verify(der));
    EXPECT_EQ(service.calls(),
              (Calls{"CertCreateCertificateContext", "CryptMsgOpenToDecode", "CryptMsgUpdate",
                     "CryptMsgControl", "CryptMsgClose", "CertFreeCertificateContext"}));
}

TEST(StampSignerCalls, GoStepByStep) {
    const CMSStamp stamp = signed_stamp();
    MessageService service;
    (void)stamp.get_signerInfo();
    EXPECT_EQ(service.calls(), (Calls{"CryptMsgOpenToDecode", "CryptMsgUpdate", "CryptMsgGetParam 28",
                                      "CryptMsgGetParam 28", "CryptMsgClose"}));
}

TEST(StampSign, DescribesASignerWithTheSigningTimeAlone) {
    const TestKey key("tsa_p256");
    CMSStamp stamp = unsigned_stamp();
    CAlgorithmIdentifierEx algorithm(kSha256Oid);
    algorithm.put_parameters(blob("05 00"));
    MessageService service;
    bool seen = false;
    service.on_open_to_encode = [&](DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info,
                                    const char* inner_type) {
        seen = true;
        EXPECT_EQ(flags, 0u);
        EXPECT_EQ(inner_type, nullptr) << "which means data";
        EXPECT_EQ(info.cbSize, 48u);
        ASSERT_EQ(info.cSigners, 1u);
        EXPECT_EQ(info.cCertEncoded, 0u);
        EXPECT_EQ(info.rgCertEncoded, nullptr);
        EXPECT_EQ(info.cCrlEncoded, 0u);
        EXPECT_EQ(info.rgCrlEncoded, nullptr);
        const CMSG_SIGNER_ENCODE_INFO& signer = info.rgSigners[0];
        EXPECT_EQ(signer.cbSize, 96u);
        EXPECT_NE(signer.pCertInfo, nullptr);
        EXPECT_EQ(signer.hCryptProv, key.provider());
        EXPECT_EQ(signer.dwKeySpec, AT_SIGNATURE);
        EXPECT_STREQ(signer.HashAlgorithm.pszObjId, kSha256Oid);
        EXPECT_EQ(
            test::to_hex(signer.HashAlgorithm.Parameters.pbData, signer.HashAlgorithm.Parameters.cbData),
            "05 00");
        EXPECT_EQ(signer.pvHashAuxInfo, nullptr);
        // The one attribute that the library makes itself.
        ASSERT_EQ(signer.cAuthAttr, 1u);
        EXPECT_STREQ(signer.rgAuthAttr[0].pszObjId, "1.2.840.113549.1.9.5");
        ASSERT_EQ(signer.rgAuthAttr[0].cValue, 1u);
        const CRYPT_ATTR_BLOB& time = signer.rgAuthAttr[0].rgValue[0];
        EXPECT_EQ(test::to_hex(time.pbData, time.cbData), "17 0d 32 34 30 31 30 32 30 33 30 34 30 35 5a");
        EXPECT_EQ(signer.cUnauthAttr, 0u);
        EXPECT_EQ(signer.rgUnauthAttr, nullptr);
    };
    stamp.sign(key.provider(), AT_SIGNATURE, certificate("tsa_p256"), algorithm);
    EXPECT_TRUE(seen);
    EXPECT_EQ(hex(stamp.get_signerInfo().get_digestAlgorithm().get_parameters()), "05 00");
}

TEST(StampSign, HandsCertificatesOverInTheirOrder) {
    CMSStamp stamp = signed_stamp();
    CBlobList certificates;
    certificates.push_back(certificate("tsa_p256"));
    certificates.push_back(certificate("ca"));
    MessageService service;
    service.on_open_to_encode = [&](DWORD, const CMSG_SIGNED_ENCODE_INFO& info, const char*) {
        ASSERT_EQ(info.cCertEncoded, 2u);
        EXPECT_TRUE(CBlob(info.rgCertEncoded[0].pbData, info.rgCertEncoded[0].cbData) ==
                    certificates.front());
        EXPECT_TRUE(CBlob(info.rgCertEncoded[1].pbData, info.rgCertEncoded[1].cbData) == certificates.back());
    };
    stamp.put_certificates(&certificates);
}

TEST(StampSign, TakesAnEmptyListOfCertificatesForNone) {
    CMSStamp stamp = signed_stamp();
    const CBlobList none;
    MessageService service;
    service.on_open_to_encode = [&](DWORD, const CMSG_SIGNED_ENCODE_INFO& info, const char*) {
        EXPECT_EQ(info.cCertEncoded, 0u);
        EXPECT_EQ(info.rgCertEncoded, nullptr);
    };
    stamp.put_certificates(&none);
    ASSERT_NE(stamp.get_certificates(), nullptr);
    EXPECT_TRUE(stamp.get_certificates()->empty());
}

// What a failure leaves

/// Expects that `put` fails, leaks nothing, and leaves the old message.
template <class Put>
void expect_the_old_message(const CMSStamp& stamp, HRESULT code, Put&& put) {
    const CBlob before = stamp.encode();
    MessageService service;
    const int references = open_provider_references();
    EXPECT_CODE(code, put());
    EXPECT_EQ(service.open_messages(), 0);
    EXPECT_EQ(service.open_certificates(), 0);
    EXPECT_EQ(open_provider_references(), references);
    EXPECT_EQ(stamp.encode(), before);
}

TEST(StampPut, ThatFailsHasTheNewFieldAndTheOldMessage) {
    CMSStamp stamp = signed_stamp();
    expect_the_old_message(stamp, CRYPT_E_ASN1_INTERNAL, [&] { stamp.put_content(CBlob()); });
    EXPECT_EQ(stamp.get_content().cbData(), 0u);
    expect_the_old_message(stamp, CRYPT_E_ASN1_INTERNAL, [&] { stamp.put_content(blob("05 00")); });
    EXPECT_EQ(hex(stamp.get_content()), "05 00");
    expect_the_old_message(stamp, CRYPT_E_ASN1_INTERNAL, [&] { stamp.put_signingTime(CDateTime(0L, 0)); });
    EXPECT_TRUE(stamp.get_signingTime() == CDateTime(0L, 0)) << "the content is still none";
    stamp.put_content(blob("04 00"));
    EXPECT_TRUE(verifies(stamp));
}

TEST(StampPut, RefusesATimeBeyondTheCalendar) {
    CMSStamp stamp = signed_stamp();
    const CDateTime last(_FILETIME{0xffffffff, 0xffffffff});
    expect_the_old_message(stamp, HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER),
                           [&] { stamp.put_signingTime(last); });
    EXPECT_TRUE(stamp.get_signingTime() == last);
}

TEST(StampPut, RefusesBytesThatAreNoCertificate) {
    CMSStamp stamp = signed_stamp();
    const CBlobList empty = {CBlob()};
    const CBlobList wrong = {certificate("tsa_p256"), blob("04 00")};
    expect_the_old_message(stamp, E_INVALIDARG, [&] { stamp.put_certificates(&empty); });
    expect_the_old_message(stamp, E_INVALIDARG, [&] { stamp.put_certificates(&wrong); });
    EXPECT_TRUE(*stamp.get_certificates() == wrong);
}

struct FailingCall {
    const char* function;
    int skip;
};

constexpr auto call_name = [](const auto& info) {
    std::string name = info.param.function + std::string(info.param.skip == 0 ? "_first" : "_second");
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
};

class StampSignFailure : public testing::TestWithParam<FailingCall> {};

TEST_P(StampSignFailure, ThrowsTheLastErrorAndKeepsTheOldMessage) {
    const CMSStamp stamp = signed_stamp();
    const CBlob before = stamp.encode();
    MessageService service;
    service.refuse(GetParam().function, 6, GetParam().skip);
    EXPECT_CODE(kInvalidHandle, stamp.put_content(blob("04 01 cc")));
    service.refuse(GetParam().function, static_cast<DWORD>(NTE_FAIL), GetParam().skip);
    EXPECT_CODE(NTE_FAIL, stamp.put_content(blob("04 01 cc")));
    EXPECT_EQ(service.open_messages(), 0);
    EXPECT_EQ(service.open_certificates(), 0);
    EXPECT_EQ(stamp.encode(), before);
    EXPECT_EQ(hex(stamp.get_content()), "04 01 cc");
    stamp.put_content(blob("04 01 dd"));
    EXPECT_TRUE(verifies(stamp));
}

const FailingCall kSignCalls[] = {{"CertCreateCertificateContext", 0},
                                  {"CryptMsgOpenToEncode", 0},
                                  {"CryptMsgUpdate", 0},
                                  {"CryptMsgGetParam 2", 0},
                                  {"CryptMsgGetParam 2", 1}};

INSTANTIATE_TEST_SUITE_P(EveryCall, StampSignFailure, testing::ValuesIn(kSignCalls), call_name);

class StampDecodeFailure : public testing::TestWithParam<FailingCall> {};

TEST_P(StampDecodeFailure, ThrowsTheLastErrorAndClosesTheMessage) {
    StampParts parts;
    parts.certificates = test::sample_certificate("02 01 09");
    const CBlob bytes = blob_of(sample_stamp(parts));
    CMSStamp stamp;
    MessageService service;
    service.refuse(GetParam().function, 6, GetParam().skip);
    EXPECT_CODE(kInvalidHandle, stamp.decode(bytes));
    EXPECT_EQ(service.open_messages(), 0);
    service.refuse(GetParam().function, static_cast<DWORD>(CRYPT_E_MSG_ERROR), GetParam().skip);
    EXPECT_CODE(CRYPT_E_MSG_ERROR, stamp.decode(bytes));
    EXPECT_EQ(service.open_messages(), 0);
    EXPECT_EQ(stamp.get_certificates(), nullptr);
    EXPECT_EQ(hex(stamp.get_signerInfo().get_serialNumber()), "07") << "the message is the new one";
}

const FailingCall kDecodeCalls[] = {
    {"CryptMsgOpenToDecode", 0}, {"CryptMsgUpdate", 0},      {"CryptMsgGetParam 2", 0},
    {"CryptMsgGetParam 2", 1},   {"CryptMsgGetParam 9", 0},  {"CryptMsgGetParam 9", 1},
    {"CryptMsgGetParam 11", 0},  {"CryptMsgGetParam 12", 0}, {"CryptMsgGetParam 12", 1},
};

INSTANTIATE_TEST_SUITE_P(EveryCall, StampDecodeFailure, testing::ValuesIn(kDecodeCalls), call_name);

class StampVerifyFailure : public testing::TestWithParam<FailingCall> {};

TEST_P(StampVerifyFailure, ThrowsTheLastErrorAndReleasesEverything) {
    const CMSStamp stamp = signed_stamp();
    MessageService service;
    service.refuse(GetParam().function, 6);
    EXPECT_CODE(kInvalidHandle, verifies(stamp));
    EXPECT_EQ(service.open_messages(), 0);
    EXPECT_EQ(service.open_certificates(), 0);
    EXPECT_TRUE(verifies(stamp));
}

const FailingCall kVerifyCalls[] = {
    {"CertCreateCertificateContext", 0}, {"CryptMsgOpenToDecode", 0}, {"CryptMsgUpdate", 0}};

INSTANTIATE_TEST_SUITE_P(EveryCall, StampVerifyFailure, testing::ValuesIn(kVerifyCalls), call_name);

// A signature that does not hold is no exception, whatever the reason.
TEST(StampVerify, IsFalseWhenTheServiceRefusesTheSignature) {
    const CMSStamp stamp = signed_stamp();
    MessageService service;
    service.refuse("CryptMsgControl", static_cast<DWORD>(CRYPT_E_MSG_ERROR));
    EXPECT_FALSE(verifies(stamp));
    EXPECT_EQ(service.open_messages(), 0);
    EXPECT_EQ(service.open_certificates(), 0);
}

// Intended: unlike a token a stamp throws here, as it does not decode with an unknown algorithm either.
TEST(StampVerify, ThrowsForAnUnknownAlgorithm) {
    StampParts parts;
    parts.digest_algorithm = test::sequence({test::element(0x06, "2a 03 04")});
    CMSStamp stamp;
    EXPECT_CODE(CRYPT_E_UNKNOWN_ALGO, stamp.decode(blob_of(sample_stamp(parts))));
    EXPECT_CODE(CRYPT_E_UNKNOWN_ALGO, verifies(stamp));
    EXPECT_CODE(CRYPT_E_UNKNOWN_ALGO, stamp.get_signerInfo());
}

class StampSignerFailure : public testing::TestWithParam<FailingCall> {};

TEST_P(StampSignerFailure, ThrowsTheLastErrorAndClosesTheMessage) {
    const CMSStamp stamp = signed_stamp();
    MessageService service;
    service.refuse(GetParam().function, 6, GetParam().skip);
    EXPECT_CODE(kInvalidHandle, stamp.get_signerInfo());
    EXPECT_EQ(service.open_messages(), 0);
}

const FailingCall kSignerCalls[] = {{"CryptMsgOpenToDecode", 0},
                                    {"CryptMsgUpdate", 0},
                                    {"CryptMsgGetParam 28", 0},
                                    {"CryptMsgGetParam 28", 1}};

INSTANTIATE_TEST_SUITE_P(EveryCall, StampSignerFailure, testing::ValuesIn(kSignerCalls), call_name);

TEST(StampDecode, RefusesAnAttributeBlockThatIsTooSmall) {
    CMSStamp stamp;
    MessageService service;
    service.answer(CMSG_SIGNER_AUTH_ATTR_PARAM, std::vector<BYTE>(sizeof(CRYPT_ATTRIBUTES) - 1));
    EXPECT_CODE(CRYPT_E_BAD_MSG, stamp.decode(blob_of(sample_stamp())));
}

TEST(StampDecode, HasNoSigningTimeInAnEmptyAttributeBlock) {
    CMSStamp stamp;
    MessageService service;
    service.answer(CMSG_SIGNER_AUTH_ATTR_PARAM, std::vector<BYTE>(sizeof(CRYPT_ATTRIBUTES)));
    EXPECT_CODE(CRYPT_E_BAD_MSG, stamp.decode(blob_of(sample_stamp())));
}

// What is refused at signing

struct RefusedSigning {
    const char* name;
    HRESULT code;
    std::string content = "04 02 aa bb";
    std::string certificate = "tsa_p256";
    unsigned int key_spec = AT_SIGNATURE;
    const char* digest = kSha256Oid;
};

class StampSignRefusal : public testing::TestWithParam<RefusedSigning> {};

CBlob certificate_or_bytes(const std::string& name) {
    return name.starts_with("der ") ? blob(name.substr(4)) : certificate(name);
}

// Intended: the signer is stored before the first signature is made, so from here on the stamp counts as
// signed, without a message.
TEST_P(StampSignRefusal, LeavesASignerWithoutAMessage) {
    const RefusedSigning& row = GetParam();
    const TestKey key("tsa_p256");
    const int references = open_provider_references();
    {
        CMSStamp stamp(blob(row.content), kStampTime);
        MessageService service;
        EXPECT_CODE(row.code, stamp.sign(key.provider(), row.key_spec, certificate_or_bytes(row.certificate),
                                         CAlgorithmIdentifierEx(row.digest)));
        EXPECT_EQ(service.open_messages(), 0);
        EXPECT_EQ(service.open_certificates(), 0);
        EXPECT_EQ(open_provider_references(), references + 1);
        EXPECT_EQ(stamp.encode().cbData(), 0u);
        EXPECT_CODE(row.code, stamp.put_signingTime(kStampTime)) << "each put signs";
    }
    EXPECT_EQ(open_provider_references(), references);
    EXPECT_TRUE(is_open(key.provider()));
}

const RefusedSigning kRefusedSigning[] = {
    // Intended: the content is the DER of an OCTET STRING, not the bare octets.
    {.name = "EmptyContent", .code = CRYPT_E_ASN1_INTERNAL, .content = ""},
    {.name = "BareContent", .code = CRYPT_E_ASN1_INTERNAL, .content = "aa bb"},
    {.name = "ContentOfAnotherType", .code = CRYPT_E_ASN1_INTERNAL, .content = "30 00"},
    {.name = "ContentCutOff", .code = CRYPT_E_ASN1_INTERNAL, .content = "04 02 aa"},
    {.name = "NoCertificate", .code = CRYPT_E_ASN1_EOD, .certificate = "der "},
    {.name = "BytesThatAreNoCertificate", .code = CRYPT_E_ASN1_BADTAG, .certificate = "der 04 00"},
    {.name = "CertificateOfAnotherKey", .code = NTE_BAD_PUBLIC_KEY, .certificate = "other_tsa"},
    {.name = "KeySpecWithoutKey", .code = NTE_NO_KEY, .key_spec = 3},
    {.name = "UnknownHash", .code = CRYPT_E_UNKNOWN_ALGO, .digest = "1.2.3"},
    {.name = "HashThatIsNoOid", .code = CRYPT_E_OID_FORMAT, .digest = "sha"},
    {.name = "EmptyHash", .code = CRYPT_E_OID_FORMAT, .digest = ""},
};

INSTANTIATE_TEST_SUITE_P(Arguments, StampSignRefusal, testing::ValuesIn(kRefusedSigning),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(StampSign, RecoversFromARefusedContent) {
    const TestKey key("tsa_p256");
    CMSStamp stamp(CBlob(), kStampTime);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, sign(stamp, key.provider()));
    stamp.put_content(blob("04 00"));
    EXPECT_TRUE(verifies(stamp));
}

TEST(StampSign, RefusedProviderLeavesAnUnsignedStamp) {
    CMSStamp stamp = unsigned_stamp();
    MessageService service;
    EXPECT_CODE(kInvalidHandle, sign(stamp, 0));
    EXPECT_TRUE(service.calls().empty());
    EXPECT_CODE(E_FAIL, stamp.encode());
    stamp.put_content(blob("04 00"));
    EXPECT_TRUE(service.calls().empty());
}

// The fields

/// The fields behind the one pointer.
CMSStampImpl& fields_of(const CMSStamp& stamp) {
    CMSStampImpl* fields = nullptr;
    std::memcpy(&fields, &stamp, sizeof fields);
    return *fields;
}

TEST(StampFields, StartAsZeros) {
    const CMSStamp stamp;
    const CMSStampImpl& fields = fields_of(stamp);
    EXPECT_EQ(fields.providerHandle, 0u);
    EXPECT_EQ(fields.keySpec, 0u);
    EXPECT_EQ(fields.signerCertificate.cbData(), 0u);
    EXPECT_STREQ(fields.signerHashAlgorithm.get_algorithm(), "");
    EXPECT_FALSE(fields.signingRequested);
    EXPECT_EQ(fields.stampMessage.cbData(), 0u);
}

TEST(StampFields, HaveTheSignerAfterSigning) {
    const TestKey key("tsa_p256");
    CMSStamp stamp = unsigned_stamp();
    CAlgorithmIdentifierEx algorithm(kSha256Oid);
    algorithm.put_algExtra(7);
    stamp.sign(key.provider(), AT_KEYEXCHANGE, certificate("tsa_p256"), algorithm);
    const CMSStamp copy(stamp);
    for (const CMSStamp* each : {static_cast<const CMSStamp*>(&stamp), &copy}) {
        const CMSStampImpl& fields = fields_of(*each);
        EXPECT_EQ(fields.providerHandle, key.provider());
        EXPECT_EQ(fields.keySpec, AT_KEYEXCHANGE);
        EXPECT_TRUE(fields.signerCertificate == certificate("tsa_p256"));
        EXPECT_EQ(fields.signerHashAlgorithm.get_algExtra(), 7u);
        EXPECT_TRUE(fields.signingRequested);
        EXPECT_EQ(fields.stampMessage, stamp.encode());
    }
}

// Intended: the member keeps its value until the new provider is sure.
TEST(StampFields, KeepTheHandleOfAReleasedProvider) {
    const TestKey key("tsa_p256");
    CMSStamp stamp = unsigned_stamp();
    sign(stamp, key.provider());
    EXPECT_CODE(kInvalidHandle, stamp.sign(0, 3, CBlob(), CAlgorithmIdentifierEx("1.2.3")));
    EXPECT_EQ(fields_of(stamp).providerHandle, key.provider());
    EXPECT_EQ(fields_of(stamp).keySpec, AT_SIGNATURE);
    EXPECT_STREQ(fields_of(stamp).signerHashAlgorithm.get_algorithm(), kSha256Oid);
}

TEST(StampFields, HaveTheMessageThatWasDecoded) {
    CMSStamp stamp;
    stamp.decode(blob_of(sample_stamp()));
    const CBlob before = fields_of(stamp).stampMessage;
    EXPECT_EQ(hex(before), test::to_hex(sample_stamp()));
    stamp.put_content(blob("04 01 cc"));
    EXPECT_EQ(fields_of(stamp).stampMessage, before);
    EXPECT_FALSE(fields_of(stamp).signingRequested);
}

TEST(StampFields, UpdateOfAnUnsignedStampDoesNothing) {
    CMSStampImpl fields;
    MessageService service;
    fields.update();
    EXPECT_TRUE(service.calls().empty());
    EXPECT_EQ(fields.stampMessage.cbData(), 0u);
}

// The layout, which other programs of the same interface count on.

TEST(StampLayout, IsOnePointer) {
    EXPECT_EQ(sizeof(CMSStamp), sizeof(void*));
}

TEST(StampLayout, HasItsFieldsInOrder) {
    const CMSStampImpl fields;
    EXPECT_EQ(offset_of(fields, fields.content), 0u);
    EXPECT_EQ(offset_of(fields, fields.signingTime), 16u);
    EXPECT_EQ(offset_of(fields, fields.certificates), 24u);
    EXPECT_EQ(offset_of(fields, fields.providerHandle), 32u);
    EXPECT_EQ(offset_of(fields, fields.keySpec), 40u);
    EXPECT_EQ(offset_of(fields, fields.signerCertificate), 48u);
    EXPECT_EQ(offset_of(fields, fields.signerHashAlgorithm), 64u);
    EXPECT_EQ(offset_of(fields, fields.signingRequested), 104u);
    EXPECT_EQ(offset_of(fields, fields.stampMessage), 112u);
    EXPECT_EQ(sizeof fields, 128u);
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
