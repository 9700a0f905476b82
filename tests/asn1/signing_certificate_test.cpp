#include "asn1/signing_certificate.h"

#include <gtest/gtest.h>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

// The DER of an attribute with one certificate by its hash alone, and of one with a policy too, are the same
// for the three classes.
constexpr const char* kOneCert = "30 07 30 05 30 03 04 01 aa";
constexpr const char* kOneCertOnePolicy = "30 0f 30 05 30 03 04 01 aa 30 06 30 04 06 02 2a 03";

const CPolicyInformationList kPolicy{CPolicyInformation("1.2.3")};

struct Version1 {
    using Attribute = CAttrSigningCertificate;
    using CertID = CESSCertID;
    using CertList = CESSCertIDList;
    using Traits = ASN1T_SigningCertificate_traits;
    using Record = asn1data::ASN1T_SigningCertificate;
    static constexpr const char* kName = "SigningCertificate";
    static constexpr const char* kOid = "1.2.840.113549.1.9.16.2.12";
};

struct Version2 {
    using Attribute = CAttrSigningCertificateV2;
    using CertID = CESSCertIDv2;
    using CertList = CESSCertIDv2List;
    using Traits = ASN1T_SigningCertificateV2_traits;
    using Record = asn1data::ASN1T_SigningCertificateV2;
    static constexpr const char* kName = "SigningCertificateV2";
    static constexpr const char* kOid = "1.2.840.113549.1.9.16.2.47";
};

struct Other {
    using Attribute = CAttrOtherSigningCertificate;
    using CertID = COtherCertID;
    using CertList = COtherCertIDList;
    using Traits = ASN1T_OtherSigningCertificate_traits;
    using Record = asn1data::ASN1T_OtherSigningCertificate;
    static constexpr const char* kName = "OtherSigningCertificate";
    static constexpr const char* kOid = "1.2.840.113549.1.9.16.2.19";
};

class KindNames {
  public:
    template <class Kind>
    static std::string GetName(int) {
        return Kind::kName;
    }
};

template <class Kind>
class AttrSigningCertificate : public testing::Test {
  protected:
    using Attribute = typename Kind::Attribute;
    using CertID = typename Kind::CertID;

    static typename Kind::CertList one_cert(const char* hash = "aa") { return {CertID(blob(hash))}; }
};

using Kinds = testing::Types<Version1, Version2, Other>;
TYPED_TEST_SUITE(AttrSigningCertificate, Kinds, KindNames);

TYPED_TEST(AttrSigningCertificate, StartsEmpty) {
    const typename TypeParam::Attribute value;
    EXPECT_STREQ(value.get_oid(), TypeParam::kOid);
    EXPECT_EQ(value.get_value().cbData(), 0u);
    EXPECT_TRUE(value.get_certs().empty());
    EXPECT_EQ(value.get_policies(), nullptr);
}

TYPED_TEST(AttrSigningCertificate, EncodesItsCertificates) {
    typename TypeParam::Attribute value(this->one_cert());
    EXPECT_EQ(hex(value.get_value()), kOneCert);
    value.put_certs(this->one_cert("bb"));
    EXPECT_EQ(value.get_certs(), this->one_cert("bb"));
    EXPECT_EQ(hex(value.get_value()), "30 07 30 05 30 03 04 01 bb");
}

TYPED_TEST(AttrSigningCertificate, ReplacesALongerListByAShorterOneAndBack) {
    typename TypeParam::CertList two = this->one_cert("aa");
    two.push_back(typename TypeParam::CertID(blob("bb")));
    typename TypeParam::Attribute value(two);
    EXPECT_EQ(hex(value.get_value()), "30 0c 30 0a 30 03 04 01 aa 30 03 04 01 bb");
    value.put_certs(this->one_cert());
    EXPECT_EQ(hex(value.get_value()), kOneCert);
    value.put_certs(two);
    value.put_certs(value.get_certs());
    EXPECT_EQ(value.get_certs(), two);
    EXPECT_EQ(hex(value.get_value()), "30 0c 30 0a 30 03 04 01 aa 30 03 04 01 bb");
}

