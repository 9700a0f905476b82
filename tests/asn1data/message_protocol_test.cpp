// Messages of certificate management (RFC 4210, RFC 4211), data validation (RFC 3029) and certificate status
// (RFC 6960): what the shape of a type alone does not tell.

#include <gtest/gtest.h>

#include "asn1data/codecs.h"
#include "tests/asn1data/status_case.h"
#include "tests/support/case_name.h"
#include "tests/support/der.h"

using namespace asn1data;

namespace Quillmark::test {
namespace {

class MessageProtocol : public testing::TestWithParam<StatusCase> {};

TEST_P(MessageProtocol, GivesStatus) {
    EXPECT_EQ(GetParam().decode(GetParam().ber), GetParam().status);
}

const Octets kNames = sequence({from_hex("82 01 61")});
const Octets kSha256 = from_hex("30 0b 06 09 60 86 48 01 65 03 04 02 01");
const Octets kTime = text_element(0x18, "20240102030405Z");
const Octets kCertId = sequence({from_hex("82 01 61"), from_hex("02 01 07")});

/// INTEGER of `count` octets, the first of them 01.
Octets long_integer(std::size_t count) {
    Octets magnitude(count, 0x5A);
    magnitude[0] = 0x01;
    return element(0x02, magnitude);
}

// Certificate management

const StatusCase kBodies[] = {
    {"Confirmation", QUILLMARK_DECODE(PKIBody), from_hex("b3 02 05 00"), RT_OK},
    {"ErrorMessage", QUILLMARK_DECODE(PKIBody), from_hex("b7 07 30 05 30 03 02 01 02"), RT_OK},
    // The bodies that RFC 4210 added to those of RFC 2510
    {"CertificateConfirmation", QUILLMARK_DECODE(PKIBody), from_hex("b8 02 30 00"), RT_E_INVOPT},
    {"PollingRequest", QUILLMARK_DECODE(PKIBody), from_hex("b9 02 30 00"), RT_E_INVOPT},
    {"PollingResponse", QUILLMARK_DECODE(PKIBody), from_hex("ba 02 30 00"), RT_E_INVOPT},
    {"PrimitiveConfirmation", QUILLMARK_DECODE(PKIBody), from_hex("93 02 05 00"), RT_E_INVOPT},
    {"NoNestedMessage", QUILLMARK_DECODE(PKIBody), from_hex("b4 02 30 00"), RT_E_CONSVIO},
    {"NoRequest", QUILLMARK_DECODE(PKIBody), from_hex("a0 02 30 00"), RT_E_CONSVIO},
    {"NoResponse", QUILLMARK_DECODE(CertRepMessage), from_hex("30 02 30 00"), RT_OK},
    {"NoPublishedCertificate", QUILLMARK_DECODE(CertRepMessage), from_hex("30 06 a1 02 30 00 30 00"),
     RT_E_CONSVIO},
    {"NoRevocationStatus", QUILLMARK_DECODE(RevRepContent), from_hex("30 02 30 00"), RT_E_CONSVIO},
    {"NoControl", QUILLMARK_DECODE(Controls), from_hex("30 00"), RT_E_CONSVIO},
    {"NoInformation", QUILLMARK_DECODE(GenMsgContent), from_hex("30 00"), RT_OK},
    {"NoInformationInHeader", QUILLMARK_DECODE(PKIHeader_generalInfo), from_hex("30 00"), RT_E_CONSVIO},
    {"NegativeRequestNumber", QUILLMARK_DECODE(CertResponse), from_hex("30 08 02 01 ff 30 03 02 01 00"),
     RT_OK},
    {"RevocationWithoutDates", QUILLMARK_DECODE(RevAnnContent), sequence({from_hex("02 01 04"), kCertId}),
     RT_E_SETMISSING},
    {"RevocationWithoutBadSince", QUILLMARK_DECODE(RevAnnContent),
     sequence({from_hex("02 01 04"), kCertId, kTime}), RT_E_SETMISSING},
    {"RevocationWithDates", QUILLMARK_DECODE(RevAnnContent),
     sequence({from_hex("02 01 04"), kCertId, kTime, kTime}), RT_OK},
    {"EmptyValidity", QUILLMARK_DECODE(OptionalValidity), from_hex("30 00"), RT_OK},
    {"EmptyTemplate", QUILLMARK_DECODE(CertTemplate), from_hex("30 00"), RT_OK},
};
INSTANTIATE_TEST_SUITE_P(Management, MessageProtocol, testing::ValuesIn(kBodies), case_name);

/// A message in a message in a message ..., `depth` times.
Octets nested_messages(int depth) {
    const Octets header = sequence({from_hex("02 01 02"), from_hex("82 01 61"), from_hex("82 01 62")});
    Octets message = sequence({header, from_hex("b3 02 05 00")});
    for (int level = 0; level < depth; ++level) {
        message = sequence({header, element(0xB4, sequence({message}))});
    }
    return message;
}

TEST(PKIMessage, NestsToTheLimit) {
    using Message = Decoded<ASN1T_PKIMessage, ASN1C_PKIMessage>;
    const Octets deepest = nested_messages(64);
    Message decoded(deepest);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(encode<ASN1C_PKIMessage>(decoded.record()).octets), to_hex(deepest));
    Message too_deep(nested_messages(65));
    EXPECT_EQ(too_deep.status(), RT_E_NOTSUPP);
    EXPECT_EQ(too_deep.context()->nestingDepth, 0u);
}

TEST(InfoTypeAndValue, MayHaveNoValueUnderAKnownType) {
    const Octets der = from_hex("30 0a 06 08 2b 06 01 05 05 07 04 06");
    Decoded<ASN1T_InfoTypeAndValue, ASN1C_InfoTypeAndValue> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_FALSE(decoded.record().m.infoValuePresent);
    EXPECT_EQ(decoded.record().infoValue.decoded, nullptr);
    EXPECT_EQ(to_hex(encode<ASN1C_InfoTypeAndValue>(decoded.record()).octets), to_hex(der));
}

TEST(InfoTypeAndValue, OfAMessageRequestIsNull) {
    // 1.2.643.2.2.41.2
    const Octets type = from_hex("06 07 2a 85 03 02 02 29 02");
    Decoded<ASN1T_InfoTypeAndValue, ASN1C_InfoTypeAndValue> decoded(sequence({type, from_hex("05 00")}));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_NE(decoded.record().infoValue.decoded, nullptr);
    EXPECT_EQ(
        (status_of<ASN1T_InfoTypeAndValue, ASN1C_InfoTypeAndValue>(sequence({type, from_hex("04 00")}))),
        RT_E_IDNOTFOUND);
}

TEST(CertId, TakesASerialNumberOfAnyLength) {
    const Octets der = sequence({from_hex("82 01 61"), long_integer(300)});
    Decoded<ASN1T_CertId, ASN1C_CertId> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(encode<ASN1C_CertId>(decoded.record()).octets), to_hex(der));
}

