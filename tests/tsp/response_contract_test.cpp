// CResponse: how the token crosses it, in which order messages come and go, and what exhausted memory makes
// of a length.

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/codec_heap.h"
#include "tests/support/message_service.h"
#include "tests/support/result_code.h"
#include "tests/support/sample_token.h"
#include "tsp/response.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob_of;
using test::element;
using test::hex;
using test::join;
using test::MessageService;
using test::Octets;
using test::sample_token;
using test::sequence;

using Calls = std::vector<std::string>;

Octets response_with(const Octets& token) {
    return sequence({element(0x30, "02 01 00"), token});
}

CResponse decoded(const Octets& octets) {
    CResponse response;
    response.decode(blob_of(octets));
    return response;
}

// The token with the header of its ContentInfo in the indefinite form (X.690 8.1.3.6).
Octets indefinite(const Octets& token) {
    const std::size_t header = token.at(1) < 0x80 ? 2u : 2u + (token.at(1) & 0x7Fu);
    return join(
        {{0x30, 0x80}, Octets(token.begin() + static_cast<std::ptrdiff_t>(header), token.end()), {0, 0}});
}

// Intended: a token in other BER comes out in DER, and that is what its own decoder sees and keeps.
TEST(TokenInAResponse, ComesOutInDer) {
    const CResponse response = decoded(response_with(indefinite(sample_token())));
    ASSERT_NE(response.get_timeStampToken(), nullptr);
    EXPECT_EQ(hex(response.get_timeStampToken()->encode()), test::to_hex(sample_token()));
    EXPECT_EQ(hex(response.encode()), test::to_hex(response_with(sample_token())));
}

// Intended: by itself the same token keeps its bytes, and DER is made of them on the way into a response.
TEST(TokenInAResponse, IsWrittenInDerWhateverItsBytes) {
    CToken token;
    token.decode(blob_of(indefinite(sample_token())));
    EXPECT_EQ(hex(token.encode()), test::to_hex(indefinite(sample_token())));
    CResponse response;
    response.put_status(CPKIStatusInfo(PKIStatus_granted));
    response.put_timeStampToken(&token);
    EXPECT_EQ(hex(response.encode()), test::to_hex(response_with(sample_token())));
    EXPECT_EQ(hex(response.get_timeStampToken()->encode()), test::to_hex(indefinite(sample_token())));
}

TEST(ResponseCalls, PutCopiesTheTokenBeforeTheOldOneGoes) {
    CResponse response = decoded(response_with(sample_token()));
    CToken token;
    token.decode(blob_of(sample_token()));
    MessageService service;
    response.put_timeStampToken(&token);
    EXPECT_EQ(service.calls(), (Calls{"CryptMsgDuplicate", "CryptMsgClose"}));
}

TEST(ResponseCalls, PutNullClosesTheMessage) {
    CResponse response = decoded(response_with(sample_token()));
    MessageService service;
    response.put_timeStampToken(nullptr);
    EXPECT_EQ(service.calls(), (Calls{"CryptMsgClose"}));
}

// The old token is kept until the end, as the bytes may lie in it.
TEST(ResponseCalls, DecodingClosesTheOldMessageLast) {
    CResponse response = decoded(response_with(sample_token()));
    MessageService service;
    response.decode(blob_of(response_with(sample_token())));
    ASSERT_FALSE(service.calls().empty());
    EXPECT_EQ(service.calls().front(), "CryptMsgOpenToDecode");
    EXPECT_EQ(service.calls().back(), "CryptMsgClose");
}

TEST(ResponseCalls, EncodingADecodedTokenAsksNoService) {
    const CResponse response = decoded(response_with(sample_token()));
    MessageService service;
    (void)response.encode();
    EXPECT_TRUE(service.calls().empty());
}

// Intended: a status of the encoder below 0 is taken for a length, which no memory holds.
TEST(ResponseWithALongText, TakesAFailedEncoderForALengthThatCannotBeAllocated) {
    CResponse response;
    CPKIStatusInfo status(PKIStatus_rejection);
    // Longer than the first buffer of the encoder, so that it has to grow.
    status.put_statusString(CPKIFreeText(std::wstring(100000, L'a').c_str(), CLanguageTagDefaultRead()));
    response.put_status(status);
    const CBlob expected = response.encode();
    bool was_taken_for_a_length = false;
    bool refused = true;
    for (std::size_t n = 0; refused; ++n) {
        test::CodecHeap heap;
        heap.fail_after(n);
        try {
            EXPECT_EQ(response.encode(), expected);
        } catch (const CAtlException&) {
        } catch (const ASN1MessageBuffer::RTLError&) {
        } catch (const std::bad_alloc&) {
            was_taken_for_a_length = true;
        }
        refused = heap.failed();
        EXPECT_EQ(heap.live_blocks(), 0u);
    }
    EXPECT_TRUE(was_taken_for_a_length);
}

TEST(ResponseStatus, StandsWhenTheTokenIsRefused) {
    test::TokenParts parts;
    parts.content_type = test::kDataType;
    CResponse response;
    EXPECT_CODE(CRYPT_E_BAD_MSG,
                response.decode(blob_of(sequence({element(0x30, "02 01 01"), sample_token(parts)}))));
    EXPECT_EQ(response.get_status().get_pkiStatus(), 1u);
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
