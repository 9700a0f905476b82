// Open types whose type an identifier tells: the object sets, and the records that they serve.

#include "asn1data/information_objects.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/asn1data/record_codec.h"
#include "tests/support/case_name.h"
#include "tests/support/der.h"
#include "tests/support/failing_new.h"

using namespace asn1data;

namespace Quillmark::test {
namespace {

using Algorithm = Decoded<ASN1T_AlgorithmIdentifier, ASN1C_AlgorithmIdentifier>;
using Extension = Decoded<ASN1T_Extension, ASN1C_Extension>;
using Content = Decoded<ASN1T_ContentInfo, ASN1C_ContentInfo>;

const Octets kRsa = from_hex("06 09 2a 86 48 86 f7 0d 01 01 01");
const Octets kDsaSha1 = from_hex("06 07 2a 86 48 ce 38 04 03");
const Octets kSha256 = from_hex("06 09 60 86 48 01 65 03 04 02 01");
const Octets kGost2001 = from_hex("06 06 2a 85 03 02 02 13");
const Octets kSignedData = from_hex("06 09 2a 86 48 86 f7 0d 01 07 02");
const Octets kData = from_hex("06 09 2a 86 48 86 f7 0d 01 07 01");
const Octets kTstInfoType = from_hex("06 0b 2a 86 48 86 f7 0d 01 09 10 01 04");
const Octets kSubjectAltName = from_hex("06 03 55 1d 11");
const Octets kUnknown = from_hex("06 02 2a 03");
const Octets kNull = from_hex("05 00");

// version 1, no algorithms, no content of type data, no signers
const Octets kBareSignedData = sequence({from_hex("02 01 01 31 00"), sequence({kData}), from_hex("31 00")});

// AlgorithmIdentifier

struct AlgorithmCase {
    const char* name;
    Octets der;
    int status;
    bool carries;
};

void PrintTo(const AlgorithmCase& row, std::ostream* out) {
    *out << row.name << ": " << to_hex(row.der);
}

class DecodingAlgorithm : public testing::TestWithParam<AlgorithmCase> {};

TEST_P(DecodingAlgorithm, CarriesWhatTheIdentifierTells) {
    Algorithm decoded(GetParam().der);
    EXPECT_EQ(decoded.status(), GetParam().status);
    if (GetParam().status == RT_OK) {
        EXPECT_EQ(decoded.record().parameters.decoded != nullptr, GetParam().carries);
        EXPECT_EQ(to_hex(encode<ASN1C_AlgorithmIdentifier>(decoded.record()).octets), to_hex(GetParam().der));
    }
}

const AlgorithmCase kAlgorithms[] = {
    {"KnownWithNull", sequence({kRsa, kNull}), RT_OK, true},
    {"KnownWithoutParameters", sequence({kRsa}), RT_OK, false},
    {"KnownWithWrongParameters", sequence({kRsa, from_hex("02 01 05")}), RT_E_IDNOTFOUND, false},
    {"KnownThatCarriesNothing", sequence({kDsaSha1, from_hex("02 01 05")}), RT_OK, false},
    {"UnknownWithParameters", sequence({kSha256, from_hex("02 01 05")}), RT_OK, false},
    {"ChoiceNull", sequence({kGost2001, kNull}), RT_OK, true},
    {"ChoiceRecord", sequence({kGost2001, sequence({kUnknown, kUnknown})}), RT_OK, true},
    {"ChoiceOfNeither", sequence({kGost2001, from_hex("02 01 05")}), RT_E_INVOPT, false},
    {"ThirdElement", sequence({kSha256, kNull, kNull}), RT_E_SEQOVFL, false},
};

INSTANTIATE_TEST_SUITE_P(Sets, DecodingAlgorithm, testing::ValuesIn(kAlgorithms), case_name);

TEST(AlgorithmIdentifier, RefusesToEncodeAKnownTypeWithoutItsRecord) {
    Algorithm decoded(sequence({kRsa, kNull}));
    decoded.record().parameters.decoded = nullptr;
    EXPECT_EQ(encode<ASN1C_AlgorithmIdentifier>(decoded.record()).result, RT_E_BADVALUE);
}

TEST(AlgorithmIdentifier, LeavesTheRecordAloneWhenItIsEncoded) {
    Algorithm decoded(sequence({kGost2001, sequence({kUnknown, kUnknown})}));
    const std::uint8_t* octets = decoded.record().parameters.data;
    encode<ASN1C_AlgorithmIdentifier>(decoded.record());
    EXPECT_EQ(decoded.record().parameters.data, octets);  // the context of the message is gone by now
}

TEST(AlgorithmIdentifier, TableStepEncodesTheCarriedRecord) {
    Algorithm decoded(sequence({kGost2001, sequence({kUnknown, kUnknown})}));
    auto* carried = static_cast<ASN1T__gost2001PubKey_Type*>(decoded.record().parameters.decoded);
    carried->t = T__gost2001PubKey_Type_null;
    ASN1BEREncodeBuffer buffer;
    ASSERT_EQ(asn1ETC_AlgorithmIdentifier(buffer.getCtxtPtr(), &decoded.record()), RT_OK);
    EXPECT_EQ(to_hex(decoded.record().parameters.data, decoded.record().parameters.numocts), "05 00");
}

TEST(AlgorithmIdentifier, TableStepKeepsWhatCarriesNoType) {
    Algorithm decoded(sequence({kDsaSha1, from_hex("02 01 05")}));
    ASN1BEREncodeBuffer buffer;
    ASSERT_EQ(asn1ETC_AlgorithmIdentifier(buffer.getCtxtPtr(), &decoded.record()), RT_OK);
    EXPECT_EQ(to_hex(decoded.record().parameters.data, decoded.record().parameters.numocts), "02 01 05");
}

TEST(AlgorithmIdentifier, TableStepDecodesOctetsThatTheCallerSet) {
    ASN1T_AlgorithmIdentifier record;
    static constexpr unsigned kArcs[] = {1, 2, 840, 113549, 1, 1, 1};
    record.algorithm = ASN1TObjId(7, kArcs);
    record.m.parametersPresent = 1;
    const Octets octets = from_hex("05 00");
    record.parameters.numocts = 2;
    record.parameters.data = octets.data();
    ASN1BERDecodeBuffer work;
    ASSERT_EQ(asn1DTC_AlgorithmIdentifier(work.getCtxtPtr(), &record), RT_OK);
    EXPECT_NE(record.parameters.decoded, nullptr);
}

TEST(AlgorithmIdentifier, IgnoresOctetsBehindTheCarriedElement) {
    ASN1T_AlgorithmIdentifier record;
    static constexpr unsigned kArcs[] = {1, 2, 840, 113549, 1, 1, 1};
    record.algorithm = ASN1TObjId(7, kArcs);
    record.m.parametersPresent = 1;
    const Octets octets = from_hex("05 00 ff ff");
    record.parameters.numocts = 4;
    record.parameters.data = octets.data();
    ASN1BERDecodeBuffer work;
    ASSERT_EQ(asn1DTC_AlgorithmIdentifier(work.getCtxtPtr(), &record), RT_OK);
    EXPECT_EQ(to_hex(encode<ASN1C_AlgorithmIdentifier>(record).octets), to_hex(sequence({kRsa, kNull})));
}

TEST(AlgorithmIdentifier, GoesOnInTheMessageBehindATableStep) {
    // The hash behind the algorithm is read from where the algorithm ended.
    Decoded<ASN1T_MessageImprint, ASN1C_MessageImprint> decoded(
        sequence({sequence({kRsa, kNull}), from_hex("04 02 ab cd")}));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(to_hex(decoded.record().hashedMessage.data, decoded.record().hashedMessage.numocts), "ab cd");
}

TEST(AlgorithmIdentifier, FreedTwiceIsFreedOnce) {
    Algorithm decoded(sequence({kGost2001, sequence({kUnknown, kUnknown})}));
    asn1Free_AlgorithmIdentifier(decoded.context(), &decoded.record());
    EXPECT_EQ(decoded.record().parameters.data, nullptr);
    EXPECT_EQ(decoded.record().parameters.decoded, nullptr);
    asn1Free_AlgorithmIdentifier(decoded.context(), &decoded.record());
}

// Extension

TEST(Extension, KeepsTheOctetsOfAnUnknownValue) {
    const Octets der = sequence({kUnknown, from_hex("01 01 ff"), from_hex("04 03 ff ff ff")});
    Extension decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().extnType.decoded, nullptr);
    EXPECT_EQ(to_hex(encode<ASN1C_Extension>(decoded.record()).octets), to_hex(der));
}

TEST(Extension, DecodesAKnownValue) {
    const Octets der = sequence({kSubjectAltName, element(0x04, sequence({from_hex("82 01 61")}))});
    Extension decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    auto* names = static_cast<ASN1T_GeneralNames*>(decoded.record().extnType.decoded);
    ASSERT_NE(names, nullptr);
    EXPECT_EQ(names->count, 1u);
    EXPECT_EQ(decoded.record().extnType.data, decoded.record().extnValue.data);
}

TEST(Extension, RefusesAMalformedKnownValue) {
    EXPECT_EQ(Extension(sequence({kSubjectAltName, from_hex("04 02 30 00")})).status(), RT_E_CONSVIO);
}

TEST(Extension, StaysRawUnderTheIdentifierOfNameConstraints) {  // Intended: the set has 2.5.29.30.1
    static constexpr unsigned kArcs[] = {2, 5, 29, 30};
    EXPECT_EQ(ExtensionSet::instance(nullptr)->lookupObject(ASN1TObjId(4, kArcs)), nullptr);
    Extension decoded(sequence({from_hex("06 03 55 1d 1e"), from_hex("04 01 ff")}));
    EXPECT_EQ(decoded.status(), RT_OK);
}

TEST(Extension, CarriesNameConstraintsUnderOneArcMore) {  // Intended: five arcs, where RFC 5280 has four
    const Octets identifier = from_hex("06 04 55 1d 1e 01");
    const Octets der = sequence({identifier, from_hex("04 09 30 07 a0 05 30 03 82 01 61")});
    Extension decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    auto* constraints = static_cast<ASN1T_NameConstraintsSyntax*>(decoded.record().extnType.decoded);
    ASSERT_NE(constraints, nullptr);
    EXPECT_EQ(constraints->permittedSubtrees.count, 1u);
    EXPECT_EQ(to_hex(encode<ASN1C_Extension>(decoded.record()).octets), to_hex(der));
    EXPECT_EQ(Extension(sequence({identifier, from_hex("04 02 05 00")})).status(), RT_E_IDNOTFOUND);
}

TEST(Extension, OfNullHasARecordThoughNullHasNone) {
    const Octets der = sequence({from_hex("06 07 2a 85 03 02 02 2f 01"), from_hex("04 02 05 00")});
    Extension decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_NE(decoded.record().extnType.decoded, nullptr);  // tells the encoder that there is a value
    EXPECT_EQ(to_hex(encode<ASN1C_Extension>(decoded.record()).octets), to_hex(der));
    EXPECT_EQ(
        Extension(sequence({from_hex("06 07 2a 85 03 02 02 2f 01"), from_hex("04 03 02 01 05")})).status(),
        RT_E_IDNOTFOUND);
}

TEST(Extension, IsRawOutsideTheSetWhateverItsObject) {
    // OCSP no-check has an object that stands in no set
    Extension decoded(sequence({from_hex("06 09 2b 06 01 05 05 07 30 01 05"), from_hex("04 01 ff")}));
    EXPECT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().extnType.decoded, nullptr);
}