TEST(CertificationRequest, SortsItsAttributes) {
    const auto request = [](const Octets& attributes) {
        return sequence({from_hex("02 01 00 30 00"), sequence({kSha256, from_hex("03 01 00")}),
                         element(0xA0, attributes)});
    };
    const Octets first = sequence({from_hex("06 02 2a 03 31 02 05 00")});
    const Octets second = sequence({from_hex("06 02 2a 04 31 02 05 00")});
    Decoded<ASN1T_CertificationRequest_certificationRequestInfo,
            ASN1C_CertificationRequest_certificationRequestInfo>
        decoded(request(join({second, first})));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(encode<ASN1C_CertificationRequest_certificationRequestInfo>(decoded.record()).octets),
              to_hex(request(join({first, second}))));
}

// Data validation

const Octets kService = from_hex("0a 01 03");

const StatusCase kInformations[] = {
    {"ServiceOnly", QUILLMARK_DECODE(DVCSRequestInformation), sequence({kService}), RT_OK},
    {"LastService", QUILLMARK_DECODE(ServiceType), from_hex("0a 01 04"), RT_OK},
    {"NoSuchService", QUILLMARK_DECODE(ServiceType), from_hex("0a 01 05"), RT_E_INVENUM},
    {"TimeInPlaceOfNonce", QUILLMARK_DECODE(DVCSRequestInformation), sequence({kService, kTime}), RT_OK},
    {"TimeTwice", QUILLMARK_DECODE(DVCSRequestInformation), sequence({kService, kTime, kTime}), RT_E_SEQOVFL},
    {"TokenInPlaceOfTime", QUILLMARK_DECODE(DVCSRequestInformation),
     sequence({kService, sequence({from_hex("06 02 2a 03"), from_hex("a0 02 05 00")})}), RT_OK},
    {"BrokenToken", QUILLMARK_DECODE(DVCSRequestInformation), sequence({kService, from_hex("30 00")}),
     RT_E_SETMISSING},
    {"NoData", QUILLMARK_DECODE(DVCSRequest), sequence({sequence({kService})}), RT_E_SETMISSING},
    {"DataAsOctets", QUILLMARK_DECODE(DVCSRequest), sequence({sequence({kService}), from_hex("04 01 61")}),
     RT_OK},
    {"DataOfNoKind", QUILLMARK_DECODE(DVCSRequest), sequence({sequence({kService}), from_hex("05 00")}),
     RT_E_INVOPT},
    {"TransactionName", QUILLMARK_DECODE(DVCSRequest),
     sequence({sequence({kService}), from_hex("04 01 61"), from_hex("82 01 61")}), RT_OK},
    {"NoTarget", QUILLMARK_DECODE(Data), from_hex("a0 00"), RT_E_CONSVIO},
    {"StatusWithoutItsChoiceTag", QUILLMARK_DECODE(CertEtcToken), from_hex("a5 02 05 00"), RT_E_INVOPT},
    {"StatusUnderItsChoiceTag", QUILLMARK_DECODE(CertEtcToken), from_hex("a5 02 80 00"), RT_OK},
    {"TokenOfNoKind", QUILLMARK_DECODE(CertEtcToken), from_hex("a9 02 80 00"), RT_E_INVOPT},
};
INSTANTIATE_TEST_SUITE_P(Validation, MessageProtocol, testing::ValuesIn(kInformations), case_name);

