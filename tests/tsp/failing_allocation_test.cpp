// Every operation of the time-stamp objects with each of its allocations refused in turn, from `operator new`
// and from the heap of the codecs: it fails by an exception, leaks nothing, and leaves objects that can be
// used and destroyed.

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>

#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/codec_heap.h"
#include "tests/support/failing_new.h"
#include "tests/support/message_service.h"
#include "tests/support/provider_calls.h"
#include "tests/support/sample_stamp.h"
#include "tests/support/sample_token.h"
#include "tests/support/test_keys.h"
#include "tsp/cms_request.h"
#include "tsp/cms_stamp.h"
#include "tsp/request.h"
#include "tsp/response.h"
#include "tsp/token.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob;
using test::blob_of;
using test::element;
using test::hex;
using test::sequence;

constexpr char kSha256[] = "2.16.840.1.101.3.4.2.1";

/// What a call without memory may throw.
template <class Call>
void expect_clean_failure(Call&& call) {
    try {
        call();
    } catch (const CAtlException& failure) {
        const HRESULT code = failure;
        EXPECT_TRUE(code == CRYPT_E_ASN1_MEMORY || code == E_OUTOFMEMORY || code == CRYPT_E_ASN1_INTERNAL)
            << result_name(code);
    } catch (const ASN1MessageBuffer::RTLError& failure) {
        EXPECT_EQ(failure.getStatus(), RT_E_NOMEM);
    } catch (const std::bad_alloc&) {
    }
}

/// Runs `call` once for each allocation that it makes, which is refused, and a last time in full; `check`
/// after each.
void with_each_allocation_refused(const std::function<void()>& call, const std::function<void()>& check) {
    bool refused = true;
    for (std::size_t n = 0; refused; ++n) {
        SCOPED_TRACE("operator new " + std::to_string(n));
        {
            test::FailNthNew failing(n);
            expect_clean_failure(call);
            refused = failing.failed();
        }
        check();
    }
    refused = true;
    for (std::size_t n = 0; refused; ++n) {
        SCOPED_TRACE("codec heap " + std::to_string(n));
        {
            test::CodecHeap heap;
            heap.fail_after(n);
            expect_clean_failure(call);
            refused = heap.failed();
            EXPECT_EQ(heap.live_blocks(), 0u);
        }
        check();
    }
}

CBigInteger number(const char* hex) {
    const CBlob octets = blob(hex);
    return CBigInteger(octets.pbData(), octets.cbData());
}

CRequest full_request() {
    CRequest request(CAlgorithmIdentifierEx(kSha256), blob("aa bb"), true);
    request.put_reqPolicy("1.2.3");
    const CBigInteger nonce = number("2a");
    request.put_nonce(&nonce);
    CExtensions extensions;
    extensions.insert(CExtension(CExtValue("1.2.5", blob("05 00")), true));
    request.put_extensions(&extensions);
    return request;
}

CToken full_token() {
    CToken token("1.2.3", CAlgorithmIdentifierEx(kSha256), blob("aa bb"), number("05"),
                 CDateTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u), true);
    const CAccuracy accuracy{1, 2, 3};
    token.put_accuracy(&accuracy);
    const CBigInteger nonce = number("2a");
    token.put_nonce(&nonce);
    CGeneralName tsa;
    tsa.put_dNSName(L"tsa.example");
    token.put_tsa(&tsa);
    CExtensions extensions;
    extensions.insert(CExtension(CExtValue("1.2.5", blob("05 00"))));
    token.put_extensions(&extensions);
    CAttributes attributes;
    attributes.push_back(CAttribute("1.2.9"));
    attributes.back().add(blob("02 01 01"));
    token.put_signedAttributes(&attributes);
    token.put_unsignedAttributes(&attributes);
    CBlobList certificates;
    certificates.push_back(test::certificate("tsa_p256"));
    token.put_certificates(&certificates);
    return token;
}

CToken signed_token() {
    CToken token = full_token();
    const test::TestKey key("tsa_p256");
    token.sign(key.provider(), AT_SIGNATURE, test::certificate("tsa_p256"), CAlgorithmIdentifierEx(kSha256));
    return token;
}

CResponse full_response() {
    CResponse response;
    CPKIStatusInfo status(PKIStatus_grantedWithMods);
    status.put_statusString(CPKIFreeText(L"text", CLanguageTagDefaultRead()));
    response.put_status(status);
    const CToken token = signed_token();
    response.put_timeStampToken(&token);
    return response;
}

