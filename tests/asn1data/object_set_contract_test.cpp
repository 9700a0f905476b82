// What the object sets hold and in which order, against the published tables, and what an object does with a
// value that fails.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "asn1data/information_objects.h"
#include "tests/asn1data/record_codec.h"
#include "tests/support/der.h"

using namespace asn1data;

namespace Quillmark::test {
namespace {

/// An identifier of a set. `required` when the type behind it is in the catalogue.
struct PublishedObject {
    const char* oid;
    bool required = false;
};

typedef std::vector<PublishedObject> PublishedSet;

std::string text_of(const ASN1OBJID& id) {
    std::string text;
    for (std::uint32_t i = 0; i < id.numids; ++i) {
        text += (i == 0 ? "" : ".") + std::to_string(id.subid[i]);
    }
    return text;
}

/// The identifiers of a set in the order of lookup. The set is one of its own, so that no test finds the
/// shared one built.
template <typename Set>
std::vector<std::string> identifiers_of() {
    const Set set(nullptr);
    std::vector<std::string> all;
    for (std::size_t i = 0; i < set.count(); ++i) {
        all.push_back(text_of(set.object(i)->id));
    }
    return all;
}

/// The identifiers among `published` that stand in `got`; the same as `got` when it has no other ones and
/// follows the published order.
std::vector<std::string> in_published_order(const PublishedSet& published,
                                            const std::vector<std::string>& got) {
    std::vector<std::string> ordered;
    for (const PublishedObject& object : published) {
        if (std::find(got.begin(), got.end(), object.oid) != got.end()) {
            ordered.emplace_back(object.oid);
        }
    }
    return ordered;
}

template <typename Set>
void expect_published(const PublishedSet& published) {
    const std::vector<std::string> got = identifiers_of<Set>();
    EXPECT_EQ(got, in_published_order(published, got));
    for (const PublishedObject& object : published) {
        if (object.required) {
            EXPECT_NE(std::find(got.begin(), got.end(), object.oid), got.end()) << object.oid;
        }
    }
}

constexpr bool kRequired = true;

TEST(ObjectSetContract, ExtensionSetFollowsItsTable) {
    expect_published<ExtensionSet>({{"2.5.29.35"},
                                    {"2.5.29.14", kRequired},  // subject key identifier
                                    {"2.5.29.15"},
                                    {"2.5.29.37"},
                                    {"2.5.29.16"},
                                    {"2.5.29.32"},
                                    {"2.5.29.33"},
                                    {"2.5.29.17", kRequired},  // subject and issuer alternative name
                                    {"2.5.29.18", kRequired},
                                    {"2.5.29.9"},
                                    {"2.5.29.19"},
                                    {"2.5.29.30.1"},  // Intended: one arc more than name constraints
                                    {"2.5.29.36"},
                                    {"2.5.29.20"},
                                    {"2.5.29.21"},
                                    {"2.5.29.23"},
                                    {"2.5.29.24"},
                                    {"2.5.29.31"},
                                    {"2.5.29.28"},
                                    {"2.5.29.29"},
                                    {"2.5.29.27"},
                                    {"2.5.29.46"},
                                    {"1.3.6.1.5.5.7.1.1"},
                                    {"1.3.6.1.5.5.7.1.11"},
                                    {"1.3.6.1.5.5.7.48.1.3"},
                                    {"1.2.643.2.2.47.5"},
                                    {"1.3.6.1.5.5.7.48.1.4"},
                                    {"1.3.6.1.5.5.7.48.1.6"},
                                    {"1.3.6.1.5.5.7.48.1.7"},
                                    {"1.2.643.2.2.47.2"},
                                    {"1.2.643.2.2.47.3"},
                                    {"1.2.643.2.2.47.4"},
                                    {"1.2.643.2.2.47.1", kRequired},  // NULL
                                    {"1.2.643.100.111"},
                                    {"1.2.643.100.112"},
                                    {"1.2.643.100.114"}});
}

TEST(ObjectSetContract, SupportedAlgorithmsAreComplete) {
    EXPECT_EQ(
        identifiers_of<SupportedAlgorithms>(),
        (std::vector<std::string>{
            "1.2.643.2.2.19",       "1.2.643.2.2.98",       "1.2.643.7.1.1.1.1",    "1.2.643.7.1.1.1.2",
            "1.2.643.2.2.3",        "1.2.643.7.1.1.3.2",    "1.2.643.7.1.1.3.3",    "1.2.643.2.2.21",
            "1.2.643.2.2.9",        "1.2.643.7.1.1.2.2",    "1.2.643.7.1.1.2.3",    "1.2.840.113549.1.1.1",
            "1.2.840.113549.1.1.5", "1.2.840.113549.1.1.4", "1.2.840.113549.1.1.2", "1.2.840.10040.4.1",
            "1.2.840.10040.4.3",    "1.2.840.10046.2.1",    "1.3.14.3.2.26",        "1.2.643.2.2.1.1.969.1",
            "1.2.643.7.1.1.5.1.1",  "1.2.643.7.1.1.5.1.2",  "1.2.643.7.1.1.5.2.1",  "1.2.643.7.1.1.5.2.2"}));
}

TEST(ObjectSetContract, SupportedAttributesFollowTheirTable) {
    expect_published<SupportedAttributes>({{"1.3.6.1.4.1.311.13.2.2"},
                                           {"1.3.6.1.4.1.311.13.2.3"},
                                           {"2.5.4.41"},
                                           {"2.5.4.3"},
                                           {"2.5.4.4"},
                                           {"2.5.4.42"},
                                           {"2.5.4.43"},
                                           {"2.5.4.44"},
                                           {"2.5.4.46"},
                                           {"2.5.4.6"},
                                           {"2.5.4.7"},
                                           {"2.5.4.9"},
                                           {"2.5.4.8"},
                                           {"2.5.4.10"},
                                           {"2.5.4.11"},
                                           {"2.5.4.12"},
                                           {"1.2.840.113549.1.9.1"},
                                           {"2.5.4.65"},
                                           {"1.2.840.113549.1.9.3"},
                                           {"1.2.840.113549.1.9.4"},
                                           {"1.2.840.113549.1.9.5", kRequired},  // signing time
                                           {"1.2.840.113549.1.9.16.2.12"},
                                           {"1.2.840.113549.1.9.16.2.19"},
                                           {"1.2.840.113549.1.9.16.2.21"},
                                           {"1.2.840.113549.1.9.16.2.22"},
                                           {"1.2.840.113549.1.9.16.2.23"},
                                           {"1.2.840.113549.1.9.16.2.24"},
                                           {"1.2.840.113549.1.9.16.2.47", kRequired},  // certificate, SHA-2
                                           {"1.2.840.113549.1.9.16.2.15"},
                                           {"1.2.840.113549.1.9.16.2.20", kRequired},  // five time-stamps
                                           {"1.2.840.113549.1.9.16.2.14", kRequired},
                                           {"1.2.840.113549.1.9.16.2.25", kRequired},
                                           {"1.2.840.113549.1.9.16.2.26", kRequired},
                                           {"1.2.840.113549.1.9.16.2.27", kRequired},
                                           {"0.9.2342.19200300.100.1.25"},
                                           {"1.3.6.1.4.1.311.2.1.14", kRequired},  // extensions
                                           {"1.2.840.113549.1.9.14", kRequired},
                                           {"1.2.643.100.1"},
                                           {"1.2.643.100.5"},
                                           {"1.2.643.3.131.1.1"},
                                           {"1.2.643.100.4"},
                                           {"1.2.643.100.3"},
                                           {"1.2.840.113549.1.9.2"},
                                           {"2.5.4.17"},
                                           {"2.5.4.16"}});
}

const PublishedSet kContentTypes = {{"1.2.840.113549.1.7.1"}, {"1.2.840.113549.1.7.2"},
                                    {"1.2.840.113549.1.7.3"}, {"1.2.840.113549.1.7.5"},
                                    {"1.2.840.113549.1.7.6"}, {"1.2.840.113549.1.9.16.1.2"}};

TEST(ObjectSetContract, SupportedContentTypesFollowTheirTable) {
    PublishedSet published = kContentTypes;
    published[1].required = true;  // signed data
    expect_published<SupportedContentTypes>(published);
}

TEST(ObjectSetContract, SupportedContentTypesLegacyFollowTheirTable) {
    expect_published<SupportedContentTypesLegacy>(kContentTypes);
}

TEST(ObjectSetContract, SupportedEContentTypesFollowTheirTable) {
    expect_published<SupportedEContentTypes>({{"1.2.840.113549.1.7.2", kRequired},  // signed data
                                              {"1.2.840.113549.1.7.3"},
                                              {"1.2.840.113549.1.7.5"},
                                              {"1.2.840.113549.1.7.6"},
                                              {"1.2.840.113549.1.9.16.1.2"},
                                              {"1.2.840.113549.1.9.16.1.4", kRequired},  // TSTInfo
                                              {"1.2.840.113549.1.9.16.1.7"},
                                              {"1.2.840.113549.1.9.16.1.8"}});
}

TEST(ObjectSetContract, SupportedInfosFollowTheirTable) {
    expect_published<SupportedInfos>({{"1.3.6.1.5.5.7.4.1", kRequired},  // certificate
                                      {"1.3.6.1.5.5.7.4.2"},
                                      {"1.3.6.1.5.5.7.4.3"},
                                      {"1.3.6.1.5.5.7.4.4", kRequired},  // algorithm
                                      {"1.3.6.1.5.5.7.4.5"},
                                      {"1.3.6.1.5.5.7.4.6"},
                                      {"1.2.643.2.2.41.1"},
                                      {"1.2.643.2.2.41.5"},
                                      {"1.2.643.2.2.41.4"},
                                      {"1.2.643.2.2.41.2", kRequired},  // NULL
                                      {"1.2.643.2.2.41.3", kRequired},
                                      {"1.2.643.2.2.41.6"},
                                      {"1.2.643.2.2.41.7"},
                                      {"1.2.643.2.2.41.8"},
                                      {"1.2.643.2.2.41.10"},
                                      {"1.2.643.2.2.41.11"},
                                      {"1.2.643.2.2.41.12"}});
}

TEST(ObjectSetContract, SupportedOCSPResponseTypesFollowTheirTable) {
    expect_published<SupportedOCSPResponseTypes>({{"1.3.6.1.5.5.7.48.1.1"}});
}

TEST(ObjectSetContract, SupportedPolicyQualifiersAreComplete) {
    EXPECT_EQ(identifiers_of<SupportedPolicyQualifiers>(),
              (std::vector<std::string>{"1.3.6.1.5.5.7.2.1", "1.3.6.1.5.5.7.2.2"}));
}

TEST(ObjectSetContract, InstanceIsTheSameForEveryContext) {
    ASN1BEREncodeBuffer buffer;
    EXPECT_EQ(SupportedAlgorithms::instance(buffer.getCtxtPtr()), SupportedAlgorithms::instance(nullptr));
}

TEST(ObjectSetContract, ObjectsOutsideTheSetsHaveTheirIdentifiers) {
    EXPECT_EQ(text_of(contentInfo().id), "1.2.840.113549.1.9.16.1.6");
    EXPECT_EQ(text_of(e_contentInfo().id), "1.2.840.113549.1.9.16.1.6");
    EXPECT_EQ(text_of(ocspNoCheck().id), "1.3.6.1.5.5.7.48.1.5");
    EXPECT_EQ(SupportedContentTypes::instance(nullptr)->lookupObject(contentInfo().id), nullptr);
    EXPECT_EQ(SupportedEContentTypes::instance(nullptr)->lookupObject(e_contentInfo().id), nullptr);
}

// Values that fail

const Octets kSubjectAltName = from_hex("06 03 55 1d 11");
const Octets kSigningTime = from_hex("06 09 2a 86 48 86 f7 0d 01 09 05");
const Octets kSignedData = from_hex("06 09 2a 86 48 86 f7 0d 01 07 02");

TEST(CarriedValueContract, IsSetAlsoWhenItsDecoderFails) {
    // GeneralNames of a dNSName and of a tag that no general name has.
    Decoded<ASN1T_Extension, ASN1C_Extension> decoded(
        sequence({kSubjectAltName, element(0x04, sequence({from_hex("82 01 61"), from_hex("05 00")}))}));
    EXPECT_EQ(decoded.status(), RT_E_INVOPT);
    auto* names = static_cast<ASN1T_GeneralNames*>(decoded.record().extnType.decoded);
    ASSERT_NE(names, nullptr);
    EXPECT_EQ(names->count, 1u);
}

TEST(CarriedValueContract, ThatFailsLeavesTheMessageBehindItsRecord) {
    const Octets der = sequence({kSubjectAltName, from_hex("04 02 05 00")});
    ASN1BERDecodeBuffer buffer(der.data(), static_cast<int>(der.size()));
    ASN1T_Extension record;
    EXPECT_EQ(ASN1C_Extension(buffer, record).Decode(), RT_E_IDNOTFOUND);
    EXPECT_EQ(buffer.getCtxtPtr()->buffer.data, der.data());
    EXPECT_EQ(buffer.getCtxtPtr()->buffer.byteIndex, der.size());
}

TEST(CarriedValueContract, RecordsItsStatus) {
    Decoded<ASN1T_Extension, ASN1C_Extension> decoded(sequence({kSubjectAltName, from_hex("04 02 05 00")}));
    EXPECT_EQ(decoded.first_status(), RT_E_IDNOTFOUND);
}

TEST(CarriedValueContract, OfAnExtensionIsNotFreedWithItsOctets) {
    // Intended: the carried record goes with the context.
    Decoded<ASN1T_Extension, ASN1C_Extension> decoded(
        sequence({kSubjectAltName, element(0x04, sequence({from_hex("82 01 61")}))}));
    void* carried = decoded.record().extnType.decoded;
    ASSERT_NE(carried, nullptr);
    asn1Free_Extension(decoded.context(), &decoded.record());
    EXPECT_EQ(decoded.record().extnValue.data, nullptr);
    EXPECT_EQ(decoded.record().extnType.decoded, carried);
}

TEST(CarriedValueContract, OfALaterAttributeValueMayFail) {
    Decoded<ASN1T_Attribute, ASN1C_Attribute> decoded(
        sequence({kSigningTime, element(0x31, join({text_element(0x17, "240102030405Z"), from_hex("02 01 05"),
                                                    from_hex("05 00")}))}));
    EXPECT_EQ(decoded.status(), RT_E_INVOPT);
    const _Asn1RTDListNode* first = decoded.record().values.head;
    EXPECT_NE(static_cast<Asn1TObject*>(first->data)->decoded, nullptr);
    EXPECT_EQ(static_cast<Asn1TObject*>(first->next->next->data)->decoded, nullptr);
    // Half decoded as it is, it can be copied and freed.
    ASN1BEREncodeBuffer other;
    ASN1T_Attribute copy;
    asn1Copy_Attribute(other.getCtxtPtr(), &decoded.record(), &copy);
    EXPECT_EQ(copy.values.count, 3u);
    asn1Free_Attribute(other.getCtxtPtr(), &copy);
    asn1Free_Attribute(decoded.context(), &decoded.record());
}

TEST(CarriedValueContract, OfTwoValuesWithoutARecordIsRefusedWhenEncoded) {
    Decoded<ASN1T_Attribute, ASN1C_Attribute> decoded(sequence(
        {kSigningTime,
         element(0x31, join({text_element(0x17, "240102030405Z"), text_element(0x17, "240102030406Z")}))}));
    ASSERT_EQ(decoded.status(), RT_OK);
    static_cast<Asn1TObject*>(decoded.record().values.tail->data)->decoded = nullptr;
    EXPECT_EQ(encode<ASN1C_Attribute>(decoded.record()).result, RT_E_BADVALUE);
}

TEST(CarriedValueContract, OfAStrayOctetIsReadAndRefusedWhenEncoded) {
    // Intended: a tag without a length at the end of the message is an open type without octets.
    Decoded<ASN1T_AttributeTypeAndValue, ASN1C_AttributeTypeAndValue> decoded(
        element(0x30, join({kSigningTime, from_hex("17")})));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().value.decoded, nullptr);
    EXPECT_EQ(encode<ASN1C_AttributeTypeAndValue>(decoded.record()).result, RT_E_BADVALUE);
    ASN1BEREncodeBuffer other;
    ASN1T_AttributeTypeAndValue copy;
    asn1Copy_AttributeTypeAndValue(other.getCtxtPtr(), &decoded.record(), &copy);
    EXPECT_EQ(copy.value.decoded, nullptr);
    asn1Free_AttributeTypeAndValue(other.getCtxtPtr(), &copy);
}

TEST(CarriedValueContract, LendsNothingOfAStringThatCameInSegments) {
    // The segments are joined in a block of the heap, which is freed with the record around it.
    const Octets info =
        sequence({from_hex("02 01 01 06 02 2a 03 30 0a 30 03 06 01 2a 04 03 ab cd ef 02 01 09"),
                  text_element(0x18, "20240102030405Z")});
    const Octets half(info.begin(), info.begin() + 9);
    const Octets rest(info.begin() + 9, info.end());
    const Octets der = sequence({from_hex("06 0b 2a 86 48 86 f7 0d 01 09 10 01 04"),
                                 element(0xA0, element(0x24, {element(0x04, half), element(0x04, rest)}))});
    ASN1BERDecodeBuffer buffer(der.data(), static_cast<int>(der.size()));
    rtCtxtSetFlag(buffer.getCtxtPtr(), RT_F_FASTCOPY);
    ASN1T_EncapsulatedContentInfo record;
    ASSERT_EQ(ASN1C_EncapsulatedContentInfo(buffer, record).Decode(), RT_OK);
    const auto* carried = static_cast<ASN1T_TSTInfo*>(record.eContentValue.decoded);
    ASSERT_NE(carried, nullptr);
    const ASN1TDynOctStr& hash = carried->messageImprint.hashedMessage;
    EXPECT_EQ(to_hex(hash.data, hash.numocts), "ab cd ef");
    EXPECT_FALSE(hash.data >= record.eContent.data && hash.data < record.eContent.data + info.size());
    EXPECT_NE(buffer.getCtxtPtr()->flags & RT_F_FASTCOPY, 0);
    asn1Free_EncapsulatedContentInfo(buffer.getCtxtPtr(), &record);
}

TEST(CarriedValueContract, IsPassedOverInANodeWithoutAValue) {
    ASN1BERDecodeBuffer work;
    ASN1T_Attribute record;
    static constexpr unsigned kSigningTimeArcs[] = {1, 2, 840, 113549, 1, 9, 5};
    record.type = ASN1TObjId(7, kSigningTimeArcs);
    rtDListAppend(work.getCtxtPtr(), &record.values, nullptr);
    EXPECT_EQ(asn1DTC_Attribute(work.getCtxtPtr(), &record), RT_OK);
    EXPECT_EQ(asn1ETC_Attribute(work.getCtxtPtr(), &record), RT_OK);
}

TEST(CarriedValueContract, ThatCannotBeEncodedStopsItsTableStep) {
    Decoded<ASN1T_ContentInfo, ASN1C_ContentInfo> decoded(sequence(
        {kSignedData, element(0xA0, sequence({from_hex("02 01 01 31 00 30 04 06 02 2a 03 31 00")}))}));
    ASSERT_EQ(decoded.status(), RT_OK);
    auto* carried = static_cast<ASN1T_SignedData*>(decoded.record().content.decoded);
    carried->encapContentInfo.eContentType.numids = 0;  // an identifier without arcs has no encoding
    const std::uint8_t* octets = decoded.record().content.data;
    ASN1BEREncodeBuffer buffer;
    const int status = asn1ETC_ContentInfo(buffer.getCtxtPtr(), &decoded.record());
    EXPECT_LT(status, 0);
    EXPECT_EQ(buffer.getCtxtPtr()->errInfo.status, status);
    EXPECT_EQ(decoded.record().content.data, octets);
}

}  // namespace
}  // namespace Quillmark::test