using Information = Decoded<ASN1T_DVCSRequestInformation, ASN1C_DVCSRequestInformation>;

TEST(DVCSRequestInformation, HasVersionOneByDefault) {
    Information decoded(sequence({kService}));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_STREQ(decoded.record().version, "1");
    EXPECT_STREQ(ASN1T_DVCSRequestInformation().version, "1");
}

TEST(DVCSRequestInformation, WritesItsVersionOnlyWhenItDiffers) {
    // A version 1 that was written is read, in any length, and left out.
    for (const Octets& one : {from_hex("02 01 01"), from_hex("02 02 00 01")}) {
        Information decoded(element(0x30, join({one, kService})));
        ASSERT_EQ(decoded.status(), RT_OK);
        EXPECT_EQ(to_hex(encode<ASN1C_DVCSRequestInformation>(decoded.record()).octets), "30 03 0a 01 03");
    }
    const Octets two = from_hex("30 06 02 01 02 0a 01 03");
    Information decoded(two);
    EXPECT_EQ(to_hex(encode<ASN1C_DVCSRequestInformation>(decoded.record()).octets), to_hex(two));
}

TEST(DVCSRequestInformation, ComparesAVersionOfAnyLength) {
    const Octets der = element(0x30, join({long_integer(300), kService}));
    Information decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(encode<ASN1C_DVCSRequestInformation>(decoded.record()).octets), to_hex(der));
}

TEST(DVCSRequestInformation, LeavesTheDefaultAloneWhenItIsFreed) {
    Information decoded(sequence({kService}));
    asn1Free_DVCSRequestInformation(decoded.context(), &decoded.record());
    EXPECT_STREQ(Information(sequence({kService})).record().version, "1");
}

TEST(DVCSCertInfo, HasVersionOneByDefault) {
    const Octets der = sequence(
        {sequence({kService}), sequence({kSha256, from_hex("04 01 aa")}), from_hex("02 01 07"), kTime});
    Decoded<ASN1T_DVCSCertInfo, ASN1C_DVCSCertInfo> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_STREQ(decoded.record().version, "1");
    EXPECT_EQ(to_hex(encode<ASN1C_DVCSCertInfo>(decoded.record()).octets), to_hex(der));
    asn1Free_DVCSCertInfo(decoded.context(), &decoded.record());
}