void nothing_more() {}

// Requests

TEST(RequestWithoutMemory, Encodes) {
    const CRequest request = full_request();
    const CBlob expected = request.encode();
    with_each_allocation_refused([&] { (void)request.encode(); },
                                 [&] { EXPECT_EQ(request.encode(), expected); });
}

TEST(RequestWithoutMemory, Decodes) {
    const CBlob bytes = full_request().encode();
    CRequest request;
    with_each_allocation_refused([&] { request.decode(bytes); }, [&] { (void)request.get_hashedMessage(); });
    EXPECT_EQ(request.encode(), bytes);
}

TEST(RequestWithoutMemory, CopiesAndConstructs) {
    const CRequest request = full_request();
    const CAlgorithmIdentifierEx algorithm(kSha256);
    const CBlob hash = blob("aa bb");
    with_each_allocation_refused(
        [&] {
            const CRequest copy(request);
            const CRequest constructed(algorithm, hash, true);
        },
        nothing_more);
}

TEST(RequestWithoutMemory, AssignmentLeavesTheOldContent) {
    const CRequest other = full_request();
    const CBlob expected = other.encode();
    const CRequest old(CAlgorithmIdentifierEx("1.2.3"), blob("aa"), false);
    const CBlob old_bytes = old.encode();
    CRequest request(old);
    with_each_allocation_refused([&] { request = other; },
                                 [&] {
                                     const CBlob bytes = request.encode();
                                     EXPECT_TRUE(bytes == expected || bytes == old_bytes);
                                 });
    EXPECT_EQ(request.encode(), expected);
}

TEST(RequestWithoutMemory, PutKeepsTheOldValue) {
    CRequest request = full_request();
    const CBlob expected = request.encode();
    const CBigInteger nonce = *request.get_nonce();
    const CExtensions extensions = *request.get_extensions();
    with_each_allocation_refused(
        [&] {
            request.put_reqPolicy("1.2.3");
            request.put_nonce(&nonce);
            request.put_extensions(&extensions);
        },
        [&] { EXPECT_EQ(request.encode(), expected); });
}

// Tokens

TEST(TokenWithoutMemory, Signs) {
    const test::TestKey key("tsa_p256");
    const CBlob certificate = test::certificate("tsa_p256");
    const CAlgorithmIdentifierEx algorithm(kSha256);
    test::MessageService service(test::MessageService::kHandles);
    {
        CToken token = full_token();
        with_each_allocation_refused(
            [&] { token.sign(key.provider(), AT_SIGNATURE, certificate, algorithm); },
            [&] { EXPECT_EQ(service.open_certificates(), 0); });
        EXPECT_TRUE(token.verify(certificate));
    }
    // Intended: a message whose update fails is not closed. No other is lost.
    EXPECT_EQ(service.open_messages(), service.failed_updates());
}

TEST(TokenWithoutMemory, Decodes) {
    const CBlob bytes = signed_token().encode();
    test::MessageService service(test::MessageService::kHandles);
    {
        CToken token;
        with_each_allocation_refused([&] { token.decode(bytes); }, [&] { (void)token.get_policy(); });
        EXPECT_TRUE(token.verify(test::certificate("tsa_p256")));
    }
    EXPECT_EQ(service.open_messages(), 0);
}

TEST(TokenWithoutMemory, DecodeOfBytesThatCannotBeCopiedLeavesTheOldContent) {
    const CBlob bytes = signed_token().encode();
    const CBlob other = blob_of(test::sample_token());
    CToken token;
    token.decode(bytes);
    test::FailNthNew failing(0);
    EXPECT_THROW(token.decode(other), std::bad_alloc);
    EXPECT_TRUE(token.encode() == bytes);
}

TEST(TokenWithoutMemory, VerifiesAndEncodes) {
    CToken token = signed_token();
    const CBlob certificate = test::certificate("tsa_p256");
    token.put_nonce(nullptr);
    test::MessageService service(test::MessageService::kHandles);
    with_each_allocation_refused(
        [&] {
            (void)token.verify(certificate);
            (void)token.encode();
        },
        [&] { EXPECT_EQ(service.open_certificates(), 0); });
}