TYPED_TEST(AttrSigningCertificate, MayHaveNoCertificates) {
    typename TypeParam::Attribute value(this->one_cert());
    value.put_certs({});
    EXPECT_EQ(hex(value.get_value()), "30 02 30 00");
}

TYPED_TEST(AttrSigningCertificate, WritesPoliciesWithEncode) {
    typename TypeParam::Attribute value(this->one_cert());
    value.put_policies(&kPolicy);
    ASSERT_NE(value.get_policies(), nullptr);
    EXPECT_NE(value.get_policies(), &kPolicy);
    value.encode();
    EXPECT_EQ(hex(value.get_value()), kOneCertOnePolicy);
    value.put_policies(value.get_policies());
    EXPECT_STREQ(value.get_policies()->front().get_policyIdentifier(), "1.2.3");
}

TYPED_TEST(AttrSigningCertificate, LeavesEmptyPoliciesOut) {
    typename TypeParam::Attribute value(this->one_cert());
    const CPolicyInformationList none;
    value.put_policies(&none);
    value.encode();
    EXPECT_EQ(hex(value.get_value()), kOneCert);
    ASSERT_NE(value.get_policies(), nullptr);
    value.put_policies(nullptr);
    EXPECT_EQ(value.get_policies(), nullptr);
}

TYPED_TEST(AttrSigningCertificate, ReadsCertificatesAndPolicies) {
    const typename TypeParam::Attribute value(blob(kOneCertOnePolicy));
    EXPECT_STREQ(value.get_oid(), TypeParam::kOid);
    EXPECT_EQ(value.get_certs(), this->one_cert());
    ASSERT_NE(value.get_policies(), nullptr);
    ASSERT_EQ(value.get_policies()->size(), 1u);
    EXPECT_STREQ(value.get_policies()->front().get_policyIdentifier(), "1.2.3");
}

TYPED_TEST(AttrSigningCertificate, LosesPoliciesThatAreAbsent) {
    typename TypeParam::Attribute value(blob(kOneCertOnePolicy));
    value.value() = blob(kOneCert);
    value.decode();
    EXPECT_EQ(value.get_policies(), nullptr);
    value.encode();
    EXPECT_EQ(hex(value.get_value()), kOneCert);
}

TYPED_TEST(AttrSigningCertificate, IsCopiedDeeply) {
    typename TypeParam::Attribute value(this->one_cert());
    value.put_policies(&kPolicy);
    const typename TypeParam::Attribute copy(value);
    value.put_certs(this->one_cert("bb"));
    value.put_policies(nullptr);
    EXPECT_EQ(copy.get_certs(), this->one_cert());
    ASSERT_NE(copy.get_policies(), nullptr);
    value = copy;
    EXPECT_EQ(value.get_certs(), this->one_cert());
    EXPECT_EQ(value, copy);
    value = *&value;
    EXPECT_EQ(value, copy);
}

TYPED_TEST(AttrSigningCertificate, RefusesBadInput) {
    using Value = typename TypeParam::Attribute;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, Value(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, Value(blob("05 00")));
    Value value(this->one_cert());
    value.value() = blob("30 00");
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode());
    EXPECT_EQ(value.get_certs(), this->one_cert());
    EXPECT_EQ(hex(value.get_value()), "30 00");
}

TYPED_TEST(AttrSigningCertificate, HasNewMembersAndOldOctetsAfterAFailedEncode) {
    typename TypeParam::Attribute value(this->one_cert());
    typename TypeParam::CertList bad = this->one_cert("bb");
    const CIssuerSerial nobody;
    bad.front().put_issuerSerial(&nobody);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.put_certs(bad));
    EXPECT_EQ(value.get_certs(), bad);
    EXPECT_EQ(hex(value.get_value()), kOneCert);
}

