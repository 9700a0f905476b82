#include "asn1/content_info.h"

#include <gtest/gtest.h>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

constexpr const char* kSignedData = "1.2.840.113549.1.7.2";

TEST(ContentInfo, GoesBothWays) {
    const CContentInfo info("1.2.3", blob("04 01 aa"));
    const CBlob der = info.encode();
    EXPECT_EQ(hex(der), "30 09 06 02 2a 03 a0 03 04 01 aa");
    CContentInfo read("1.2.9", blob("05 00"));
    read.decode(der);
    EXPECT_STREQ(read.get_contentType(), "1.2.3");
    EXPECT_EQ(hex(read.get_content()), "04 01 aa");
}

TEST(ContentInfo, PutsItsFields) {
    CContentInfo info;
    EXPECT_STREQ(info.get_contentType(), "");
    info.put_contentType("1.2.3");
    info.put_content(blob("05 00"));
    EXPECT_EQ(hex(info.encode()), "30 08 06 02 2a 03 a0 02 05 00");
}

TEST(ContentInfo, RefusesKnownTypeWithWrongContent) {
    // Intended: found when encoding, not by the receiver.
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CContentInfo(kSignedData, blob("04 01 aa")).encode());
}

TEST(ContentInfo, ReportsBadOid) {
    EXPECT_CODE(E_INVALIDARG, CContentInfo("1.2.", blob("05 00")).encode());
    EXPECT_CODE(E_INVALIDARG, CContentInfo().encode());
}

TEST(ContentInfo, KeepsValueWhenDecodingFails) {
    CContentInfo info("1.2.3", blob("05 00"));
    for (const char* bad : {"", "30 00", "30 04 06 02 2a 03", "30 08 06 02 2a 03 a1 02 05 00"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, info.decode(blob(bad)));
    }
    EXPECT_STREQ(info.get_contentType(), "1.2.3");
}

TEST(ContentInfo, RefusesKnownTypeWithoutContent) {
    CContentInfo info;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CContentInfo(kSignedData, CBlob()).encode());
    info.decode(blob("30 0d 06 09 2a 86 48 86 f7 0d 01 07 02 a0 00"));
    EXPECT_EQ(info.get_content().cbData(), 0u);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, info.encode());
}

TEST(ContentInfoRecord, TakesAndGivesDer) {
    const CBlob der = blob("30 09 06 02 2a 03 a0 03 04 01 aa");
    ASN1BERDecodeBuffer buffer;
    asn1data::ASN1T_ContentInfo record;
    CBlob read;
    ASN1T_ContentInfo_traits::set(buffer.getCtxtPtr(), record, der);
    ASN1T_ContentInfo_traits::get(record, read);
    EXPECT_EQ(read, der);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, ASN1T_ContentInfo_traits::set(buffer.getCtxtPtr(), record, CBlob()));
}

}  // namespace
}  // namespace Quillmark::ASN1