TEST(TokenWithoutMemory, CopiesAndConstructs) {
    const CToken token = signed_token();
    const CAlgorithmIdentifierEx algorithm(kSha256);
    const CBlob hash = blob("aa bb");
    const CBigInteger serial = number("05");
    const CDateTime time(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u);
    test::MessageService service(test::MessageService::kHandles);
    with_each_allocation_refused(
        [&] {
            const CToken copy(token);
            const CToken constructed("1.2.3", algorithm, hash, serial, time, true);
        },
        nothing_more);
    EXPECT_EQ(service.open_messages(), 0);
}

TEST(TokenWithoutMemory, AssignmentLeavesTheOldContent) {
    const CToken other = signed_token();
    const CBlob expected = other.encode();
    const CBlob old_bytes = blob_of(test::sample_token());
    test::MessageService service(test::MessageService::kHandles);
    {
        CToken token;
        token.decode(old_bytes);
        with_each_allocation_refused([&] { token = other; },
                                     [&] {
                                         const CBlob bytes = token.encode();
                                         EXPECT_TRUE(bytes == expected || bytes == old_bytes);
                                     });
        EXPECT_TRUE(token.verify(test::certificate("tsa_p256")));
    }
    EXPECT_EQ(service.open_messages(), 0);
}

TEST(TokenWithoutMemory, PutKeepsTheOldValue) {
    CToken token = full_token();
    const CToken values = token;
    with_each_allocation_refused(
        [&] {
            token.put_accuracy(values.get_accuracy());
            token.put_nonce(values.get_nonce());
            token.put_tsa(values.get_tsa());
            token.put_extensions(values.get_extensions());
            token.put_signedAttributes(values.get_signedAttributes());
            token.put_unsignedAttributes(values.get_unsignedAttributes());
            token.put_certificates(values.get_certificates());
        },
        [&] {
            EXPECT_TRUE(*token.get_accuracy() == *values.get_accuracy());
            EXPECT_TRUE(*token.get_nonce() == *values.get_nonce());
            EXPECT_STREQ(token.get_tsa()->get_dNSName(), L"tsa.example");
            EXPECT_EQ(token.get_extensions()->size(), 1u);
            EXPECT_TRUE(*token.get_signedAttributes() == *values.get_signedAttributes());
            EXPECT_TRUE(*token.get_unsignedAttributes() == *values.get_unsignedAttributes());
            EXPECT_TRUE(*token.get_certificates() == *values.get_certificates());
        });
}

// Responses

TEST(ResponseWithoutMemory, Encodes) {
    const CResponse response = full_response();
    const CBlob expected = response.encode();
    with_each_allocation_refused([&] { (void)response.encode(); },
                                 [&] { EXPECT_EQ(response.encode(), expected); });
}

TEST(ResponseWithoutMemory, Decodes) {
    const CBlob bytes = full_response().encode();
    test::MessageService service(test::MessageService::kHandles);
    {
        CResponse response;
        with_each_allocation_refused([&] { response.decode(bytes); }, [&] { (void)response.get_status(); });
        EXPECT_EQ(response.encode(), bytes);
    }
    EXPECT_EQ(service.open_messages(), 0);
}

TEST(ResponseWithoutMemory, AssignmentLeavesTheOldContent) {
    const CResponse other = full_response();
    const CBlob expected = other.encode();
    test::MessageService service(test::MessageService::kHandles);
    {
        CResponse response;
        response.decode(blob_of(sequence({element(0x30, "02 01 00"), test::sample_token()})));
        const CBlob old_bytes = response.encode();
        with_each_allocation_refused([&] { response = other; },
                                     [&] {
                                         const CBlob bytes = response.encode();
                                         EXPECT_TRUE(bytes == expected || bytes == old_bytes);
                                     });
        EXPECT_EQ(response.encode(), expected);
    }
    EXPECT_EQ(service.open_messages(), 0);
}

TEST(ResponseWithoutMemory, CopiesAndPuts) {
    const CResponse response = full_response();
    const CBlob expected = response.encode();
    CResponse target(response);
    with_each_allocation_refused(
        [&] {
            const CResponse copy(response);
            target.put_timeStampToken(response.get_timeStampToken());
        },
        [&] { EXPECT_EQ(target.encode(), expected); });
}

// Requests of the Authenticode exchange

CMSRequest full_authenticode_request() {
    CMSRequest request("1.3.6.1.4.1.311.3.2.1", CContentInfo("1.2.840.113549.1.7.1", blob("04 02 aa bb")));
    CAttributes attributes;
    attributes.push_back(CAttribute("1.2.9"));
    attributes.back().add(blob("02 01 02"));
    attributes.back().add(blob("02 01 01"));
    attributes.push_back(CAttribute("1.2.5"));
    attributes.back().add(blob("05 00"));
    request.put_attributes(&attributes);
    return request;
}