TEST(Extension, WritesTheStringWhenNothingIsCarried) {
    Extension decoded(sequence({kSubjectAltName, element(0x04, sequence({from_hex("82 01 61")}))}));
    decoded.record().extnType.decoded = nullptr;
    const Octets octets = from_hex("aa bb");
    decoded.record().extnValue = {2, octets.data()};
    EXPECT_EQ(to_hex(encode<ASN1C_Extension>(decoded.record()).octets),
              to_hex(sequence({kSubjectAltName, from_hex("04 02 aa bb")})));
}

TEST(Extension, TableStepPutsTheEncodingInBothViews) {
    Extension decoded(sequence({kSubjectAltName, element(0x04, sequence({from_hex("82 01 61")}))}));
    ASN1T_GeneralNames* names = static_cast<ASN1T_GeneralNames*>(decoded.record().extnType.decoded);
    auto* first = static_cast<ASN1T_GeneralName*>(names->head->data);
    first->u.dNSName = "bc";
    ASN1BEREncodeBuffer buffer;
    ASSERT_EQ(asn1ETC_Extension(buffer.getCtxtPtr(), &decoded.record()), RT_OK);
    EXPECT_EQ(to_hex(decoded.record().extnValue.data, decoded.record().extnValue.numocts),
              "30 04 82 02 62 63");
    EXPECT_EQ(decoded.record().extnType.data, decoded.record().extnValue.data);
}

