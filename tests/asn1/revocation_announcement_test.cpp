#include "asn1/revocation_announcement.h"

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
using test::hex;
using test::Octets;
using test::sequence;
using test::text_element;

// dNSName "a" and serial number 0x00ff (RFC 4211 6.5).
constexpr const char* kCertId = "30 07 82 01 61 02 02 00 ff";

const CDateTime kRevoked(2026, 7, 8, 9, 10, 11, 0, 0);
const CDateTime kBadSince(2055, 1, 2, 3, 4, 5, 0, 0);

CGeneralName dns_name(const wchar_t* text) {
    CGeneralName name;
    name.put_dNSName(text);
    return name;
}

CCertId cert_id() {
    const unsigned char serial[] = {0x00, 0xFF};
    return CCertId(dns_name(L"a"), CBigInteger(serial, sizeof(serial)));
}

CExtensions details() {
    CExtensions extensions;
    extensions.insert(CExtension(CExtValue("1.2.3", blob("05 00")), true));
    return extensions;
}

CRevAnnContent announcement() {
    return CRevAnnContent(PKIStatus_revocationWarning, cert_id(), kRevoked, kBadSince);
}

/// The elements of RevAnnContent (RFC 4210 5.3.14).
CBlob announcement_der(const char* status, const char* cert_id, const Octets& crl_details = {}) {
    return blob_of(sequence({from_hex(status), from_hex(cert_id), text_element(0x18, "20260708091011Z"),
                             text_element(0x18, "20550102030405Z"), crl_details}));
}

TEST(CertId, StartsEmpty) {
    const CCertId id;
    EXPECT_EQ(id.get_issuer().get_type(), 0u);
    EXPECT_EQ(id.get_serialNumber().cbData(), 0u);
}

TEST(CertId, GoesBothWays) {
    CCertId id = cert_id();
    EXPECT_EQ(hex(id.encode()), kCertId);
    id.put_issuer(dns_name(L"b"));
    id.put_serialNumber(CBigInteger(1UL));
    EXPECT_EQ(hex(id.encode()), "30 06 82 01 62 02 01 00");
    id.decode(blob(kCertId));
    EXPECT_STREQ(id.get_issuer().get_dNSName(), L"a");
    EXPECT_EQ(hex(id.get_serialNumber()), "00 ff");
}

TEST(CertId, ReportsIssuerThatCannotBeWritten) {
    EXPECT_CODE(E_INVALIDARG, CCertId(CGeneralName(), CBigInteger(1UL)).encode());
    CGeneralName broken;
    broken.put_directoryName(blob("05 00"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CCertId(broken, CBigInteger(1UL)).encode());
}

TEST(CertId, KeepsValueWhenDecodingFails) {
    CCertId id = cert_id();
    for (const char* bad : {"", "30 00", "30 03 82 01 61", "30 03 02 01 05", "05 00"}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, id.decode(blob(bad))) << bad;
    }
    EXPECT_CODE(E_INVALIDARG, id.decode(blob("30 0c a0 07 06 01 2a a0 02 05 00 02 01 05")));
    EXPECT_EQ(hex(id.encode()), kCertId);
}

TEST(RevAnnContent, StartsEmpty) {
    const CRevAnnContent empty;
    EXPECT_EQ(empty.get_status(), PKIStatus_granted);
    EXPECT_EQ(empty.get_certId().get_issuer().get_type(), 0u);
    EXPECT_EQ(empty.get_willBeRevokedAt(), CDateTime(0L, 0));
    EXPECT_EQ(empty.get_badSinceDate(), CDateTime(0L, 0));
    EXPECT_EQ(empty.get_crlDetails(), nullptr);
}

TEST(RevAnnContent, IsWritten) {
    EXPECT_EQ(announcement().encode(), announcement_der("02 01 04", kCertId));
}

TEST(RevAnnContent, IsWrittenWithDetails) {
    CRevAnnContent content = announcement();
    const CExtensions extensions = details();
    content.put_crlDetails(&extensions);
    EXPECT_EQ(content.encode(), announcement_der("02 01 04", kCertId,
                                                 from_hex("30 0d 30 0b 06 02 2a 03 01 01 ff 04 02 05 00")));
}

TEST(RevAnnContent, LeavesEmptyDetailsOut) {
    CRevAnnContent content = announcement();
    const CExtensions none;
    content.put_crlDetails(&none);
    ASSERT_NE(content.get_crlDetails(), nullptr);
    EXPECT_EQ(content.encode(), announcement_der("02 01 04", kCertId));  // Intended: absent on the wire
}

