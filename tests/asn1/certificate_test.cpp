#include "asn1/certificate.h"

#include <gtest/gtest.h>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/der.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::blob_of;
using test::from_hex;
using test::Octets;
using test::sequence;
using test::text_element;

const Octets kAlgorithm = from_hex("30 04 06 02 2a 03");

/// A version 1 certificate (RFC 5280 4.1) of a name with that common name.
CBlob certificate(std::string_view common_name) {
    const Octets member = sequence({from_hex("06 03 55 04 03"), text_element(0x0C, common_name)});
    const Octets name = sequence({test::element(0x31, member)});
    const Octets validity =
        sequence({text_element(0x17, "240101000000Z"), text_element(0x17, "250101000000Z")});
    const Octets key = sequence({kAlgorithm, from_hex("03 02 00 aa")});
    const Octets to_be_signed = sequence({from_hex("02 01 05"), kAlgorithm, name, validity, name, key});
    return blob_of(sequence({to_be_signed, kAlgorithm, from_hex("03 02 00 bb")}));
}

TEST(CertificateValue, GoesBothWays) {
    CCertificateValue value(certificate("A"));
    EXPECT_EQ(value.encode(), certificate("A"));
    value.decode(certificate("B"));
    EXPECT_EQ(value, certificate("B"));
}

TEST(CertificateValue, IsRewrittenInDer) {
    // The same certificate in a length that is not minimal (X.690 10.1).
    const CBlob der = certificate("A");
    ASSERT_LT(der.cbData(), 0x80u);
    Octets ber = test::octets(der);
    ber.insert(ber.begin() + 1, 0x81);
    EXPECT_EQ(CCertificateValue(blob_of(ber)).encode(), der);
    CCertificateValue read;
    read.decode(blob_of(ber));
    EXPECT_EQ(read, der);
}

TEST(CertificateValue, RefusesWhatIsNoCertificate) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CCertificateValue(blob("30 00")).encode());
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CCertificateValue().encode());
    CCertificateValue value(certificate("A"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(blob("05 00")));
    EXPECT_EQ(value, certificate("A"));
}

TEST(CertificateRecord, OutlivesTheCallThatDecodedIt) {
    ASN1BERDecodeBuffer buffer;
    asn1data::ASN1T_Certificate record;
    asn1DecodeT<ASN1T_Certificate_traits>(certificate("A"), buffer.getCtxtPtr(), record);
    EXPECT_EQ(asn1EncodeT<ASN1T_Certificate_traits>(record), certificate("A"));
}

TEST(CertificateRecords, GoBothWays) {
    using List =
        ASN1TSeqOfList_traits<asn1data::ASN1T_Certificate, ASN1T_Certificate_traits, CBlob, CBlobList>;
    const CBlobList certificates{certificate("A"), certificate("B")};
    ASN1BERDecodeBuffer buffer;
    ASN1TSeqOfList record{};
    CBlobList read;
    List::set(buffer.getCtxtPtr(), record, certificates);
    List::get(record, read);
    EXPECT_EQ(read, certificates);
}

TEST(CertificateRecords, RefuseElementThatIsNoCertificate) {
    using List =
        ASN1TSeqOfList_traits<asn1data::ASN1T_Certificate, ASN1T_Certificate_traits, CBlob, CBlobList>;
    ASN1BERDecodeBuffer buffer;
    ASN1TSeqOfList record{};
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL,
                List::set(buffer.getCtxtPtr(), record, CBlobList{certificate("A"), blob("05 00")}));
}

TEST(CertificateValues, GoBothWays) {
    const CCertificateValues values{CCertificateValue(certificate("B")), CCertificateValue(certificate("A"))};
    const CBlob der = blob_of(sequence({test::octets(certificate("B")), test::octets(certificate("A"))}));
    EXPECT_EQ(values.encode(), der);
    CCertificateValues read{CCertificateValue(certificate("C"))};
    read.decode(der);
    EXPECT_EQ(read, values);
}

TEST(CertificateValues, MayBeEmpty) {
    EXPECT_EQ(test::hex(CCertificateValues().encode()), "30 00");
    CCertificateValues read{CCertificateValue(certificate("A"))};
    read.decode(blob("30 00"));
    EXPECT_TRUE(read.empty());
}

TEST(CertificateValues, RefuseElementThatIsNoCertificate) {
    CCertificateValues values{CCertificateValue(certificate("A")), CCertificateValue(blob("05 00"))};
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, values.encode());
    for (const char* bad : {"", "30 02 30 00", "31 00"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, values.decode(blob(bad))) << bad;
    }
    EXPECT_EQ(values.size(), 2u);
}

TEST(CertificateValuesRecord, IsCopiedDeeply) {
    const CCertificateValues values{CCertificateValue(certificate("A"))};
    ASN1BERDecodeBuffer target_buffer;
    ASN1TSeqOfList target{};
    {
        ASN1BERDecodeBuffer buffer;
        ASN1TSeqOfList source{};
        ASN1T_CertificateValues_traits::set(buffer.getCtxtPtr(), source, values);
        ASN1T_CertificateValues_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    CCertificateValues read;
    ASN1T_CertificateValues_traits::get(target, read);
    EXPECT_EQ(read, values);
}

TEST(CertificateListRecord, CarriesTheOctetsAsTheyAre) {
    // No CRL at all: the octets are one element and are not looked into.
    const CBlob octets = blob("30 03 05 01 00");
    ASN1BERDecodeBuffer buffer;
    ASN1TOpenType record{};
    ASN1T_CertificateList_traits::set(buffer.getCtxtPtr(), record, octets);
    CBlob read;
    ASN1T_CertificateList_traits::get(record, read);
    EXPECT_EQ(read, octets);
}

TEST(CertificateListRecord, OutlivesTheCallThatDecodedIt) {
    ASN1BERDecodeBuffer buffer;
    ASN1TOpenType record{};
    asn1DecodeT<ASN1T_CertificateList_traits>(blob("30 02 05 00"), buffer.getCtxtPtr(), record);
    EXPECT_EQ(test::hex(asn1EncodeT<ASN1T_CertificateList_traits>(record)), "30 02 05 00");
}

TEST(CertificateListRecord, RefusesWhatIsNoElement) {
    ASN1BERDecodeBuffer buffer;
    ASN1TOpenType record{};
    for (const char* bad : {"", "30 84 ff ff ff ff", "00 00"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL,
                    ASN1T_CertificateList_traits::set(buffer.getCtxtPtr(), record, blob(bad)))
            << bad;
    }
}

}  // namespace
}  // namespace Quillmark::ASN1
