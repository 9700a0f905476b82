#include "asn1/signer_info.h"

#include <gtest/gtest.h>

#include "asn1data/codecs.h"
#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/der.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::blob_of;
using test::element;
using test::from_hex;
using test::hex;
using test::Octets;
using test::sequence;

const Octets kVersion = from_hex("02 01 01");
const Octets kDigestAlgorithm = from_hex("30 04 06 02 2a 03");
const Octets kSignatureAlgorithm = from_hex("30 06 06 02 2a 04 05 00");
const Octets kSignature = from_hex("04 02 ab cd");
// An issuer that is no valid Name in DER: its members are out of order.
constexpr const char* kIssuer = "30 16 31 14 30 08 06 03 55 04 04 0c 01 42 30 08 06 03 55 04 03 0c 01 41";

CBlob signer(const Octets& sid) {
    return blob_of(sequence({kVersion, sid, kDigestAlgorithm, kSignatureAlgorithm, kSignature}));
}

CBlob signer_by_issuer() {
    return signer(sequence({from_hex(kIssuer), from_hex("02 02 00 ff")}));
}

TEST(SignerInfo, StartsEmpty) {
    const CSignerInfo info;
    EXPECT_EQ(info.get_version(), 0u);
    EXPECT_EQ(info.get_issuer().cbData(), 0u);
    EXPECT_EQ(info.get_serialNumber().cbData(), 0u);
    EXPECT_STREQ(info.get_digestAlgorithm().get_algorithm(), "");
}

TEST(SignerInfo, IsRead) {
    CSignerInfo info;
    info.decode(signer_by_issuer());
    EXPECT_EQ(info.get_version(), 1u);
    EXPECT_EQ(hex(info.get_serialNumber()), "00 ff");
    EXPECT_STREQ(info.get_digestAlgorithm().get_algorithm(), "1.2.3");
    EXPECT_STREQ(info.get_signatureAlgorithm().get_algorithm(), "1.2.4");
    EXPECT_EQ(hex(info.get_signatureAlgorithm().get_parameters()), "05 00");
    EXPECT_EQ(hex(info.get_signature()), "ab cd");
}

TEST(SignerInfo, GivesTheIssuerAsReceived) {
    CSignerInfo info;
    info.decode(signer_by_issuer());
    EXPECT_EQ(hex(info.get_issuer()), kIssuer);
}

TEST(SignerInfo, SkipsAttributes) {
    const Octets attributes = element(0xA0, "30 08 06 02 2a 05 31 02 05 00");
    CSignerInfo info;
    info.decode(blob_of(
        sequence({kVersion, sequence({from_hex(kIssuer), from_hex("02 01 05")}), kDigestAlgorithm, attributes,
                  kSignatureAlgorithm, kSignature, element(0xA1, "30 08 06 02 2a 05 31 02 05 00")})));
    EXPECT_EQ(hex(info.get_serialNumber()), "05");
}

TEST(SignerInfo, RefusesSignerNamedByKeyIdentifier) {
    CSignerInfo info;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, info.decode(signer(element(0x80, "01 02 03"))));
}

TEST(SignerInfo, KeepsValueWhenTheDecoderFails) {
    CSignerInfo info;
    info.decode(signer_by_issuer());
    const CSignerInfo before(info);
    for (const char* bad : {"", "30 00", "30 03 02 01 01", "05 00"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, info.decode(blob(bad)));
    }
    EXPECT_EQ(info, before);
}

TEST(SignerInfo, ComparesEveryField) {
    CSignerInfo info;
    info.decode(signer_by_issuer());
    const CSignerInfo same(info);
    EXPECT_EQ(info, same);
    CSignerInfo other(same);
    other.put_version(2);
    EXPECT_NE(other, same);
    other = same;
    other.put_digestAlgorithm(CAlgorithmIdentifier("1.2.9"));
    EXPECT_NE(other, same);
    other = same;
    other.put_issuer(CBlob());
    EXPECT_NE(other, same);
    other = same;
    other.put_serialNumber(CBigInteger());
    EXPECT_NE(other, same);
    other = same;
    other.put_signature(CBlob());
    EXPECT_NE(other, same);
    other = same;
    other.put_signatureAlgorithm(CAlgorithmIdentifier("1.2.9"));
    EXPECT_NE(other, same);
}

TEST(SignerInfo, PutsItsFields) {
    CSignerInfo info;
    info.put_version(3);
    info.put_issuer(blob("30 00"));
    info.put_serialNumber(CBigInteger(1UL));
    info.put_digestAlgorithm(CAlgorithmIdentifier("1.2.3"));
    info.put_signatureAlgorithm(CAlgorithmIdentifier("1.2.4"));
    info.put_signature(blob("ab"));
    EXPECT_EQ(info.get_version(), 3u);
    EXPECT_EQ(hex(info.get_issuer()), "30 00");
    EXPECT_EQ(hex(info.get_serialNumber()), "00");
    EXPECT_STREQ(info.get_digestAlgorithm().get_algorithm(), "1.2.3");
    EXPECT_STREQ(info.get_signatureAlgorithm().get_algorithm(), "1.2.4");
    EXPECT_EQ(hex(info.get_signature()), "ab");
}

TEST(SignerInfoRecord, IsCopiedDeeply) {
    const CBlob der = signer_by_issuer();
    ASN1BERDecodeBuffer target_buffer;
    asn1data::ASN1T_SignerInfo target;
    {
        ASN1BERDecodeBuffer buffer(der.pbData(), static_cast<int>(der.cbData()));
        buffer.init();
        asn1data::ASN1T_SignerInfo source;
        ASSERT_EQ(asn1data::asn1D_SignerInfo(buffer.getCtxtPtr(), &source, ASN1EXPL, 0), 0);
        ASN1T_SignerInfo_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    CSignerInfo read;
    ASN1T_SignerInfo_get(read, target);
    CSignerInfo want;
    want.decode(der);
    EXPECT_EQ(read, want);
}

}  // namespace
}  // namespace Quillmark::ASN1