TEST(CMSRequestWithoutMemory, Encodes) {
    const CMSRequest request = full_authenticode_request();
    const CBlob expected = request.encode();
    with_each_allocation_refused([&] { (void)request.encode(); },
                                 [&] { EXPECT_EQ(request.encode(), expected); });
}

// Each field is the old or the new one.
TEST(CMSRequestWithoutMemory, DecodesFieldByField) {
    const CBlob bytes = full_authenticode_request().encode();
    const CMSRequest old("1.2.3", CContentInfo("1.2.4", blob("05 00")));
    CMSRequest request(old);
    with_each_allocation_refused(
        [&] {
            request = old;
            request.decode(bytes);
        },
        [&] {
            const std::string algorithm = request.get_timeStampAlgorithm();
            EXPECT_TRUE(algorithm == "1.2.3" || algorithm == "1.3.6.1.4.1.311.3.2.1") << algorithm;
            const std::string content = hex(request.get_contentInfo().get_content());
            EXPECT_TRUE(content == "05 00" || content == "04 02 aa bb") << content;
            EXPECT_TRUE(request.get_attributes() == nullptr || request.get_attributes()->size() == 2);
        });
    EXPECT_EQ(request.encode(), bytes);
}

TEST(CMSRequestWithoutMemory, CopiesAndConstructs) {
    const CMSRequest request = full_authenticode_request();
    with_each_allocation_refused(
        [&] {
            const CMSRequest copy(request);
            const CMSRequest constructed("1.3.6.1.4.1.311.3.2.1", request.get_contentInfo());
        },
        nothing_more);
}

TEST(CMSRequestWithoutMemory, AssignmentLeavesTheOldContent) {
    const CMSRequest other = full_authenticode_request();
    const CBlob expected = other.encode();
    const CMSRequest old("1.2.3", CContentInfo("1.2.4", blob("05 00")));
    const CBlob old_bytes = old.encode();
    CMSRequest request(old);
    with_each_allocation_refused([&] { request = other; },
                                 [&] {
                                     const CBlob bytes = request.encode();
                                     EXPECT_TRUE(bytes == expected || bytes == old_bytes);
                                 });
    EXPECT_EQ(request.encode(), expected);
}

TEST(CMSRequestWithoutMemory, PutKeepsTheOldValue) {
    CMSRequest request = full_authenticode_request();
    const CBlob expected = request.encode();
    const CMSRequest values = request;
    with_each_allocation_refused(
        [&] {
            request.put_timeStampAlgorithm(values.get_timeStampAlgorithm());
            request.put_contentInfo(values.get_contentInfo());
            request.put_attributes(values.get_attributes());
        },
        [&] { EXPECT_EQ(request.encode(), expected); });
}

TEST(CMSRequestWithoutMemory, PutOfAnotherContentIsAllOrNothing) {
    const CContentInfo first("1.2.840.113549.1.7.1", blob("04 02 aa bb"));
    const CContentInfo second("1.2.3.4", blob("05 00"));
    CMSRequest request("1.2.3", first);
    with_each_allocation_refused([&] { request.put_contentInfo(second); },
                                 [&] {
                                     const CBlob content = request.get_contentInfo().encode();
                                     EXPECT_TRUE(content == first.encode() || content == second.encode());
                                     request = CMSRequest("1.2.3", first);
                                 });
}

// Stamps of the Authenticode exchange

CMSStamp unsigned_stamp() {
    CMSStamp stamp(blob("04 02 aa bb"), CDateTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u));
    const CBlobList certificates = {test::certificate("tsa_p256"), test::certificate("ca")};
    stamp.put_certificates(&certificates);
    return stamp;
}

CMSStamp signed_stamp() {
    CMSStamp stamp = unsigned_stamp();
    const test::TestKey key("tsa_p256");
    stamp.sign(key.provider(), AT_SIGNATURE, test::certificate("tsa_p256"), CAlgorithmIdentifierEx(kSha256));
    return stamp;
}

