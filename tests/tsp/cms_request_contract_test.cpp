// The record behind CMSRequest: which status ends a decoder at which element, what the traits fill in and
// read, and the layout of the fields.

#include <gtest/gtest.h>

#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"
#include "tests/asn1data/record_codec.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/codec_heap.h"
#include "tests/support/der.h"
#include "tests/support/member_offset.h"
#include "tsp/cms_request.h"
#include "tsp/detail/cms_request_impl.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using asn1data::ASN1C_TimeStampAuthenticodeRequest;
using asn1data::ASN1T_TimeStampAuthenticodeRequest;
using test::blob;
using test::element;
using test::from_hex;
using test::join;
using test::Octets;
using test::offset_of;
using test::sequence;
using Traits = ASN1T_TimeStampAuthenticodeRequest_traits;
using Decoded = test::Decoded<ASN1T_TimeStampAuthenticodeRequest, ASN1C_TimeStampAuthenticodeRequest>;

const Octets kAlgorithm = from_hex("06 02 2a 03");
const Octets kAttribute = from_hex("30 08 06 02 2a 05 31 02 05 00");
const Octets kAttributes = element(0x31, kAttribute);
const Octets kContent = from_hex("30 08 06 02 2a 04 a0 02 05 00");
const Octets kWhole = sequence({kAlgorithm, kAttributes, kContent});

std::string encoded(ASN1T_TimeStampAuthenticodeRequest& record) {
    return test::to_hex(test::encode<ASN1C_TimeStampAuthenticodeRequest>(record).octets);
}

CMSRequest whole_request() {
    CMSRequest request;
    request.decode(test::blob_of(kWhole));
    return request;
}

// The codec

struct RequestCase {
    const char* name;
    Octets ber;
    int status;
};

void PrintTo(const RequestCase& row, std::ostream* out) {
    *out << row.name << ": " << test::to_hex(row.ber);
}

class DecodingCMSRequest : public testing::TestWithParam<RequestCase> {};

TEST_P(DecodingCMSRequest, GivesStatus) {
    Decoded decoded(GetParam().ber);
    EXPECT_EQ(decoded.status(), GetParam().status);
    EXPECT_EQ(decoded.first_status(), GetParam().status);
}

const RequestCase kCases[] = {
    {"RequiredOnly", sequence({kAlgorithm, kContent}), RT_OK},
    {"AllElements", kWhole, RT_OK},
    {"NoContents", sequence({}), RT_E_SETMISSING},
    {"EmptyIndefiniteForm", from_hex("30 80 00 00"), RT_E_SETMISSING},
    {"AlgorithmOnly", sequence({kAlgorithm}), RT_E_SETMISSING},
    {"AlgorithmAndAttributes", sequence({kAlgorithm, kAttributes}), RT_E_SETMISSING},
    {"AlgorithmMissing", sequence({kContent}), RT_E_IDNOTFOUND},
    {"AnotherElementForTheContent", sequence({kAlgorithm, from_hex("05 00")}), RT_E_IDNOTFOUND},
    {"AttributesTwice", sequence({kAlgorithm, kAttributes, kAttributes, kContent}), RT_E_IDNOTFOUND},
    {"NoAttribute", sequence({kAlgorithm, element(0x31, ""), kContent}), RT_E_CONSVIO},
    {"FourthElement", sequence({kAlgorithm, kAttributes, kContent, from_hex("05 00")}), RT_E_SEQOVFL},
    {"AttributesBehindTheContent", sequence({kAlgorithm, kContent, kAttributes}), RT_E_SEQOVFL},
    {"NotASequence", element(0x31, join({kAlgorithm, kContent})), RT_E_IDNOTFOUND},
    {"IndefiniteLength", join({from_hex("30 80"), kAlgorithm, kContent, from_hex("00 00")}), RT_OK},
    // Intended: what lies behind the message is not looked at.
    {"TrailingOctets", join({sequence({kAlgorithm, kContent}), from_hex("de ad")}), RT_OK},
};

INSTANTIATE_TEST_SUITE_P(Elements, DecodingCMSRequest, testing::ValuesIn(kCases), test::case_name);

