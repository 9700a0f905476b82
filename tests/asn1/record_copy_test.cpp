// What the traits of a type copy owes nothing to the context of its source.

#include <gtest/gtest.h>

#include "asn1/certificate_identifier.h"
#include "asn1/extension.h"
#include "asn1/general_name.h"
#include "asn1/info_type_and_value.h"
#include "asn1/name.h"
#include "asn1/pki_status.h"
#include "asn1/revocation_announcement.h"
#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

/// `value` after a way through two records, of which the first is gone before the second is read.
template <typename Traits, typename Value>
Value copied(const Value& value) {
    ASN1BEREncodeBuffer target_buffer;
    typename Traits::ASN1_T target;
    {
        ASN1BEREncodeBuffer buffer;
        typename Traits::ASN1_T source;
        Traits::set(buffer.getCtxtPtr(), source, value);
        Traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    Value read;
    Traits::get(target, read);
    return read;
}

template <typename Traits, typename Value>
std::string copied_der(const char* der) {
    Value value;
    value.decode(blob(der));
    return hex(copied<Traits>(value).encode());
}

TEST(RecordCopy, OfExtensions) {
    const char* const one = "30 0b 06 02 2a 03 01 01 ff 04 02 05 00";
    EXPECT_EQ((copied_der<ASN1T_Extension_traits, CExtension>(one)), one);
    const char* const two = "30 16 30 0b 06 02 2a 03 01 01 ff 04 02 05 00 30 07 06 01 2a 04 02 05 00";
    EXPECT_EQ((copied_der<ASN1T_Extensions_traits, CExtensions>(two)), two);
}

TEST(RecordCopy, OfNames) {
    const char* const member = "30 08 06 03 55 04 03 0c 01 41";
    EXPECT_EQ((copied_der<ASN1T_AttributeTypeAndValue_traits, CAttributeTypeAndValue>(member)), member);
    const char* const members = "31 14 30 08 06 03 55 04 03 0c 01 41 30 08 06 03 55 04 0a 0c 01 42";
    EXPECT_EQ((copied_der<ASN1T_RelativeDistinguishedName_traits, CRelativeDistinguishedName>(members)),
              members);
    const char* const general = "30 0a 82 03 61 62 63 86 03 61 3a 62";
    EXPECT_EQ((copied_der<ASN1T_GeneralNames_traits, CGeneralNames>(general)), general);
}

TEST(RecordCopy, OfCertificateIdentifiers) {
    const char* const serial = "30 0a 30 05 82 03 61 62 63 02 01 05";
    EXPECT_EQ((copied_der<ASN1T_IssuerSerial_traits, CIssuerSerial>(serial)), serial);
    const char* const hash = "30 10 04 02 01 02 30 0a 30 05 82 03 61 62 63 02 01 05";
    EXPECT_EQ((copied_der<ASN1T_ESSCertIDv2_traits, CESSCertIDv2>(hash)), hash);
    const char* const id = "30 08 82 03 61 62 63 02 01 05";
    EXPECT_EQ((copied_der<ASN1T_CertId_traits, CCertId>(id)), id);
}

TEST(RecordCopy, OfGeneralMessages) {
    const char* const infos = "30 0d 30 06 06 02 2a 03 05 00 30 03 06 01 2a";
    EXPECT_EQ((copied_der<ASN1T_GenMsgContent_traits, CInfoTypeAndValueList>(infos)), infos);
}

TEST(RecordCopy, OfFailures) {
    CPKIFailureInfo failure;
    failure.put_bit(2, true);
    failure.put_bit(25, true);
    EXPECT_EQ(copied<ASN1T_PKIFailureInfo_traits>(failure), failure);
}

}  // namespace
}  // namespace Quillmark::ASN1