TEST(RevAnnContent, IsRead) {
    CRevAnnContent content;
    content.decode(
        announcement_der("02 01 05", kCertId, from_hex("30 0d 30 0b 06 02 2a 03 01 01 ff 04 02 05 00")));
    EXPECT_EQ(content.get_status(), PKIStatus_revocationNotification);
    EXPECT_EQ(hex(content.get_certId().encode()), kCertId);
    EXPECT_EQ(content.get_willBeRevokedAt(), kRevoked);
    EXPECT_EQ(content.get_badSinceDate(), kBadSince);
    ASSERT_NE(content.get_crlDetails(), nullptr);
    ASSERT_EQ(content.get_crlDetails()->size(), 1u);
    EXPECT_STREQ(content.get_crlDetails()->front().get_extnID(), "1.2.3");
}

TEST(RevAnnContent, LosesDetailsThatAreAbsent) {
    CRevAnnContent content;
    const CExtensions extensions = details();
    content.put_crlDetails(&extensions);
    content.decode(announcement_der("02 01 05", kCertId));
    EXPECT_EQ(content.get_crlDetails(), nullptr);
}

TEST(RevAnnContent, PutsEachField) {
    CRevAnnContent content;
    content.put_status(PKIStatus_revocationWarning);
    content.put_certId(cert_id());
    content.put_willBeRevokedAt(kRevoked);
    content.put_badSinceDate(kBadSince);
    EXPECT_EQ(content.encode(), announcement().encode());
    const CExtensions extensions = details();
    content.put_crlDetails(&extensions);
    content.put_crlDetails(content.get_crlDetails());
    EXPECT_EQ(content.get_crlDetails()->size(), 1u);
    content.put_crlDetails(nullptr);
    EXPECT_EQ(content.get_crlDetails(), nullptr);
}

TEST(RevAnnContent, WritesWholeSeconds) {
    CRevAnnContent content = announcement();
    content.put_willBeRevokedAt(CDateTime(2026, 7, 8, 9, 10, 11, 999, 0));
    EXPECT_EQ(content.encode(), announcement_der("02 01 04", kCertId));  // Intended: cut, not rounded
}

TEST(RevAnnContent, IsCopiedDeeply) {
    CRevAnnContent content = announcement();
    const CExtensions extensions = details();
    content.put_crlDetails(&extensions);
    const CRevAnnContent copy(content);
    content.put_crlDetails(nullptr);
    content.put_certId(CCertId());
    EXPECT_EQ(copy.get_crlDetails()->size(), 1u);
    EXPECT_EQ(hex(copy.get_certId().encode()), kCertId);
    content = copy;
    EXPECT_NE(content.get_crlDetails(), copy.get_crlDetails());
    EXPECT_EQ(content.encode(), copy.encode());
    content = *&content;
    EXPECT_EQ(content.encode(), copy.encode());
}

TEST(RevAnnContent, ReportsWhatCannotBeWritten) {
    EXPECT_CODE(E_INVALIDARG, CRevAnnContent().encode());
    CRevAnnContent content = announcement();
    CExtensions extensions;
    extensions.push_back(CExtension(CExtValue("1.")));
    content.put_crlDetails(&extensions);
    EXPECT_CODE(E_INVALIDARG, content.encode());
}

TEST(RevAnnContent, KeepsValueWhenTheDecoderFails) {
    CRevAnnContent content = announcement();
    const CBlob before = content.encode();
    for (const CBlob& bad :
         {CBlob(), blob("30 00"), blob("30 03 02 01 05"), announcement_der("05 00", kCertId),
          announcement_der("02 01 05", "30 00"), announcement_der("02 01 05", kCertId, from_hex("30 00"))}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, content.decode(bad)) << hex(bad);
    }
    EXPECT_EQ(content.encode(), before);
}

TEST(RevAnnContentRecord, IsCopiedDeeply) {
    ASN1BERDecodeBuffer target_buffer;
    asn1data::ASN1T_RevAnnContent target;
    {
        ASN1BERDecodeBuffer buffer;
        asn1data::ASN1T_RevAnnContent source;
        ASN1T_RevAnnContent_traits::set(buffer.getCtxtPtr(), source, announcement());
        ASN1T_RevAnnContent_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    CRevAnnContent read;
    ASN1T_RevAnnContent_traits::get(target, read);
    EXPECT_EQ(read.encode(), announcement().encode());
}

}  // namespace
}  // namespace Quillmark::ASN1