TEST(Extension, CopyHasViewsOfItsOwn) {
    Extension decoded(sequence({kSubjectAltName, element(0x04, sequence({from_hex("82 01 61")}))}));
    ASN1BEREncodeBuffer other;
    ASN1T_Extension copy;
    asn1Copy_Extension(other.getCtxtPtr(), &decoded.record(), &copy);
    EXPECT_NE(copy.extnType.decoded, decoded.record().extnType.decoded);
    EXPECT_NE(copy.extnType.data, decoded.record().extnType.data);
    EXPECT_NE(copy.extnValue.data, copy.extnType.data);
}

// ContentInfo and EncapsulatedContentInfo

TEST(ContentInfo, DecodesSignedData) {
    const Octets der = sequence({kSignedData, element(0xA0, kBareSignedData)});
    Content decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(static_cast<ASN1T_SignedData*>(decoded.record().content.decoded)->version, 1);
    EXPECT_EQ(to_hex(encode<ASN1C_ContentInfo>(decoded.record()).octets), to_hex(der));
}

TEST(ContentInfo, RefusesBrokenSignedDataButNotBrokenUnknownContent) {
    const Octets broken = element(0xA0, from_hex("30 03 02 01 01"));
    EXPECT_EQ(Content(sequence({kSignedData, broken})).status(), RT_E_SETMISSING);
    EXPECT_EQ(Content(sequence({kUnknown, broken})).status(), RT_OK);
}