TEST(CertEtcToken, KeepsTheSignedOctetsOfACrl) {
    // Intended: CertificateList under [4] IMPLICIT; what was signed is no valid list, and nobody looks.
    const Octets der = element(0xA4, join({from_hex("30 00"), kSha256, from_hex("03 02 00 55")}));
    Decoded<ASN1T_CertEtcToken, ASN1C_CertEtcToken> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(decoded.record().u.crl->toBeSigned.data, decoded.record().u.crl->toBeSigned.numocts),
              "30 00");
    EXPECT_EQ(to_hex(encode<ASN1C_CertEtcToken>(decoded.record()).octets), to_hex(der));
}

// Certificate status

const StatusCase kStatuses[] = {
    {"Unauthorized", QUILLMARK_DECODE(OCSPResponse), from_hex("30 03 0a 01 06"), RT_OK},
    {"StatusAboveTheLast", QUILLMARK_DECODE(OCSPResponse), from_hex("30 03 0a 01 07"), RT_E_INVENUM},
    {"Good", QUILLMARK_DECODE(CertStatus), from_hex("80 00"), RT_OK},
    {"Unknown", QUILLMARK_DECODE(CertStatus), from_hex("82 00"), RT_OK},
    {"StatusOfNoKind", QUILLMARK_DECODE(CertStatus), from_hex("83 00"), RT_E_INVOPT},
    {"RevokedWithReason", QUILLMARK_DECODE(CertStatus),
     element(0xA1, join({kTime, from_hex("a0 03 0a 01 0a")})), RT_OK},
    {"ReasonAboveTheLast", QUILLMARK_DECODE(CertStatus),
     element(0xA1, join({kTime, from_hex("a0 03 0a 01 0b")})), RT_E_INVENUM},
    {"NoResponder", QUILLMARK_DECODE(ResponderID), from_hex("a0 02 30 00"), RT_E_INVOPT},
    {"ResponderWithoutInnerTag", QUILLMARK_DECODE(ResponderID), from_hex("82 01 61"), RT_E_INVOPT},
    {"NoRequest", QUILLMARK_DECODE(OCSPRequest), from_hex("30 04 30 02 30 00"), RT_OK},
    {"LocatorWithoutAccess", QUILLMARK_DECODE(ServiceLocator), from_hex("30 02 30 00"), RT_OK},
    {"BasicResponseOfNoContent", QUILLMARK_DECODE(ResponseBytes),
     sequence({from_hex("06 09 2b 06 01 05 05 07 30 01 01"), from_hex("04 02 30 00")}), RT_E_SETMISSING},
    {"OtherResponse", QUILLMARK_DECODE(ResponseBytes),
     sequence({from_hex("06 02 2a 03"), from_hex("04 02 30 00")}), RT_OK},
};
INSTANTIATE_TEST_SUITE_P(Status, MessageProtocol, testing::ValuesIn(kStatuses), case_name);

TEST(OCSPVersion, IsNotWrittenWhenItIsOne) {
    Decoded<ASN1T_TBSRequest, ASN1C_TBSRequest> decoded(from_hex("30 07 a0 03 02 01 00 30 00"));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(encode<ASN1C_TBSRequest>(decoded.record()).octets), "30 02 30 00");
}

TEST(CrlID, TakesANumberOfTwentyOctets) {  // RFC 5280 5.2.3
    const Octets der = sequence({element(0xA1, long_integer(20))});
    Decoded<ASN1T_CrlID, ASN1C_CrlID> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(encode<ASN1C_CrlID>(decoded.record()).octets), to_hex(der));
}

TEST(ResponseBytes, WritesTheStringWhenNothingIsCarried) {
    const Octets der = sequence({from_hex("06 02 2a 03"), from_hex("04 03 ff ff ff")});
    Decoded<ASN1T_ResponseBytes, ASN1C_ResponseBytes> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().responseValue.decoded, nullptr);
    EXPECT_EQ(to_hex(encode<ASN1C_ResponseBytes>(decoded.record()).octets), to_hex(der));
}

}  // namespace
}  // namespace Quillmark::test
