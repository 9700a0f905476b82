#include "asn1/info_type_and_value.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

// id-it-preferredSymmAlg, whose value is an AlgorithmIdentifier (RFC 4210 5.3.19.4)
constexpr const char* kPreferredSymmAlg = "1.3.6.1.5.5.7.4.4";

CInfoTypeAndValue info(const char* oid, const char* value = "") {
    return CInfoTypeAndValue(oid, blob(value));
}

TEST(InfoTypeAndValue, StartsEmpty) {
    const CInfoTypeAndValue empty;
    EXPECT_STREQ(empty.get_infoType(), "");
    EXPECT_EQ(empty.get_infoValue().cbData(), 0u);
    EXPECT_STREQ(CInfoTypeAndValue("1.2.3").get_infoType(), "1.2.3");
    EXPECT_EQ(CInfoTypeAndValue("1.2.3").get_infoValue().cbData(), 0u);
}

TEST(InfoTypeAndValue, GoesBothWays) {
    CInfoTypeAndValue value = info("1.2.3", "05 00");
    EXPECT_EQ(hex(value.encode()), "30 06 06 02 2a 03 05 00");
    value.put_infoType("1.2.4");
    value.put_infoValue(blob("02 01 05"));
    EXPECT_EQ(hex(value.encode()), "30 07 06 02 2a 04 02 01 05");
    value.decode(blob("30 06 06 02 2a 03 05 00"));
    EXPECT_EQ(value, info("1.2.3", "05 00"));
}

TEST(InfoTypeAndValue, LeavesEmptyValueOut) {
    CInfoTypeAndValue value("1.2.3");
    EXPECT_EQ(hex(value.encode()), "30 04 06 02 2a 03");  // Intended: nothing stands for it
    value.put_infoValue(blob("05 00"));
    value.decode(blob("30 04 06 02 2a 03"));
    EXPECT_EQ(value, info("1.2.3"));
}

TEST(InfoTypeAndValue, ComparesTypeAndValue) {
    EXPECT_EQ(info("1.2.3", "05 00"), info("1.2.3", "05 00"));
    EXPECT_NE(info("1.2.3", "05 00"), info("1.2.4", "05 00"));
    EXPECT_NE(info("1.2.3", "05 00"), info("1.2.3"));
}

TEST(InfoTypeAndValue, RefusesKnownTypeWithWrongValue) {
    // Intended: found when encoding, not by the receiver.
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, info(kPreferredSymmAlg, "02 01 05").encode());
    const CInfoTypeAndValue known = info(kPreferredSymmAlg, "30 04 06 02 2a 03");
    CInfoTypeAndValue read;
    read.decode(known.encode());
    EXPECT_EQ(read, known);
}

TEST(InfoTypeAndValue, ReportsBadOid) {
    EXPECT_CODE(E_INVALIDARG, info("1.", "05 00").encode());
    EXPECT_CODE(E_INVALIDARG, info("").encode());
}

TEST(InfoTypeAndValue, KeepsValueWhenDecodingFails) {
    CInfoTypeAndValue value = info("1.2.3", "05 00");
    for (const char* bad : {"", "30 00", "30 02 05 00", "30 08 06 02 2a 03 05 00", "05 00"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(blob(bad))) << bad;
    }
    EXPECT_EQ(value, info("1.2.3", "05 00"));
}

TEST(FindByOid, AnswersForTheSameText) {
    const findByOid wanted("1.2.3");
    EXPECT_TRUE(wanted(info("1.2.3", "05 00")));
    EXPECT_FALSE(wanted(info("1.2.30")));
    EXPECT_FALSE(wanted(info("1.2")));
    const CInfoTypeAndValueList list{info("1.2.4"), info("1.2.3")};
    EXPECT_EQ(std::find_if(list.begin(), list.end(), wanted), std::next(list.begin()));
}

TEST(InfoTypeAndValueList, FindsTheFirst) {
    CInfoTypeAndValueList list{info("1.2.4"), info("1.2.3", "05 00"), info("1.2.3", "02 01 05")};
    const CInfoTypeAndValueList& lent = list;
    EXPECT_EQ(list.find("1.2.3"), std::next(list.begin()));
    EXPECT_EQ(lent.find("1.2.3"), std::next(lent.begin()));
    EXPECT_EQ(list.find("1.2.5"), list.end());
    EXPECT_EQ(lent.find("1.2.5"), lent.end());
    EXPECT_EQ(list.find(nullptr), list.end());
}

TEST(InfoTypeAndValueList, ReplacesKnownOidInItsPlace) {
    CInfoTypeAndValueList list{info("1.2.3", "05 00"), info("1.2.4", "05 00")};
    list.insert(info("1.2.3", "02 01 05"));
    EXPECT_EQ(list, (CInfoTypeAndValueList{info("1.2.3", "02 01 05"), info("1.2.4", "05 00")}));
}

TEST(InfoTypeAndValueList, AppendsNewOid) {
    CInfoTypeAndValueList list{info("1.2.3", "05 00")};
    list.insert(info("1.2.4"));
    list.insert(list.front());
    EXPECT_EQ(list, (CInfoTypeAndValueList{info("1.2.3", "05 00"), info("1.2.4")}));
}

