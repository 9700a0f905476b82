// Requests, tokens and responses.

#include <memory>

#include "asn1data/records.h"
#include "runtime/context.h"
#include "runtime/message_buffer.h"
#include "tests/robustness/object_rows.h"
#include "tests/robustness/operations.h"
#include "tests/robustness/time_stamps.h"
#include "tests/support/blob.h"
#include "tests/support/test_keys.h"
#include "tsp/detail/request_impl.h"
#include "tsp/detail/token_impl.h"

// The linker leads the library's calls of the service here.
extern "C" {
BOOL __real_CryptMsgUpdate(HCRYPTMSG message, const BYTE* data, DWORD size, BOOL final);
BOOL __wrap_CryptMsgUpdate(HCRYPTMSG message, const BYTE* data, DWORD size, BOOL final);
}

namespace Quillmark::test {

namespace {

using namespace ASN1;
using namespace PKI::TSP;

thread_local HCRYPTMSG message_that_failed = nullptr;

/// A token whose signed fields are in memory only.
CToken fields_to_sign() {
    CToken token = signed_token();
    token.put_nonce(nullptr);
    return token;
}

void sign(Trial& trial) {
    const TestKey key("tsa_p256");
    const CBlob certificate = test::certificate("tsa_p256");
    const CAlgorithmIdentifierEx algorithm(kSha256Text);
    CToken token = fields_to_sign();
    message_that_failed = nullptr;
    const bool done = trial.call([&] { token.sign(key.provider(), AT_SIGNATURE, certificate, algorithm); });
    if (message_that_failed != nullptr) {
        // Intended: a message whose update fails is not closed. It is the only one that gets lost.
        EXPECT_FALSE(done);
        EXPECT_TRUE(CryptMsgClose(message_that_failed));
        EXPECT_FALSE(CryptMsgClose(message_that_failed));
    }
    EXPECT_STREQ(token.get_policy(), "1.2.3");
    token.sign(key.provider(), AT_SIGNATURE, certificate, algorithm);
    EXPECT_TRUE(token.verify(certificate));
}

void assign_token(Trial& trial) {
    const CToken other = signed_token();
    const CBlob expected = other.encode();
    CToken token = signed_token();
    const CBlob before = token.encode();
    const bool done = trial.call([&] { token = other; });
    EXPECT_EQ(token.encode(), done ? expected : before);
}

void fill_request_record(Trial& trial) {
    CRequest::Impl fields;
    fields.hashAlgorithm = CAlgorithmIdentifierEx(kSha256Text);
    fields.hashedMessage = blob("aa bb");
    fields.nonce = std::make_unique<CBigInteger>(number("05"));
    trial.call([&] {
        ASN1BEREncodeBuffer buffer;
        asn1data::ASN1T_TimeStampReq record;
        fields.fillRequest(record, buffer.getCtxtPtr());
        CRequest::Impl read;
        read.readRequest(record);
        const CRequest::Impl copy(read);
        EXPECT_EQ(copy.hashedMessage, fields.hashedMessage);
    });
}

void fill_token_record(Trial& trial) {
    CToken::Impl fields;
    fields.policy = "1.2.3";
    fields.hashAlgorithm = CAlgorithmIdentifierEx(kSha256Text);
    fields.hashedMessage = blob("aa bb");
    fields.serialNumber = number("05");
    fields.genTime = "20240102030405Z";
    trial.call([&] {
        ASN1BEREncodeBuffer buffer;
        asn1data::ASN1T_TSTInfo record;
        fields.fillTSTInfo(record, buffer.getCtxtPtr());
        CToken::Impl read;
        read.readTSTInfo(record);
        const CToken::Impl copy(read);
        EXPECT_EQ(copy.hashedMessage, fields.hashedMessage);
    });
}

}  // namespace

Operations time_stamp_operations() {
    return {
        {"Request", makes([] { const CRequest request; })},
        {"RequestOfFields", makes([] { (void)small_request(); })},
        {"RequestCopy", uses(full_request, [](const CRequest& request) { const CRequest copy(request); })},
        {"RequestAssignment",
         [](Trial& trial) {
             const CRequest other = full_request();
             CRequest request = small_request();
             const CBlob before = request.encode();
             const bool done = trial.call([&] { request = other; });
             EXPECT_EQ(request.encode(), done ? other.encode() : before);
         }},
        {"RequestCleared", makes(make_and_clear<CRequest>)},
        {"RequestEncodes", uses(full_request, [](const CRequest& request) { (void)request.encode(); })},
        {"RequestDecodes", decodes(full_request)},
        {"RequestPutsPolicy",
         puts(
             full_request, [] { return std::string("1.3.6.1.4.1.99999.1.2.3.4.5.6"); },
             [](CRequest& request, const std::string& policy) { request.put_reqPolicy(policy.c_str()); },
             [](const CRequest& request) { return std::string(request.get_reqPolicy()); })},
        {"RequestPutsNonce",
         puts(
             full_request, [] { return number("4d"); },
             [](CRequest& request, const CBigInteger& nonce) { request.put_nonce(&nonce); },
             [](const CRequest& request) { return *request.get_nonce(); })},
        {"RequestPutsExtensions",
         puts(
             full_request, other_extensions,
             [](CRequest& request, const CExtensions& list) { request.put_extensions(&list); },
             [](const CRequest& request) { return request.get_extensions()->encode(); })},
        {"RequestRecord", fill_request_record},

        {"Token", makes([] { const CToken token; })},
        {"TokenOfFields", makes([] { (void)small_token(); })},
        {"TokenCopy", uses(signed_token, [](const CToken& token) { const CToken copy(token); })},
        {"TokenAssignment", assign_token},
        {"TokenCleared", makes(make_and_clear<CToken>)},
        {"TokenSigns", sign},
        {"TokenVerifies",
         [](Trial& trial) {
             const CToken token = signed_token();
             const CBlob certificate = test::certificate("tsa_p256");
             bool holds = false;
             const bool done = trial.call_that_may_do_without([&] { holds = token.verify(certificate); });
             // Intended: whatever keeps the service from finding the signature good, the answer is no.
             EXPECT_EQ(done && holds, !trial.refused());
             EXPECT_TRUE(token.verify(certificate));
         }},
        {"TokenEncodesFromItsMessage",
         [](Trial& trial) {
             const CToken token = fields_to_sign();
             const CBlob der = CToken(token).encode();
             trial.call([&] { EXPECT_EQ(token.encode(), der); });
             EXPECT_EQ(token.encode(), der);
         }},
        {"TokenEncodesWhatItKept", uses(signed_token, [](const CToken& token) { (void)token.encode(); })},
        {"TokenDecodes", decodes(signed_token)},
        {"TokenPutsAccuracy",
         puts(
             signed_token,
             [] {
                 return CAccuracy{4, 5, 6};
             },
             [](CToken& token, const CAccuracy& accuracy) { token.put_accuracy(&accuracy); },
             [](const CToken& token) { return *token.get_accuracy(); })},
        {"TokenPutsNonce", puts(
                               signed_token, [] { return number("4d"); },
                               [](CToken& token, const CBigInteger& nonce) { token.put_nonce(&nonce); },
                               [](const CToken& token) { return *token.get_nonce(); })},
        {"TokenPutsAuthority", puts(
                                   signed_token, [] { return authority_name(L"other.tsa.example"); },
                                   [](CToken& token, const CGeneralName& name) { token.put_tsa(&name); },
                                   [](const CToken& token) { return token.get_tsa()->encode(); })},
        {"TokenPutsExtensions",
         puts(
             signed_token, other_extensions,
             [](CToken& token, const CExtensions& list) { token.put_extensions(&list); },
             [](const CToken& token) { return token.get_extensions()->encode(); })},
        {"TokenPutsCertificates",
         puts(
             signed_token, [] { return CBlobList(2, blob("30 00")); },
             [](CToken& token, const CBlobList& list) { token.put_certificates(&list); },
             [](const CToken& token) { return *token.get_certificates(); })},
        {"TokenPutsSignedAttributes",
         puts(
             signed_token, other_attributes,
             [](CToken& token, const CAttributes& list) { token.put_signedAttributes(&list); },
             [](const CToken& token) { return *token.get_signedAttributes(); })},
        {"TokenPutsUnsignedAttributes",
         puts(
             signed_token, other_attributes,
             [](CToken& token, const CAttributes& list) { token.put_unsignedAttributes(&list); },
             [](const CToken& token) { return *token.get_unsignedAttributes(); })},
        {"TokenRecord", fill_token_record},

        {"Response", makes([] { const CResponse response; })},
        {"ResponseCopy",
         uses(full_response, [](const CResponse& response) { const CResponse copy(response); })},
        {"ResponseAssignment",
         [](Trial& trial) {
             const CResponse other = full_response();
             CResponse response;
             const CBlob before = response.encode();
             const bool done = trial.call([&] { response = other; });
             EXPECT_EQ(response.encode(), done ? other.encode() : before);
         }},
        {"ResponseCleared", makes(make_and_clear<CResponse>)},
        {"ResponseEncodes", uses(full_response, [](const CResponse& response) { (void)response.encode(); })},
        {"ResponseDecodes", decodes(full_response)},
        {"ResponsePutsStatus",
         puts(
             full_response, rejection,
             [](CResponse& response, const CPKIStatusInfo& status) { response.put_status(status); },
             [](const CResponse& response) { return response.get_status().encode(); })},
        {"ResponsePutsToken",
         [](Trial& trial) {
             CResponse response = full_response();
             const CBlob before = response.encode();
             const CToken token = signed_token();
             const bool done = trial.call([&] { response.put_timeStampToken(&token); });
             EXPECT_TRUE(done || response.encode() == before);
             response.put_timeStampToken(&token);
             EXPECT_EQ(response.get_timeStampToken()->encode(), token.encode());
         }},
    };
}

Operations time_stamp_operations_without_memory() {
    return {
        {"RequestFields",
         [](Trial& trial) {
             const CRequest request = full_request();
             trial.call([&] {
                 EXPECT_EQ(request.get_version(), 1u);
                 EXPECT_STREQ(request.get_hashAlgorithm().get_algorithm(), kSha256Text);
                 EXPECT_EQ(request.get_hashedMessage().cbData(), 2u);
                 EXPECT_TRUE(request.get_certReq());
                 EXPECT_STREQ(request.get_reqPolicy(), "1.2.3");
                 EXPECT_NE(request.get_nonce(), nullptr);
                 EXPECT_NE(request.get_extensions(), nullptr);
             });
         }},
        {"TokenFields",
         [](Trial& trial) {
             const CToken token = signed_token();
             trial.call([&] {
                 EXPECT_EQ(token.get_version(), 1u);
                 EXPECT_STREQ(token.get_policy(), "1.2.3");
                 EXPECT_STREQ(token.get_hashAlgorithm().get_algorithm(), kSha256Text);
                 EXPECT_EQ(token.get_hashedMessage().cbData(), 2u);
                 EXPECT_EQ(token.get_serialNumber().cbData(), 1u);
                 EXPECT_EQ(token.get_genTime().year(), 2024u);
                 EXPECT_STREQ(token.get_genTimeZ(), "20240102030405Z");
                 EXPECT_TRUE(token.get_ordering());
                 EXPECT_NE(token.get_signerInfo().get_signature().cbData(), 0u);
                 EXPECT_TRUE(*token.get_accuracy() == (CAccuracy{1, 2, 3}));
                 EXPECT_TRUE(*token.get_accuracy() != CAccuracy{});
                 EXPECT_NE(token.get_nonce(), nullptr);
                 EXPECT_NE(token.get_tsa(), nullptr);
                 EXPECT_NE(token.get_extensions(), nullptr);
                 EXPECT_NE(token.get_signedAttributes(), nullptr);
                 EXPECT_NE(token.get_unsignedAttributes(), nullptr);
                 EXPECT_NE(token.get_certificates(), nullptr);
             });
         }},
        {"AccuracyRecord",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             trial.call([&] {
                 asn1data::ASN1T_Accuracy record;
                 TSP_AccuracyToASN1T_Accuracy(buffer.getCtxtPtr(), record, CAccuracy{1, 2, 3});
                 CAccuracy read;
                 ASN1T_AccuracyToTSP_Accuracy(read, record);
                 EXPECT_TRUE(read == (CAccuracy{1, 2, 3}));
             });
         }},
        {"ResponseFields",
         [](Trial& trial) {
             const CResponse response = full_response();
             trial.call([&] {
                 EXPECT_EQ(response.get_status().get_pkiStatus(), PKIStatus_grantedWithMods);
                 EXPECT_NE(response.get_timeStampToken(), nullptr);
             });
         }},
    };
}

}  // namespace Quillmark::test

BOOL __wrap_CryptMsgUpdate(HCRYPTMSG message, const BYTE* data, DWORD size, BOOL final) {
    const BOOL updated = __real_CryptMsgUpdate(message, data, size, final);
    if (!updated) {
        Quillmark::test::message_that_failed = message;
    }
    return updated;
}