TEST(StampWithoutMemory, Signs) {
    const CBlob certificate = test::certificate("tsa_p256");
    const CAlgorithmIdentifierEx algorithm(kSha256);
    const int references = test::open_provider_references();
    {
        const test::TestKey key("tsa_p256");
        test::MessageService service(test::MessageService::kHandles);
        CMSStamp stamp = unsigned_stamp();
        with_each_allocation_refused(
            [&] { stamp.sign(key.provider(), AT_SIGNATURE, certificate, algorithm); },
            [&] {
                EXPECT_EQ(service.open_certificates(), 0);
                EXPECT_EQ(service.open_messages(), 0);
            });
        EXPECT_TRUE(stamp.verify(certificate));
    }
    // A key that was opened is one reference, which only its release counts.
    EXPECT_EQ(test::open_provider_references(), references - 1);
}

TEST(StampWithoutMemory, PutLeavesTheOldMessageOrSignsANewOne) {
    CMSStamp stamp = signed_stamp();
    const CMSStamp values = stamp;
    const CBlob certificate = test::certificate("tsa_p256");
    test::MessageService service(test::MessageService::kHandles);
    with_each_allocation_refused(
        [&] {
            stamp.put_content(values.get_content());
            stamp.put_signingTime(values.get_signingTime());
            stamp.put_certificates(values.get_certificates());
        },
        [&] {
            EXPECT_EQ(service.open_certificates(), 0);
            EXPECT_EQ(service.open_messages(), 0);
            EXPECT_EQ(stamp.get_content(), values.get_content());
            EXPECT_TRUE(*stamp.get_certificates() == *values.get_certificates());
            EXPECT_TRUE(stamp.verify(certificate));
        });
}

// Each field is the old or the new one.
TEST(StampWithoutMemory, DecodesFieldByField) {
    const CBlob bytes = signed_stamp().encode();
    test::MessageService service(test::MessageService::kHandles);
    const CMSStamp old(blob("04 00"), CDateTime(0L, 0));
    CMSStamp stamp;
    with_each_allocation_refused(
        [&] {
            stamp = old;
            stamp.decode(bytes);
        },
        [&] {
            EXPECT_EQ(service.open_messages(), 0);
            const std::string content = hex(stamp.get_content());
            EXPECT_TRUE(content.empty() || content == "04 00" || content == "04 02 aa bb") << content;
            EXPECT_TRUE(stamp.get_certificates() == nullptr || stamp.get_certificates()->size() == 2);
        });
    EXPECT_TRUE(stamp.verify(test::certificate("tsa_p256")));
}

TEST(StampWithoutMemory, DecodeOfBytesThatCannotBeCopiedLeavesTheOldContent) {
    CMSStamp stamp = signed_stamp();
    const CBlob before = stamp.encode();
    const CBlob other = blob_of(test::sample_stamp());
    {
        test::FailNthNew failing(0);
        EXPECT_THROW(stamp.decode(other), std::bad_alloc);
    }
    EXPECT_EQ(stamp.encode(), before);
}

TEST(StampWithoutMemory, VerifiesEncodesAndDescribesItsSigner) {
    const CMSStamp stamp = signed_stamp();
    const CBlob certificate = test::certificate("tsa_p256");
    test::MessageService service(test::MessageService::kHandles);
    with_each_allocation_refused(
        [&] {
            (void)stamp.verify(certificate);
            (void)stamp.encode();
            (void)stamp.get_signerInfo();
        },
        [&] {
            EXPECT_EQ(service.open_certificates(), 0);
            EXPECT_EQ(service.open_messages(), 0);
        });
}

TEST(StampWithoutMemory, CopiesAndConstructs) {
    const CMSStamp stamp = signed_stamp();
    const int references = test::open_provider_references();
    with_each_allocation_refused(
        [&] {
            const CMSStamp copy(stamp);
            const CMSStamp constructed(stamp.get_content(), stamp.get_signingTime());
        },
        [&] { EXPECT_EQ(test::open_provider_references(), references); });
}

TEST(StampWithoutMemory, AssignmentLeavesTheOldContent) {
    const CMSStamp other = signed_stamp();
    const CMSStamp old = signed_stamp();
    const int references = test::open_provider_references();
    {
        CMSStamp stamp(old);
        with_each_allocation_refused([&] { stamp = other; },
                                     [&] {
                                         const CBlob bytes = stamp.encode();
                                         EXPECT_TRUE(bytes == other.encode() || bytes == old.encode());
                                         EXPECT_EQ(test::open_provider_references(), references + 1);
                                     });
        EXPECT_EQ(stamp.encode(), other.encode());
    }
    EXPECT_EQ(test::open_provider_references(), references);
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