TEST(InfoTypeAndValueList, RemovesTheFirst) {
    CInfoTypeAndValueList list{info("1.2.3", "05 00"), info("1.2.4"), info("1.2.3")};
    list.remove("1.2.3");
    EXPECT_EQ(list, (CInfoTypeAndValueList{info("1.2.4"), info("1.2.3")}));
    list.remove(list.front().get_infoType());
    EXPECT_EQ(list, CInfoTypeAndValueList{info("1.2.3")});
}

TEST(InfoTypeAndValueList, RemovesNothingForAnUnknownOid) {
    CInfoTypeAndValueList list{info("1.2.3")};
    list.remove("1.2.4");
    EXPECT_EQ(list.size(), 1u);
}

TEST(InfoTypeAndValueList, GoesBothWays) {
    const CInfoTypeAndValueList list{info("1.2.4", "05 00"), info("1.2.3")};
    EXPECT_EQ(hex(list.encode()), "30 0e 30 06 06 02 2a 04 05 00 30 04 06 02 2a 03");
    CInfoTypeAndValueList read{info("1.2.9")};
    read.decode(list.encode());
    EXPECT_EQ(read, list);
    read.decode(blob("30 00"));
    EXPECT_TRUE(read.empty());
    EXPECT_EQ(hex(read.encode()), "30 00");
}

TEST(InfoTypeAndValueList, KeepsElementsWhenDecodingFails) {
    CInfoTypeAndValueList list{info("1.2.3")};
    for (const char* bad : {"", "31 00", "30 02 05 00", "30 02 30 00"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, list.decode(blob(bad))) << bad;
    }
    EXPECT_EQ(list, CInfoTypeAndValueList{info("1.2.3")});
}

TEST(InfoTypeAndValueRecords, KeepOrderAndAbsentValues) {
    const CInfoTypeAndValueList list{info("1.2.4", "05 00"), info("1.2.3"),
                                     info(kPreferredSymmAlg, "30 04 06 02 2a 03")};
    ASN1BERDecodeBuffer buffer;
    ASN1TSeqOfList records{};
    ASN1TavList_Encode(list, records, buffer);
    ASSERT_EQ(records.count, 3u);
    const auto& second = *static_cast<asn1data::ASN1T_InfoTypeAndValue*>(records.head->next->data);
    EXPECT_FALSE(second.m.infoValuePresent);

    CInfoTypeAndValueList read{info("1.2.9")};
    ASN1TavList_Parse(records, read);
    EXPECT_EQ(read, list);
}

TEST(InfoTypeAndValueRecords, AreAppendedToTheList) {
    ASN1BERDecodeBuffer buffer;
    ASN1TSeqOfList records{};
    ASN1TavList_Encode({info("1.2.3")}, records, buffer);
    ASN1TavList_Encode({info("1.2.4")}, records, buffer);
    CInfoTypeAndValueList read;
    ASN1TavList_Parse(records, read);
    EXPECT_EQ(read, (CInfoTypeAndValueList{info("1.2.3"), info("1.2.4")}));
}

TEST(InfoTypeAndValueRecords, OfAnEmptyListAreNone) {
    ASN1BERDecodeBuffer buffer;
    ASN1TSeqOfList records{};
    ASN1TavList_Encode(CInfoTypeAndValueList(), records, buffer);
    EXPECT_EQ(records.count, 0u);
    CInfoTypeAndValueList read{info("1.2.9")};
    ASN1TavList_Parse(records, read);
    EXPECT_TRUE(read.empty());
}

TEST(InfoTypeAndValueRecords, LeaveTheMessageOfTheBufferAlone) {
    const CBlob message = blob("05 00");
    ASN1BERDecodeBuffer buffer(message.pbData(), static_cast<int>(message.cbData()));
    buffer.init();
    const ASN1BUFFER before = buffer.getCtxtPtr()->buffer;
    ASN1TSeqOfList records{};
    ASN1TavList_Encode({info(kPreferredSymmAlg, "30 04 06 02 2a 03")}, records, buffer);
    EXPECT_EQ(buffer.getCtxtPtr()->buffer.data, before.data);
    EXPECT_EQ(buffer.getCtxtPtr()->buffer.size, before.size);
    EXPECT_EQ(buffer.getCtxtPtr()->buffer.byteIndex, before.byteIndex);
}

TEST(InfoTypeAndValueRecords, RefuseWhatCannotBeWritten) {
    ASN1BERDecodeBuffer buffer;
    ASN1TSeqOfList records{};
    EXPECT_CODE(E_INVALIDARG, ASN1TavList_Encode({info("1.")}, records, buffer));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL,
                ASN1TavList_Encode({info(kPreferredSymmAlg, "02 01 05")}, records, buffer));
}

TEST(InfoTypeAndValueRecord, IsCopiedDeeply) {
    ASN1BERDecodeBuffer target_buffer;
    asn1data::ASN1T_InfoTypeAndValue target;
    {
        ASN1BERDecodeBuffer buffer;
        asn1data::ASN1T_InfoTypeAndValue source;
        ASN1T_InfoTypeAndValue_traits::set(buffer.getCtxtPtr(), source, info("1.2.3", "05 00"));
        ASN1T_InfoTypeAndValue_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    CInfoTypeAndValue read;
    ASN1T_InfoTypeAndValue_traits::get(target, read);
    EXPECT_EQ(read, info("1.2.3", "05 00"));
}

}  // namespace
}  // namespace Quillmark::ASN1