TEST(ContentInfo, WithoutContentIsRefusedWhenEncodedOrLeftEmptyWhenCopied) {
    Content decoded(sequence({kSignedData, from_hex("a0 00")}));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().content.decoded, nullptr);
    EXPECT_EQ(encode<ASN1C_ContentInfo>(decoded.record()).result, RT_E_BADVALUE);
    ASN1T_ContentInfo copy;
    asn1Copy_ContentInfo(decoded.context(), &decoded.record(), &copy);
    EXPECT_EQ(copy.content.decoded, nullptr);
}

TEST(ContentInfo, NeedsTheEndOfWhatItOpened) {
    const Octets content = join({kUnknown, from_hex("a0 80 05 00 00 00")});
    EXPECT_EQ(Content(join({from_hex("30 80"), content, from_hex("00 00")})).status(), RT_OK);
    EXPECT_EQ(Content(element(0x30, content)).status(), RT_OK);
    EXPECT_EQ(Content(join({from_hex("30 80"), content})).status(), RT_E_INVLEN);
    EXPECT_EQ(Content(sequence({kUnknown, from_hex("a0 80 05 00")})).status(), RT_E_INVLEN);
}

TEST(EncapsulatedContentInfo, CarriesTheTimeStamp) {
    const Octets info =
        sequence({from_hex("02 01 01"), kUnknown, sequence({sequence({kSha256}), from_hex("04 00")}),
                  from_hex("02 01 07"), text_element(0x18, "20240102030405Z")});
    const Octets der = sequence({kTstInfoType, element(0xA0, element(0x04, info))});
    Decoded<ASN1T_EncapsulatedContentInfo, ASN1C_EncapsulatedContentInfo> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    ASSERT_NE(decoded.record().eContentValue.decoded, nullptr);
    EXPECT_STREQ(static_cast<ASN1T_TSTInfo*>(decoded.record().eContentValue.decoded)->serialNumber, "0x07");
    EXPECT_EQ(to_hex(encode<ASN1C_EncapsulatedContentInfo>(decoded.record()).octets), to_hex(der));
}

TEST(EncapsulatedContentInfo, WithoutContentCarriesNothing) {
    Decoded<ASN1T_EncapsulatedContentInfo, ASN1C_EncapsulatedContentInfo> decoded(sequence({kTstInfoType}));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().eContentValue.decoded, nullptr);
}

TEST(EncapsulatedContentInfo, KeepsTheOctetsOfAnUnknownType) {
    const Octets der = sequence({kUnknown, from_hex("a0 05 04 03 ff ff ff")});
    Decoded<ASN1T_EncapsulatedContentInfo, ASN1C_EncapsulatedContentInfo> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().eContentValue.decoded, nullptr);
    EXPECT_EQ(to_hex(encode<ASN1C_EncapsulatedContentInfo>(decoded.record()).octets), to_hex(der));
}

