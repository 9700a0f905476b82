// What the generator makes of one type for each construct: compiled, and run over values written by hand.

#include <gtest/gtest.h>

#include <string>

#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/information_objects.h"
#include "tests/asn1data/record_codec.h"
#include "tests/support/case_name.h"
#include "tests/support/der.h"

using namespace asn1data;

namespace Quillmark::test {
namespace {

struct SampleCase {
    const char* name;
    void (*check)(const Octets& ber, int status, const Octets& again);
    std::string ber;
    int status = RT_OK;
    std::string again = {};  // when it does not come back as it was
};

void PrintTo(const SampleCase& row, std::ostream* out) {
    *out << row.name << ": " << row.ber;
}

/// Decodes; on success also copies to another context, and encodes and frees the copy.
template <typename Record, typename Control, void (*Copy)(ASN1CTXT*, Record*, Record*),
          void (*Free)(ASN1CTXT*, Record*)>
void check(const Octets& ber, int status, const Octets& again) {
    Decoded<Record, Control> decoded(ber);
    ASSERT_EQ(decoded.status(), status);
    if (status == RT_OK) {
        ASN1BEREncodeBuffer other;
        Record copy{};
        Copy(other.getCtxtPtr(), &decoded.record(), &copy);
        EXPECT_EQ(to_hex(encode<Control>(copy).octets), to_hex(again));
        Free(other.getCtxtPtr(), &copy);
        Free(other.getCtxtPtr(), &copy);
    }
    Free(decoded.context(), &decoded.record());
}

#define QUILLMARK_SAMPLE(name) check<ASN1T_##name, ASN1C_##name, asn1Copy_##name, asn1Free_##name>

class Sample : public testing::TestWithParam<SampleCase> {};

TEST_P(Sample, IsReadCopiedAndWritten) {
    const std::string& again = GetParam().again.empty() ? GetParam().ber : GetParam().again;
    GetParam().check(from_hex(GetParam().ber), GetParam().status, from_hex(again));
}

// plain 1, magnitude 2, unchecked 3, short 4, large 5, modulus ff, ranged -1
#define NUMBERS "02 01 01 02 01 02 80 01 03 81 01 04 82 01 05 83 02 00 ff 84 01 ff"

const SampleCase kNumbers[] = {
    {"Required", QUILLMARK_SAMPLE(SampleNumbers), "30 16 " NUMBERS},
    {"Alias", QUILLMARK_SAMPLE(SampleAlias), "30 16 " NUMBERS},
    {"EnumeratedAndBits", QUILLMARK_SAMPLE(SampleNumbers), "30 1d " NUMBERS " 0a 01 04 03 02 06 c0"},
    {"RangeBelow", QUILLMARK_SAMPLE(SampleNumbers),
     "30 16 02 01 01 02 01 02 80 01 03 81 01 04 82 01 05 83 02 00 ff 84 01 fa", RT_E_CONSVIO},
    {"RangeAbove", QUILLMARK_SAMPLE(SampleNumbers),
     "30 16 02 01 01 02 01 02 80 01 03 81 01 04 82 01 05 83 02 00 ff 84 01 06", RT_E_CONSVIO},
    {"ShortAbove", QUILLMARK_SAMPLE(SampleNumbers),
     "30 16 02 01 01 02 01 02 80 01 03 81 01 0b 82 01 05 83 02 00 ff 84 01 ff", RT_E_CONSVIO},
    {"StateLargest", QUILLMARK_SAMPLE(SampleState), "0a 01 04"},
    {"StateAbove", QUILLMARK_SAMPLE(SampleState), "0a 01 05", RT_E_INVENUM},
    {"StateNegative", QUILLMARK_SAMPLE(SampleState), "0a 01 ff", RT_E_INVENUM},
    {"CodeLargest", QUILLMARK_SAMPLE(SampleCode), "0a 01 1f"},
    {"CodeAbove", QUILLMARK_SAMPLE(SampleCode), "0a 01 20", RT_E_INVENUM},
    {"BitsOne", QUILLMARK_SAMPLE(SampleBits), "03 02 07 80"},
    {"BitsFillTheirRoom", QUILLMARK_SAMPLE(SampleBits), "03 03 00 ff ff"},
    {"BitsEmpty", QUILLMARK_SAMPLE(SampleBits), "03 01 00", RT_E_CONSVIO},
    {"BitsWithoutRoom", QUILLMARK_SAMPLE(SampleBits), "03 04 00 ff ff ff", RT_E_STROVFL},
    {"FlagsLongest", QUILLMARK_SAMPLE(SampleFlags), "03 03 04 ff f0"},
    {"FlagsTooLong", QUILLMARK_SAMPLE(SampleFlags), "03 03 03 ff f8", RT_E_CONSVIO},
    {"FlagsWithoutRoom", QUILLMARK_SAMPLE(SampleFlags), "03 04 00 ff ff ff", RT_E_STROVFL},
};
INSTANTIATE_TEST_SUITE_P(Numbers, Sample, testing::ValuesIn(kNumbers), case_name);

const SampleCase kDefaults[] = {
    // salt is left alone when it is absent, and a new record has 0
    {"Absent", QUILLMARK_SAMPLE(SampleDefaults), "30 00", RT_OK, "30 05 a3 03 02 01 00"},
    {"SaltOfTheDefault", QUILLMARK_SAMPLE(SampleDefaults), "30 05 a3 03 02 01 14", RT_OK, "30 00"},
    {"WrittenOut", QUILLMARK_SAMPLE(SampleDefaults),
     "30 11 80 01 00 81 01 01 82 01 01 a3 03 02 01 14 84 01 01", RT_OK, "30 00"},
    {"Different", QUILLMARK_SAMPLE(SampleDefaults),
     "30 11 80 01 ff 81 01 00 82 01 00 a3 03 02 01 15 84 01 02"},
    // Intended: a TRUE that is not 1 differs from the default.
    {"TrueAsItIsWritten", QUILLMARK_SAMPLE(SampleDefaults), "30 08 81 01 ff a3 03 02 01 15"},
    {"Constructed", QUILLMARK_SAMPLE(SampleDefaults), "30 1d a3 03 02 01 15 a5 16 " NUMBERS},
};
INSTANTIATE_TEST_SUITE_P(Defaults, Sample, testing::ValuesIn(kDefaults), case_name);

const SampleCase kStrings[] = {
    {"Required", QUILLMARK_SAMPLE(SampleStrings), "30 09 0c 01 61 04 04 01 02 03 04"},
    {"AllElements", QUILLMARK_SAMPLE(SampleStrings),
     "30 1a 0c 02 c3 bc 1e 02 00 61 13 03 61 62 63 04 04 01 02 03 04 80 02 aa bb 03 01 00"},
    {"TextEmpty", QUILLMARK_SAMPLE(SampleStrings), "30 08 0c 00 04 04 01 02 03 04", RT_E_CONSVIO},
    {"WideTooLong", QUILLMARK_SAMPLE(SampleStrings),
     "30 13 0c 01 61 1e 08 00 61 00 61 00 61 00 61 04 04 01 02 03 04", RT_E_CONSVIO},
    {"MacTooShort", QUILLMARK_SAMPLE(SampleStrings), "30 08 0c 01 61 04 03 01 02 03", RT_E_CONSVIO},
    {"KeyTooShort", QUILLMARK_SAMPLE(SampleStrings), "30 0c 0c 01 61 04 04 01 02 03 04 80 01 aa",
     RT_E_CONSVIO},
    {"NameAlias", QUILLMARK_SAMPLE(SampleText), "0c 0a 30 31 32 33 34 35 36 37 38 39"},
    {"NameTooLong", QUILLMARK_SAMPLE(SampleText), "0c 0b 30 31 32 33 34 35 36 37 38 39 30", RT_E_CONSVIO},
};
INSTANTIATE_TEST_SUITE_P(Strings, Sample, testing::ValuesIn(kStrings), case_name);

#define UTC "17 0d 32 34 30 31 30 32 30 33 30 34 30 35 5a"

const SampleCase kStructures[] = {
    {"SetInOrder", QUILLMARK_SAMPLE(SampleSet), "31 17 13 01 61 02 01 05 63 0f " UTC},
    {"SetBackwards", QUILLMARK_SAMPLE(SampleSet), "31 17 63 0f " UTC " 02 01 05 13 01 61", RT_OK,
     "31 17 13 01 61 02 01 05 63 0f " UTC},
    {"SetTwice", QUILLMARK_SAMPLE(SampleSet), "31 06 13 01 61 13 01 62", RT_E_SETDUP},
    {"SetUnknown", QUILLMARK_SAMPLE(SampleSet), "31 06 13 01 61 0c 01 62", RT_E_NOTINSET},
    {"SetMissing", QUILLMARK_SAMPLE(SampleSet), "31 03 02 01 05", RT_E_SETMISSING},
    {"Moment", QUILLMARK_SAMPLE(SampleMoment), "63 0f " UTC},
    {"OptionalChoiceThere", QUILLMARK_SAMPLE(SampleOptional), "30 06 01 01 ff 02 01 05"},
    {"OptionalChoiceAbsent", QUILLMARK_SAMPLE(SampleOptional), "30 03 02 01 05"},
    {"InOrderOne", QUILLMARK_SAMPLE(SampleOptional), "30 07 06 02 2a 03 02 01 05"},
    {"InOrderTwo", QUILLMARK_SAMPLE(SampleOptional), "30 0b 06 02 2a 03 06 02 2a 04 02 01 05"},
    {"OptionalChoiceBroken", QUILLMARK_SAMPLE(SampleOptional), "30 07 01 02 ff ff 02 01 05", RT_E_INVLEN},
    {"Closing", QUILLMARK_SAMPLE(SampleClosing),
     "30 80 a0 80 01 01 ff 00 00 81 01 61 a2 80 13 01 62 00 00 00 00", RT_OK,
     "30 0d a0 03 01 01 ff 81 01 61 a2 03 13 01 62"},
    {"ClosingStringTakesItsEnd", QUILLMARK_SAMPLE(SampleClosing),
     "30 0e a0 03 01 01 ff a1 80 04 01 61 00 00 00 00", RT_E_SEQOVFL},
    {"ClosingInnerEndMissing", QUILLMARK_SAMPLE(SampleClosing), "30 05 a0 80 01 01 ff", RT_E_INVLEN},
    {"ClosingMemberEndMissing", QUILLMARK_SAMPLE(SampleClosing), "30 0a a0 03 01 01 ff a2 80 13 01 62",
     RT_E_INVLEN},
    {"ClosingOwnEndMissing", QUILLMARK_SAMPLE(SampleClosing), "30 80 a0 03 01 01 ff", RT_E_INVLEN},
    {"ExtensibleThree", QUILLMARK_SAMPLE(SampleExtensible), "30 0c 06 02 2a 03 05 00 02 01 07 01 01 ff"},
    {"ExtensibleNone", QUILLMARK_SAMPLE(SampleExtensible), "30 04 06 02 2a 03"},
    {"ExtensibleEmpty", QUILLMARK_SAMPLE(SampleExtensible), "30 00", RT_E_SETMISSING},
    {"Raw", QUILLMARK_SAMPLE(SampleRaw), "0c 01 61"},
    {"Keeping", QUILLMARK_SAMPLE(SampleKeeping), "30 09 05 00 a0 02 05 00 16 01 61"},
    {"KeepingWithTheTagOfTheType", QUILLMARK_SAMPLE(SampleKeeping), "30 07 05 00 a0 00 16 01 61"},
    {"KeepingRequiredOnly", QUILLMARK_SAMPLE(SampleKeeping), "30 06 0c 01 62 16 01 61"},
};

const SampleCase kChoices[] = {
    {"Null", QUILLMARK_SAMPLE(SampleChoice), "05 00"},
    {"Number", QUILLMARK_SAMPLE(SampleChoice), "02 01 05"},
    {"Text", QUILLMARK_SAMPLE(SampleChoice), "16 01 61"},
    {"TextTooLong", QUILLMARK_SAMPLE(SampleChoice), "16 0b 30 31 32 33 34 35 36 37 38 39 30", RT_E_CONSVIO},
    {"Wide", QUILLMARK_SAMPLE(SampleChoice), "1c 04 00 01 f6 00"},
    {"Octets", QUILLMARK_SAMPLE(SampleChoice), "80 01 61"},
    {"Oid", QUILLMARK_SAMPLE(SampleChoice), "06 02 2a 03"},
    {"Record", QUILLMARK_SAMPLE(SampleChoice), "a1 16 " NUMBERS},
    {"InnerFlag", QUILLMARK_SAMPLE(SampleChoice), "01 01 ff"},
    {"InnerBits", QUILLMARK_SAMPLE(SampleChoice), "03 02 07 80"},
    {"Anything", QUILLMARK_SAMPLE(SampleChoice), "a2 03 0c 01 61"},
    {"Unknown", QUILLMARK_SAMPLE(SampleChoice), "a3 03 0c 01 61", RT_E_INVOPT},
    {"KeptUntagged", QUILLMARK_SAMPLE(SampleKept), "30 02 05 00"},
    {"KeptBehindAnImplicitTag", QUILLMARK_SAMPLE(SampleKept), "a0 02 05 00"},
    {"KeptInTheIndefiniteForm", QUILLMARK_SAMPLE(SampleKept), "a0 80 05 00 00 00"},
    {"KeptBehindAnExplicitTag", QUILLMARK_SAMPLE(SampleKept), "a1 04 30 02 05 00"},
    {"KeptSet", QUILLMARK_SAMPLE(SampleKept), "a2 05 13 03 61 62 63"},
    {"KeptPrimitive", QUILLMARK_SAMPLE(SampleKept), "80 02 05 00", RT_E_INVOPT},
    {"KeptCutShort", QUILLMARK_SAMPLE(SampleKept), "a0 82 05 00", RT_E_INVLEN},
};
INSTANTIATE_TEST_SUITE_P(Choices, Sample, testing::ValuesIn(kChoices), case_name);

const SampleCase kLists[] = {
    {"List", QUILLMARK_SAMPLE(SampleList), "30 07 01 01 ff 03 02 07 80"},
    {"ListEmpty", QUILLMARK_SAMPLE(SampleList), "30 00", RT_E_CONSVIO},
    {"SetOfTexts", QUILLMARK_SAMPLE(SampleTexts), "31 06 13 01 62 13 01 61", RT_OK,
     "31 06 13 01 61 13 01 62"},
    {"SetOfTextsElementEmpty", QUILLMARK_SAMPLE(SampleTexts), "31 02 13 00", RT_E_CONSVIO},
    // Intended: sorted like a SET OF, written as a SEQUENCE
    {"Tagged", QUILLMARK_SAMPLE(SampleTagged), "30 06 01 01 ff 01 01 00", RT_OK, "30 06 01 01 00 01 01 ff"},
    {"TaggedAsSet", QUILLMARK_SAMPLE(SampleTagged), "31 03 01 01 ff", RT_E_IDNOTFOUND},
    {"Oids", QUILLMARK_SAMPLE(SampleOids), "30 08 06 02 2a 03 06 02 2a 04"},
    {"OidsEmpty", QUILLMARK_SAMPLE(SampleOids), "30 00", RT_E_CONSVIO},
    {"OidsWrongElement", QUILLMARK_SAMPLE(SampleOids), "30 07 06 02 2a 03 02 01 05", RT_E_IDNOTFOUND},
    {"OidsIndefinite", QUILLMARK_SAMPLE(SampleOids), "30 80 06 02 2a 03 00 00", RT_OK, "30 04 06 02 2a 03"},
    {"Sorted", QUILLMARK_SAMPLE(SampleSorted), "30 05 04 01 62 04 00", RT_OK, "30 05 04 00 04 01 62"},
    {"Codes", QUILLMARK_SAMPLE(SampleCodes), "30 07 13 01 61 13 02 62 63"},
    {"CodesElementTooLong", QUILLMARK_SAMPLE(SampleCodes), "30 05 13 03 61 62 63", RT_E_CONSVIO},
    {"Tree", QUILLMARK_SAMPLE(SampleTree), "30 0f 13 01 61 30 0a 30 03 13 01 62 30 03 13 01 63"},
};
INSTANTIATE_TEST_SUITE_P(Lists, Sample, testing::ValuesIn(kLists), case_name);

const SampleCase kTables[] = {
    {"Known", QUILLMARK_SAMPLE(SampleParameters), "30 08 06 03 2a 03 01 02 01 07"},
    {"KnownWrong", QUILLMARK_SAMPLE(SampleParameters), "30 07 06 03 2a 03 01 05 00", RT_E_IDNOTFOUND},
    {"Null", QUILLMARK_SAMPLE(SampleParameters), "30 07 06 03 2a 03 02 05 00"},
    {"Nothing", QUILLMARK_SAMPLE(SampleParameters), "30 08 06 03 2a 03 03 0c 01 61"},
    {"Unknown", QUILLMARK_SAMPLE(SampleParameters), "30 08 06 03 2a 03 04 0c 01 61"},
    {"Absent", QUILLMARK_SAMPLE(SampleParameters), "30 05 06 03 2a 03 01"},
    {"Wrapped", QUILLMARK_SAMPLE(SampleContent), "30 0c 06 03 2a 03 01 a0 05 04 03 02 01 07"},
    {"WrappedUnknown", QUILLMARK_SAMPLE(SampleContent), "30 0b 06 03 2a 03 09 a0 04 04 02 ff ff"},
    {"WrappedAbsent", QUILLMARK_SAMPLE(SampleContent), "30 05 06 03 2a 03 01"},
    {"Values", QUILLMARK_SAMPLE(SampleAttribute), "30 0d 06 03 2a 03 01 31 06 02 01 07 02 01 08"},
    {"ValuesOutOfOrder", QUILLMARK_SAMPLE(SampleAttribute), "30 0d 06 03 2a 03 01 31 06 02 01 08 02 01 07",
     RT_OK, "30 0d 06 03 2a 03 01 31 06 02 01 07 02 01 08"},
    {"ValuesWrong", QUILLMARK_SAMPLE(SampleAttribute), "30 09 06 03 2a 03 01 31 02 05 00", RT_E_IDNOTFOUND},
};
INSTANTIATE_TEST_SUITE_P(Tables, Sample, testing::ValuesIn(kTables), case_name);
INSTANTIATE_TEST_SUITE_P(Structures, Sample, testing::ValuesIn(kStructures), case_name);

// Sixty-four levels of a type that contains itself, and one more.
Octets tree(int depth) {
    Octets inner = from_hex("30 03 13 01 61");
    for (int level = 0; level < depth; ++level) {
        inner = sequence({from_hex("13 01 61"), element(0x30, inner)});
    }
    return inner;
}

TEST(SampleTree, EndsAtTheLimit) {
    using Tree = Decoded<ASN1T_SampleTree, ASN1C_SampleTree>;
    EXPECT_EQ(Tree(tree(64)).status(), RT_OK);
    EXPECT_EQ(Tree(tree(65)).status(), RT_E_NOTSUPP);
}

TEST(SampleDefaults, BeginWithTheirDefaults) {
    ASN1T_SampleDefaults record;
    EXPECT_EQ(record.off, 0);
    EXPECT_EQ(record.on, 1);
    EXPECT_EQ(record.version, 1);
    EXPECT_STREQ(record.number, "1");
    record.salt = 20;
    EXPECT_EQ(to_hex(encode<ASN1C_SampleDefaults>(record).octets), "30 00");
}

TEST(SampleStrings, RefusesMoreBitsThanItsArrayHolds) {
    Decoded<ASN1T_SampleStrings, ASN1C_SampleStrings> decoded(from_hex("30 09 0c 01 61 04 04 01 02 03 04"));
    decoded.record().m.bitsPresent = 1;
    decoded.record().bits.numbits = 17;
    EXPECT_EQ(encode<ASN1C_SampleStrings>(decoded.record()).result, RT_E_CONSVIO);
}

TEST(SampleNull, WorksOnNothing) {
    ASN1BEREncodeBuffer out;
    EXPECT_EQ(ASN1C_SampleNull_(out, nullptr).Encode(), 2);
}

TEST(SampleTypes, HoldEveryObjectOfTheSet) {
    EXPECT_EQ(SampleTypes::instance(nullptr)->count(), 4u);
}

std::string octets_of(const ASN1OpenType& value) {
    return to_hex(value.data, value.numocts);
}

TEST(SampleKept, HasTheTagOfItsTypeBehindAnImplicitTag) {
    Decoded<ASN1T_SampleKept, ASN1C_SampleKept> decoded(from_hex("a0 02 05 00"));
    ASSERT_EQ(decoded.record().t, T_SampleKept_tagged);
    EXPECT_EQ(octets_of(*decoded.record().u.tagged), "30 02 05 00");
    Decoded<ASN1T_SampleKept, ASN1C_SampleKept> set(from_hex("a2 03 13 01 61"));
    ASSERT_EQ(set.record().t, T_SampleKept_set);
    EXPECT_EQ(octets_of(*set.record().u.set), "31 03 13 01 61");
    Decoded<ASN1T_SampleKeeping, ASN1C_SampleKeeping> keeping(from_hex("30 09 05 00 a0 02 05 00 16 01 61"));
    EXPECT_EQ(octets_of(keeping.record().tagged), "30 02 05 00");
}

TEST(SampleKept, LeavesAMessageThatItsOctetsLieIn) {
    Octets message = from_hex("a0 02 05 00");
    ASN1BERDecodeBuffer in(message.data(), static_cast<int>(message.size()));
    in.getCtxtPtr()->flags |= RT_F_FASTCOPY;
    ASN1T_SampleKept record;
    EXPECT_EQ(ASN1C_SampleKept(in, record).Decode(), RT_OK);
    EXPECT_EQ(octets_of(*record.u.tagged), "30 02 05 00");
    EXPECT_EQ(to_hex(message), "a0 02 05 00");
}

TEST(SampleKept, RefusesToWriteAnElementOfAnotherType) {
    const Octets octets = from_hex("31 02 05 00");
    ASN1TOpenType value;
    ASN1T_SampleKept record;
    record.t = T_SampleKept_tagged;
    record.u.tagged = &value;
    EXPECT_EQ(encode<ASN1C_SampleKept>(record).result, RT_E_BADVALUE);
    value.numocts = static_cast<uint32_t>(octets.size());
    value.data = octets.data();
    EXPECT_EQ(encode<ASN1C_SampleKept>(record).result, RT_E_BADVALUE);
}

}  // namespace
}  // namespace Quillmark::test