TYPED_TEST(AttrSigningCertificate, IsAValueOfItsAttribute) {
    CAttribute attribute(TypeParam::kOid);
    attribute.add(typename TypeParam::Attribute(this->one_cert()));
    CAttribute read;
    read.decode(attribute.encode());
    EXPECT_EQ(read, attribute);
    EXPECT_EQ(hex(read.begin()->get_value()), kOneCert);
    CAttribute wrong(TypeParam::kOid);
    wrong.add(blob("02 01 05"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, wrong.encode());
}

TYPED_TEST(AttrSigningCertificate, RecordsAreCopiedDeeply) {
    typename TypeParam::Attribute value(this->one_cert());
    value.put_policies(&kPolicy);
    ASN1BERDecodeBuffer target_buffer;
    typename TypeParam::Record target;
    {
        ASN1BERDecodeBuffer buffer;
        typename TypeParam::Record source;
        TypeParam::Traits::set(buffer.getCtxtPtr(), source, value);
        TypeParam::Traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    typename TypeParam::Attribute read;
    TypeParam::Traits::get(target, read);
    read.encode();
    EXPECT_EQ(hex(read.get_value()), kOneCertOnePolicy);
}

// Where the classes differ: whether storing policies encodes, and hence what octets a decoded value has.

template <class Kind>
class AttrWithQuietPolicies : public AttrSigningCertificate<Kind> {};

using QuietKinds = testing::Types<Version1, Version2>;
TYPED_TEST_SUITE(AttrWithQuietPolicies, QuietKinds, KindNames);

TYPED_TEST(AttrWithQuietPolicies, KeepsItsOctetsWhenPoliciesChange) {
    // Intended: the member changes and the octets do not.
    typename TypeParam::Attribute value(this->one_cert());
    value.put_policies(&kPolicy);
    EXPECT_EQ(hex(value.get_value()), kOneCert);
    value.encode();
    value.put_policies(nullptr);
    EXPECT_EQ(hex(value.get_value()), kOneCertOnePolicy);
}

TYPED_TEST(AttrWithQuietPolicies, RewritesItsOctetsWithoutReceivedPolicies) {
    // Intended: the octets are those of the certificates until the next encode.
    typename TypeParam::Attribute value(blob(kOneCertOnePolicy));
    EXPECT_EQ(hex(value.get_value()), kOneCert);
    value.encode();
    EXPECT_EQ(hex(value.get_value()), kOneCertOnePolicy);
}

TYPED_TEST(AttrWithQuietPolicies, RewritesItsOctetsWithThePoliciesItHad) {
    // Intended: certificates are stored, and encoded, before policies.
    typename TypeParam::Attribute value(this->one_cert());
    const CPolicyInformationList old{CPolicyInformation("1.2.4")};
    value.put_policies(&old);
    value.value() = blob("30 0f 30 05 30 03 04 01 bb 30 06 30 04 06 02 2a 03");
    value.decode();
    EXPECT_EQ(hex(value.get_value()), "30 0f 30 05 30 03 04 01 bb 30 06 30 04 06 02 2a 04");
    EXPECT_STREQ(value.get_policies()->front().get_policyIdentifier(), "1.2.3");
}

TEST(AttrOtherSigningCertificate, EncodesWhenPoliciesChange) {
    // Intended: this class alone.
    CAttrOtherSigningCertificate value({COtherCertID(blob("aa"))});
    value.put_policies(&kPolicy);
    EXPECT_EQ(hex(value.get_value()), kOneCertOnePolicy);
    value.put_policies(nullptr);
    EXPECT_EQ(hex(value.get_value()), kOneCert);
}

TEST(AttrOtherSigningCertificate, HasReceivedPoliciesInItsOctets) {
    CAttrOtherSigningCertificate value(blob(kOneCertOnePolicy));
    EXPECT_EQ(hex(value.get_value()), kOneCertOnePolicy);
    const CPolicyInformationList old{CPolicyInformation("1.2.4")};
    value.put_policies(&old);
    value.value() = blob(kOneCertOnePolicy);
    value.decode();
    EXPECT_EQ(hex(value.get_value()), kOneCertOnePolicy);
}

TEST(AttrOtherSigningCertificate, RefusesHashOfNoForm) {
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, CAttrOtherSigningCertificate(COtherCertIDList(1)));
}

TEST(AttrSigningCertificateV2Octets, LoseTheDefaultAlgorithm) {
    const CAttrSigningCertificateV2 value(
        blob("30 16 30 14 30 12 30 0d 06 09 60 86 48 01 65 03 04 02 01 05 00 04 01 aa"));
    EXPECT_EQ(hex(value.get_value()), kOneCert);
}

}  // namespace
}  // namespace Quillmark::ASN1