TEST(EncapsulatedContentInfo, RefusesAMalformedKnownType) {
    EXPECT_EQ((Decoded<ASN1T_EncapsulatedContentInfo, ASN1C_EncapsulatedContentInfo>(
                   sequence({kTstInfoType, from_hex("a0 05 04 03 02 01 05")}))
                   .status()),
              RT_E_IDNOTFOUND);
}

/// SignedData in SignedData in SignedData ..., `depth` times.
Octets nested_signed_data(int depth) {
    Octets content = kBareSignedData;
    for (int level = 1; level < depth; ++level) {
        const Octets inside = sequence({kSignedData, element(0xA0, element(0x04, content))});
        content = sequence({from_hex("02 01 01 31 00"), inside, from_hex("31 00")});
    }
    return sequence({kSignedData, element(0xA0, content)});
}

TEST(Nesting, EndsAtTheLimit) {
    EXPECT_EQ(Content(nested_signed_data(64)).status(), RT_OK);
    EXPECT_EQ(Content(nested_signed_data(65)).status(), RT_E_NOTSUPP);
}

TEST(Nesting, IsCountedAnewForEachMessage) {
    const Octets der = nested_signed_data(65);
    ASN1BERDecodeBuffer buffer(der.data(), static_cast<int>(der.size()));
    ASN1T_ContentInfo record;
    ASN1C_ContentInfo control(buffer, record);
    EXPECT_EQ(control.Decode(), RT_E_NOTSUPP);
    EXPECT_EQ(buffer.getCtxtPtr()->nestingDepth, 0u);
}

// Attribute

TEST(Attribute, DecodesEachValue) {
    Decoded<ASN1T_Attribute, ASN1C_Attribute> decoded(sequence(
        {from_hex("06 09 2a 86 48 86 f7 0d 01 09 05"), element(0x31, text_element(0x17, "240102030405Z"))}));
    ASSERT_EQ(decoded.status(), RT_OK);
    auto* value = static_cast<Asn1TObject*>(decoded.record().values.head->data);
    ASSERT_NE(value->decoded, nullptr);
    EXPECT_EQ(static_cast<ASN1T_Time*>(value->decoded)->t, T_Time_utcTime);
}

TEST(Attribute, RefusesAMalformedKnownValue) {
    Decoded<ASN1T_Attribute, ASN1C_Attribute> decoded(
        sequence({from_hex("06 09 2a 86 48 86 f7 0d 01 09 05"), from_hex("31 03 02 01 05")}));
    EXPECT_EQ(decoded.status(), RT_E_INVOPT);
}

TEST(AttributeTypeAndValue, TakesACountryInAnyString) {
    // printable as X.520 has it, and UTF-8, as it is met
    for (const std::uint8_t tag : Octets{0x13, 0x0C}) {
        const Octets der = sequence({from_hex("06 03 55 04 06"), text_element(tag, "RU")});
        Decoded<ASN1T_AttributeTypeAndValue, ASN1C_AttributeTypeAndValue> decoded(der);
        ASSERT_EQ(decoded.status(), RT_OK);
        EXPECT_NE(decoded.record().value.decoded, nullptr);
        EXPECT_EQ(to_hex(encode<ASN1C_AttributeTypeAndValue>(decoded.record()).octets), to_hex(der));
    }
    EXPECT_EQ((Decoded<ASN1T_AttributeTypeAndValue, ASN1C_AttributeTypeAndValue>(
                   sequence({from_hex("06 03 55 04 06"), from_hex("02 01 05")}))
                   .status()),
              RT_E_INVOPT);
}

TEST(AttributeTypeAndValue, HasNoBoundForACountryOrQualifier) {
    for (const std::uint8_t attribute : Octets{0x06, 0x2E}) {
        const Octets der = sequence({element(0x06, {0x55, 0x04, attribute}), text_element(0x0C, "")});
        EXPECT_EQ((Decoded<ASN1T_AttributeTypeAndValue, ASN1C_AttributeTypeAndValue>(der).status()), RT_OK);
    }
}

// Policy qualifiers carry no type.

TEST(PolicyQualifierInfo, StaysRaw) {
    const Octets der = sequence({from_hex("06 08 2b 06 01 05 05 07 02 01"), from_hex("02 01 05")});
    Decoded<ASN1T_PolicyQualifierInfo, ASN1C_PolicyQualifierInfo> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().qualifier.decoded, nullptr);
    EXPECT_EQ(to_hex(encode<ASN1C_PolicyQualifierInfo>(decoded.record()).octets), to_hex(der));
}

// Objects and sets