// Intended: the form with at least one element (RFC 5652 5.3) refuses an empty list, so the traits leave it
// out.
TEST(CMSRequestRecord, DoesNotEncodeAnEmptyList) {
    Decoded decoded(sequence({kAlgorithm, kContent}));
    ASSERT_EQ(decoded.status(), RT_OK);
    decoded.record().m.attributesPresent = 1;
    ASN1BEREncodeBuffer buffer;
    EXPECT_EQ(ASN1C_TimeStampAuthenticodeRequest(buffer, decoded.record()).Encode(), RT_E_CONSVIO);
    EXPECT_EQ(buffer.getCtxtPtr()->errInfo.status, RT_E_CONSVIO);
}

// The traits

TEST(CMSRequestRecord, IsFilledFromARequest) {
    ASN1BEREncodeBuffer buffer;
    ASN1T_TimeStampAuthenticodeRequest record;
    Traits::set(buffer.getCtxtPtr(), record, whole_request());
    EXPECT_TRUE(record.m.attributesPresent);
    EXPECT_EQ(record.attributes.count, 1u);
    EXPECT_EQ(record.timeStampAlgorithm.numids, 3u);
    EXPECT_EQ(encoded(record), test::to_hex(kWhole));
}

TEST(CMSRequestRecord, IsClearedBeforeItIsFilled) {
    ASN1BEREncodeBuffer buffer;
    ASN1T_TimeStampAuthenticodeRequest record;
    record.m.attributesPresent = 1;
    record.attributes.count = 7;
    Traits::set(buffer.getCtxtPtr(), record, CMSRequest("1.2.3", CContentInfo("1.2.4", blob("05 00"))));
    EXPECT_FALSE(record.m.attributesPresent);
    EXPECT_EQ(record.attributes.count, 0u);
    EXPECT_TRUE(record.mpContext.isNull());
    EXPECT_EQ(encoded(record), test::to_hex(sequence({kAlgorithm, kContent})));
}

TEST(CMSRequestRecord, HasNoAttributesForAnEmptyList) {
    CMSRequest request = whole_request();
    const CAttributes none;
    request.put_attributes(&none);
    ASN1BEREncodeBuffer buffer;
    ASN1T_TimeStampAuthenticodeRequest record;
    Traits::set(buffer.getCtxtPtr(), record, request);
    EXPECT_FALSE(record.m.attributesPresent);
}

TEST(CMSRequestRecord, IsReadIntoTheRequestInPlace) {
    Decoded decoded(sequence({kAlgorithm, kContent}));
    CMSRequest request = whole_request();
    const CContentInfo* content = &request.get_contentInfo();
    Traits::get(decoded.record(), request);
    EXPECT_EQ(&request.get_contentInfo(), content);
    EXPECT_EQ(request.get_attributes(), nullptr);
}

TEST(CMSRequestRecord, IsCopiedDeeply) {
    test::CodecHeap heap;
    {
        ASN1BEREncodeBuffer buffer;
        ASN1T_TimeStampAuthenticodeRequest copy;
        {
            Decoded decoded(kWhole);
            Traits::copy(buffer.getCtxtPtr(), decoded.record(), copy);
        }
        EXPECT_EQ(encoded(copy), test::to_hex(kWhole));
    }
    EXPECT_EQ(heap.live_blocks(), 0u);
}

// The layout, which other programs of the same interface count on.

TEST(CMSRequestLayout, IsOnePointer) {
    EXPECT_EQ(sizeof(CMSRequest), sizeof(void*));
}

TEST(CMSRequestLayout, HasItsFieldsInOrder) {
    const CMSRequestImpl fields;
    EXPECT_EQ(offset_of(fields, fields.timeStampAlgorithm), 0u);
    EXPECT_EQ(offset_of(fields, fields.attributes), 32u);
    EXPECT_EQ(offset_of(fields, fields.contentInfo), 40u);
    EXPECT_EQ(sizeof fields, 64u);
}

TEST(CMSRequestLayout, OfTheRecordFollowsFromItsElements) {
    const ASN1T_TimeStampAuthenticodeRequest record;
    EXPECT_EQ(offset_of(record, record.m), 8u);
    EXPECT_EQ(offset_of(record, record.timeStampAlgorithm), 12u);
    EXPECT_EQ(offset_of(record, record.attributes), 528u);
    EXPECT_EQ(offset_of(record, record.content), 560u);
    EXPECT_EQ(sizeof record, 1112u);
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