TEST(ObjectSet, FindsItsObjectsByIdentifier) {
    SupportedAlgorithms* set = SupportedAlgorithms::instance(nullptr);
    ASSERT_EQ(set->count(), 24u);
    for (std::size_t i = 0; i < set->count(); ++i) {
        EXPECT_EQ(set->lookupObject(set->object(i)->id), set->object(i));
    }
}

TEST(ObjectSet, FindsNothingByAnIdentifierThatDiffersInAMiddleArc) {
    static constexpr unsigned kArcs[] = {1, 2, 840, 113549, 2, 1, 1};
    EXPECT_EQ(SupportedAlgorithms::instance(nullptr)->lookupObject(ASN1TObjId(7, kArcs)), nullptr);
}

TEST(ObjectSet, FindsNothingByAnIdentifierWithoutArcsOrWithTooMany) {
    ASN1TObjId id;
    EXPECT_EQ(SupportedAlgorithms::instance(nullptr)->lookupObject(id), nullptr);
    id.numids = 0xFFFFFFFF;
    EXPECT_EQ(SupportedAlgorithms::instance(nullptr)->lookupObject(id), nullptr);
}

TEST(ObjectSet, MayBeEmpty) {
    EXPECT_EQ(SupportedSigPolicyQualifiers::instance(nullptr)->count(), 0u);
    const ASN1TObjId& id = SupportedPolicyQualifiers::instance(nullptr)->object(0)->id;
    EXPECT_EQ(SupportedSigPolicyQualifiers::instance(nullptr)->lookupObject(id), nullptr);
}

TEST(ObjectSet, IsBuiltOnceForAllThreads) {
    std::atomic<bool> go{false};
    SupportedPolicyQualifiers* seen[8] = {};
    std::vector<std::thread> threads;
    for (SupportedPolicyQualifiers*& one : seen) {
        threads.emplace_back([&] {
            while (!go) {
            }
            one = SupportedPolicyQualifiers::instance(nullptr);
        });
    }
    go = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (SupportedPolicyQualifiers* one : seen) {
        EXPECT_EQ(one, seen[0]);
        EXPECT_NE(one, nullptr);
    }
}

TEST(ObjectSet, IsTriedAgainWhenMemoryFailed) {
    // The one set that no test in front of this one asks for.
    for (std::size_t n = 0; n < 2; ++n) {
        FailNthNew failing(n);
        EXPECT_THROW(SupportedInfos::instance(nullptr), std::bad_alloc);
    }
    EXPECT_NE(SupportedInfos::instance(nullptr), nullptr);
}

TEST(InformationObject, MakesRecordAndControlObjectOfItsType) {
    ASN1BEREncodeBuffer buffer;
    signedData object;
    void* record = object.constructASN1TType(buffer.getCtxtPtr());
    ASN1CType* control = object.constructASN1CType(buffer, record);
    static_cast<ASN1T_SignedData*>(record)->version = 5;
    static_cast<ASN1T_SignedData*>(record)->encapContentInfo.eContentType = object.id;
    EXPECT_GT(control->EncodeTo(buffer), 0);
    object.destructASN1CType(control);
}

TEST(InformationObject, WithoutATypeDoesNothing) {
    ASN1BEREncodeBuffer buffer;
    dsaSHA_1 object;
    Asn1TObject value;
    EXPECT_EQ(object.m & 1, 0);
    EXPECT_EQ(object.constructASN1TType(buffer.getCtxtPtr()), nullptr);
    EXPECT_EQ(object.constructASN1CType(buffer, nullptr), nullptr);
    EXPECT_EQ(object.encodeBERType(buffer.getCtxtPtr(), value), 0);
    EXPECT_EQ(object.decodeBERType(buffer.getCtxtPtr(), value), 0);
    EXPECT_EQ(value.decoded, nullptr);
    EXPECT_EQ(rsaPublicKey().m, 0xFF);
}

TEST(InformationObject, OutsideEverySetServesByName) {
    ocspNoCheck object;
    EXPECT_EQ(ExtensionSet::instance(nullptr)->lookupObject(object.id), nullptr);
    algorithmIdentifierMatch rule;
    EXPECT_EQ(rule.id.numids, 0u);
    ASN1BEREncodeBuffer buffer;
    EXPECT_NE(rule.constructASN1TAssertionType(buffer.getCtxtPtr()), nullptr);
}

}  // namespace
}  // namespace Quillmark::test
