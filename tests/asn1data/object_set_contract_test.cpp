// What the object sets hold, in which order and what it carries, against the published tables, and what an
// object does with a value that fails.

#include <gtest/gtest.h>

#include <concepts>
#include <string>
#include <typeinfo>
#include <vector>

#include "asn1data/control_classes.h"
#include "asn1data/information_objects.h"
#include "tests/asn1data/record_codec.h"
#include "tests/support/der.h"

using namespace asn1data;

namespace Quillmark::test {
namespace {

/// An object of a set: its identifier, and the control class of the type that it carries.
struct PublishedObject {
    std::string oid;
    const std::type_info* carried = nullptr;
};

bool operator==(const PublishedObject& left, const PublishedObject& right) {
    if (left.carried == nullptr || right.carried == nullptr) {
        return left.oid == right.oid && left.carried == right.carried;
    }
    return left.oid == right.oid && *left.carried == *right.carried;
}

void PrintTo(const PublishedObject& object, std::ostream* out) {
    *out << object.oid << " " << (object.carried == nullptr ? "-" : object.carried->name());
}

std::string text_of(const ASN1OBJID& id) {
    std::string text;
    for (std::uint32_t i = 0; i < id.numids; ++i) {
        text += (i == 0 ? "" : ".") + std::to_string(id.subid[i]);
    }
    return text;
}

/// The class of the control object that an object makes, null when it carries no type.
const std::type_info* carried_by(const EXTENSION& object) {
    ASN1BEREncodeBuffer buffer;
    ASN1CType* control =
        object.constructASN1CExtnType(buffer, object.constructASN1TExtnType(buffer.getCtxtPtr()));
    const std::type_info* type = &typeid(*control);
    object.destructASN1CExtnType(control);
    return type;
}

template <typename Object>
requires(!std::derived_from<Object, EXTENSION>) const std::type_info* carried_by(const Object& object) {
    ASN1BEREncodeBuffer buffer;
    ASN1CType* control = object.constructASN1CType(buffer, object.constructASN1TType(buffer.getCtxtPtr()));
    if (control == nullptr) {
        return nullptr;
    }
    const std::type_info* type = &typeid(*control);
    object.destructASN1CType(control);
    return type;
}

/// What a set holds against `published`, in the order of lookup. The set is one of its own, so that no test
/// finds the shared one built.
template <typename Set>
void expect_published(const std::vector<PublishedObject>& published) {
    const Set set(nullptr);
    std::vector<PublishedObject> got;
    for (std::size_t i = 0; i < set.count(); ++i) {
        got.push_back({text_of(set.object(i)->id), carried_by(*set.object(i))});
    }
    EXPECT_EQ(got, published);
}

#define QUILLMARK_CARRIES(name) &typeid(ASN1C_##name)

TEST(ObjectSetContract, ExtensionSetIsComplete) {
    expect_published<ExtensionSet>({
        {"2.5.29.35", QUILLMARK_CARRIES(AuthorityKeyIdentifier)},
        {"2.5.29.14", QUILLMARK_CARRIES(SubjectKeyIdentifier)},
        {"2.5.29.15", QUILLMARK_CARRIES(KeyUsage)},
        {"2.5.29.37", QUILLMARK_CARRIES(_extKeyUsage_ExtnType)},
        {"2.5.29.16", QUILLMARK_CARRIES(PrivateKeyUsagePeriod)},
        {"2.5.29.32", QUILLMARK_CARRIES(CertificatePoliciesSyntax)},
        {"2.5.29.33", QUILLMARK_CARRIES(PolicyMappingsSyntax)},
        {"2.5.29.17", QUILLMARK_CARRIES(GeneralNames)},
        {"2.5.29.18", QUILLMARK_CARRIES(GeneralNames)},
        {"2.5.29.9", QUILLMARK_CARRIES(AttributesSyntax)},
        {"2.5.29.19", QUILLMARK_CARRIES(BasicConstraintsSyntax)},
        {"2.5.29.30.1",
         QUILLMARK_CARRIES(NameConstraintsSyntax)},  // Intended: one arc more than id-ce-nameConstraints
        {"2.5.29.36", QUILLMARK_CARRIES(PolicyConstraintsSyntax)},
        {"2.5.29.20", QUILLMARK_CARRIES(CRLNumber)},
        {"2.5.29.21", QUILLMARK_CARRIES(CRLReason)},
        {"2.5.29.23", QUILLMARK_CARRIES(HoldInstruction)},
        {"2.5.29.24", QUILLMARK_CARRIES(InvalidityDate)},
        {"2.5.29.31", QUILLMARK_CARRIES(CRLDistPointsSyntax)},
        {"2.5.29.28", QUILLMARK_CARRIES(IssuingDistPointSyntax)},
        {"2.5.29.29", QUILLMARK_CARRIES(CertificateIssuer)},
        {"2.5.29.27", QUILLMARK_CARRIES(BaseCRLNumber)},
        {"2.5.29.46", QUILLMARK_CARRIES(FreshestCRL)},
        {"1.3.6.1.5.5.7.1.1", QUILLMARK_CARRIES(AuthorityInfoAccessSyntax)},
        {"1.3.6.1.5.5.7.1.11", QUILLMARK_CARRIES(SubjectInfoAccessSyntax)},
        {"1.3.6.1.5.5.7.48.1.3", QUILLMARK_CARRIES(CrlID)},
        {"1.2.643.2.2.47.5", QUILLMARK_CARRIES(CrlID)},
        {"1.3.6.1.5.5.7.48.1.4", QUILLMARK_CARRIES(AcceptableResponses)},
        {"1.3.6.1.5.5.7.48.1.6", QUILLMARK_CARRIES(ArchiveCutoff)},
        {"1.3.6.1.5.5.7.48.1.7", QUILLMARK_CARRIES(ServiceLocator)},
        {"1.2.643.2.2.47.2", QUILLMARK_CARRIES(CrlLocator)},
        {"1.2.643.2.2.47.3", QUILLMARK_CARRIES(PKIMessage)},
        {"1.2.643.2.2.47.4", QUILLMARK_CARRIES(PKIMessage)},
        {"1.2.643.2.2.47.1", QUILLMARK_CARRIES(NULLParams_)},
        {"1.2.643.100.111", QUILLMARK_CARRIES(SubjectSignTool)},
        {"1.2.643.100.112", QUILLMARK_CARRIES(IssuerSignTool)},
        {"1.2.643.100.114", QUILLMARK_CARRIES(IdentificationKind)},
    });
}

TEST(ObjectSetContract, SupportedAlgorithmsAreComplete) {
    expect_published<SupportedAlgorithms>({
        {"1.2.643.2.2.19", QUILLMARK_CARRIES(_gost2001PubKey_Type)},
        {"1.2.643.2.2.98", QUILLMARK_CARRIES(_gost2001DHPubKey_Type)},
        {"1.2.643.7.1.1.1.1", QUILLMARK_CARRIES(_gost2012_256_PubKey_Type)},
        {"1.2.643.7.1.1.1.2", QUILLMARK_CARRIES(_gost2012_512_PubKey_Type)},
        {"1.2.643.2.2.3", QUILLMARK_CARRIES(_gost94WithGostR34102001Sign_Type)},
        {"1.2.643.7.1.1.3.2", QUILLMARK_CARRIES(NULLParams_)},
        {"1.2.643.7.1.1.3.3", QUILLMARK_CARRIES(NULLParams_)},
        {"1.2.643.2.2.21", QUILLMARK_CARRIES(Gost28147_89_Parameters)},
        {"1.2.643.2.2.9", QUILLMARK_CARRIES(_gostR341194DigestParams_Type)},
        {"1.2.643.7.1.1.2.2", QUILLMARK_CARRIES(NULLParams_)},
        {"1.2.643.7.1.1.2.3", QUILLMARK_CARRIES(NULLParams_)},
        {"1.2.840.113549.1.1.1", QUILLMARK_CARRIES(NULLParams_)},
        {"1.2.840.113549.1.1.5", QUILLMARK_CARRIES(NULLParams_)},
        {"1.2.840.113549.1.1.4", QUILLMARK_CARRIES(NULLParams_)},
        {"1.2.840.113549.1.1.2", QUILLMARK_CARRIES(NULLParams_)},
        {"1.2.840.10040.4.1", QUILLMARK_CARRIES(Dss_Parms)},
        {"1.2.840.10040.4.3"},
        {"1.2.840.10046.2.1", QUILLMARK_CARRIES(DomainParameters)},
        {"1.3.14.3.2.26", QUILLMARK_CARRIES(NULLParams_)},
        {"1.2.643.2.2.1.1.969.1", QUILLMARK_CARRIES(_pbeGost28147And3411_Type)},
        {"1.2.643.7.1.1.5.1.1", QUILLMARK_CARRIES(Gost3412_15_Encryption_Parameters)},
        {"1.2.643.7.1.1.5.1.2", QUILLMARK_CARRIES(Gost3412_15_Encryption_Parameters)},
        {"1.2.643.7.1.1.5.2.1", QUILLMARK_CARRIES(Gost3412_15_Encryption_Parameters)},
        {"1.2.643.7.1.1.5.2.2", QUILLMARK_CARRIES(Gost3412_15_Encryption_Parameters)},
    });
}

TEST(ObjectSetContract, SupportedAttributesAreComplete) {
    expect_published<SupportedAttributes>({
        {"1.3.6.1.4.1.311.13.2.2", QUILLMARK_CARRIES(EnrollmentCSPInfo)},
        {"1.3.6.1.4.1.311.13.2.3", QUILLMARK_CARRIES(_msOsVersion_Type)},
        {"2.5.4.41", QUILLMARK_CARRIES(_name_Type)},
        {"2.5.4.3", QUILLMARK_CARRIES(_commonName_Type)},
        {"2.5.4.4", QUILLMARK_CARRIES(_surname_Type)},
        {"2.5.4.42", QUILLMARK_CARRIES(_givenName_Type)},
        {"2.5.4.43", QUILLMARK_CARRIES(_initials_Type)},
        {"2.5.4.44", QUILLMARK_CARRIES(_generationQualifier_Type)},
        {"2.5.4.46", QUILLMARK_CARRIES(_characterString_Type)},
        {"2.5.4.6", QUILLMARK_CARRIES(_characterString_Type)},
        {"2.5.4.7", QUILLMARK_CARRIES(_localityName_Type)},
        {"2.5.4.9", QUILLMARK_CARRIES(_streetAddress_Type)},
        {"2.5.4.8", QUILLMARK_CARRIES(_stateOrProvinceName_Type)},
        {"2.5.4.10", QUILLMARK_CARRIES(_organizationName_Type)},
        {"2.5.4.11", QUILLMARK_CARRIES(_organizationalUnitName_Type)},
        {"2.5.4.12", QUILLMARK_CARRIES(_title_Type)},
        {"1.2.840.113549.1.9.1", QUILLMARK_CARRIES(PHGStringNonStrict)},
        {"2.5.4.65", QUILLMARK_CARRIES(_x520Pseudonym_Type)},
        {"1.2.840.113549.1.9.3", QUILLMARK_CARRIES(ContentTypeIdentifier)},
        {"1.2.840.113549.1.9.4", QUILLMARK_CARRIES(_messageDigest_Type)},
        {"1.2.840.113549.1.9.5", QUILLMARK_CARRIES(Time)},
        {"1.2.840.113549.1.9.16.2.12", QUILLMARK_CARRIES(SigningCertificate)},
        {"1.2.840.113549.1.9.16.2.19", QUILLMARK_CARRIES(OtherSigningCertificate)},
        {"1.2.840.113549.1.9.16.2.21", QUILLMARK_CARRIES(CompleteCertificateRefs)},
        {"1.2.840.113549.1.9.16.2.22", QUILLMARK_CARRIES(CompleteRevocationRefs)},
        {"1.2.840.113549.1.9.16.2.23", QUILLMARK_CARRIES(CertificateValues)},
        {"1.2.840.113549.1.9.16.2.24", QUILLMARK_CARRIES(RevocationValues)},
        {"1.2.840.113549.1.9.16.2.47", QUILLMARK_CARRIES(SigningCertificateV2)},
        {"1.2.840.113549.1.9.16.2.15", QUILLMARK_CARRIES(SignaturePolicy)},
        {"1.2.840.113549.1.9.16.2.20", QUILLMARK_CARRIES(TimeStampToken)},
        {"1.2.840.113549.1.9.16.2.14", QUILLMARK_CARRIES(TimeStampToken)},
        {"1.2.840.113549.1.9.16.2.25", QUILLMARK_CARRIES(TimeStampToken)},
        {"1.2.840.113549.1.9.16.2.26", QUILLMARK_CARRIES(TimeStampToken)},
        {"1.2.840.113549.1.9.16.2.27", QUILLMARK_CARRIES(TimeStampToken)},
        {"0.9.2342.19200300.100.1.25", QUILLMARK_CARRIES(CaseIgnoreIA5StringSyntaxNonStrict)},
        {"1.3.6.1.4.1.311.2.1.14", QUILLMARK_CARRIES(Extensions)},
        {"1.2.840.113549.1.9.14", QUILLMARK_CARRIES(Extensions)},
        {"1.2.643.100.1", QUILLMARK_CARRIES(OGRN)},
        {"1.2.643.100.5", QUILLMARK_CARRIES(OGRNIP)},
        {"1.2.643.3.131.1.1", QUILLMARK_CARRIES(INN)},
        {"1.2.643.100.4", QUILLMARK_CARRIES(INNLE)},
        {"1.2.643.100.3", QUILLMARK_CARRIES(SNILS)},
        {"1.2.840.113549.1.9.2", QUILLMARK_CARRIES(_unstructuredName_Type)},
        {"2.5.4.17", QUILLMARK_CARRIES(_postalCode_Type)},
        {"2.5.4.16", QUILLMARK_CARRIES(PostalAddress)},
    });
}

TEST(ObjectSetContract, SupportedContentTypesAreComplete) {
    expect_published<SupportedContentTypes>({
        {"1.2.840.113549.1.7.1", QUILLMARK_CARRIES(_simpleData_Type)},
        {"1.2.840.113549.1.7.2", QUILLMARK_CARRIES(SignedData)},
        {"1.2.840.113549.1.7.3", QUILLMARK_CARRIES(EnvelopedData)},
        {"1.2.840.113549.1.7.5", QUILLMARK_CARRIES(DigestedData)},
        {"1.2.840.113549.1.7.6", QUILLMARK_CARRIES(EncryptedData)},
        {"1.2.840.113549.1.9.16.1.2", QUILLMARK_CARRIES(AuthenticatedData)},
    });
}

TEST(ObjectSetContract, SupportedContentTypesLegacyAreComplete) {
    expect_published<SupportedContentTypesLegacy>({
        {"1.2.840.113549.1.7.1", QUILLMARK_CARRIES(_simpleData_Type)},
        {"1.2.840.113549.1.7.2", QUILLMARK_CARRIES(SignedDataLegacy)},
        {"1.2.840.113549.1.7.3", QUILLMARK_CARRIES(EnvelopedData)},
        {"1.2.840.113549.1.7.5", QUILLMARK_CARRIES(DigestedData)},
        {"1.2.840.113549.1.7.6", QUILLMARK_CARRIES(EncryptedData)},
        {"1.2.840.113549.1.9.16.1.2", QUILLMARK_CARRIES(AuthenticatedData)},
    });
}

TEST(ObjectSetContract, SupportedEContentTypesAreComplete) {
    expect_published<SupportedEContentTypes>({
        {"1.2.840.113549.1.7.2", QUILLMARK_CARRIES(SignedData)},
        {"1.2.840.113549.1.7.3", QUILLMARK_CARRIES(EnvelopedData)},
        {"1.2.840.113549.1.7.5", QUILLMARK_CARRIES(DigestedData)},
        {"1.2.840.113549.1.7.6", QUILLMARK_CARRIES(EncryptedData)},
        {"1.2.840.113549.1.9.16.1.2", QUILLMARK_CARRIES(AuthenticatedData)},
        {"1.2.840.113549.1.9.16.1.4", QUILLMARK_CARRIES(TSTInfo)},
        {"1.2.840.113549.1.9.16.1.7", QUILLMARK_CARRIES(DVCSRequest)},
        {"1.2.840.113549.1.9.16.1.8", QUILLMARK_CARRIES(DVCSResponse)},
    });
}

TEST(ObjectSetContract, SupportedInfosAreComplete) {
    expect_published<SupportedInfos>({
        {"1.3.6.1.5.5.7.4.1", QUILLMARK_CARRIES(Certificate)},
        {"1.3.6.1.5.5.7.4.2", QUILLMARK_CARRIES(_itSignKeyPairTypes_Type)},
        {"1.3.6.1.5.5.7.4.3", QUILLMARK_CARRIES(_itEncKeyPairTypes_Type)},
        {"1.3.6.1.5.5.7.4.4", QUILLMARK_CARRIES(AlgorithmIdentifier)},
        {"1.3.6.1.5.5.7.4.5", QUILLMARK_CARRIES(CAKeyUpdAnnContent)},
        {"1.3.6.1.5.5.7.4.6", QUILLMARK_CARRIES(CertificateList)},
        {"1.2.643.2.2.41.1", QUILLMARK_CARRIES(PKIAudit)},
        {"1.2.643.2.2.41.5", QUILLMARK_CARRIES(ChangeNameReq)},
        {"1.2.643.2.2.41.4", QUILLMARK_CARRIES(RevDetails)},
        {"1.2.643.2.2.41.2", QUILLMARK_CARRIES(NULLParams_)},
        {"1.2.643.2.2.41.3", QUILLMARK_CARRIES(NULLParams_)},
        {"1.2.643.2.2.41.6", QUILLMARK_CARRIES(ChangeNameReq)},
        {"1.2.643.2.2.41.7", QUILLMARK_CARRIES(RevRepContent)},
        {"1.2.643.2.2.41.8", QUILLMARK_CARRIES(_itQuillmarkOrganization_Type)},
        {"1.2.643.2.2.41.10", QUILLMARK_CARRIES(_itQuillmarkPolicy_Type)},
        {"1.2.643.2.2.41.11", QUILLMARK_CARRIES(_itQuillmarkOfficial_Type)},
        {"1.2.643.2.2.41.12", QUILLMARK_CARRIES(_itQuillmarkCertificate_Type)},
    });
}

TEST(ObjectSetContract, SupportedOCSPResponseTypesAreComplete) {
    expect_published<SupportedOCSPResponseTypes>({
        {"1.3.6.1.5.5.7.48.1.1", QUILLMARK_CARRIES(BasicOCSPResponse)},
    });
}

TEST(ObjectSetContract, SupportedPolicyQualifiersAreComplete) {
    expect_published<SupportedPolicyQualifiers>({
        {"1.3.6.1.5.5.7.2.1"},
        {"1.3.6.1.5.5.7.2.2"},
    });
}

TEST(ObjectSetContract, SupportedSigPolicyQualifiersAreNone) {
    expect_published<SupportedSigPolicyQualifiers>({});
}

TEST(ObjectSetContract, InstanceIsTheSameForEveryContext) {
    ASN1BEREncodeBuffer buffer;
    EXPECT_EQ(SupportedAlgorithms::instance(buffer.getCtxtPtr()), SupportedAlgorithms::instance(nullptr));
}

TEST(ObjectSetContract, ObjectsOutsideTheSetsHaveIdentifierAndType) {
    EXPECT_EQ((PublishedObject{text_of(gost2012_256DH_PubKey().id), carried_by(gost2012_256DH_PubKey())}),
              (PublishedObject{"1.2.643.7.1.1.6.1", QUILLMARK_CARRIES(_gost2012_256DH_PubKey_Type)}));
    EXPECT_EQ((PublishedObject{text_of(gost2012_512DH_PubKey().id), carried_by(gost2012_512DH_PubKey())}),
              (PublishedObject{"1.2.643.7.1.1.6.2", QUILLMARK_CARRIES(_gost2012_512DH_PubKey_Type)}));
    EXPECT_EQ((PublishedObject{text_of(contentInfo().id), carried_by(contentInfo())}),
              (PublishedObject{"1.2.840.113549.1.9.16.1.6", QUILLMARK_CARRIES(ContentInfo)}));
    EXPECT_EQ((PublishedObject{text_of(e_contentInfo().id), carried_by(e_contentInfo())}),
              (PublishedObject{"1.2.840.113549.1.9.16.1.6", QUILLMARK_CARRIES(ContentInfo)}));
    EXPECT_EQ((PublishedObject{text_of(ocspNoCheck().id), carried_by(ocspNoCheck())}),
              (PublishedObject{"1.3.6.1.5.5.7.48.1.5", QUILLMARK_CARRIES(NULLParams_)}));
}

TEST(ObjectSetContract, ObjectsOutsideTheSetsAreNotFound) {
    EXPECT_EQ(SupportedAlgorithms::instance(nullptr)->lookupObject(gost2012_256DH_PubKey().id), nullptr);
    EXPECT_EQ(SupportedAlgorithms::instance(nullptr)->lookupObject(gost2012_512DH_PubKey().id), nullptr);
    EXPECT_EQ(SupportedContentTypes::instance(nullptr)->lookupObject(contentInfo().id), nullptr);
    EXPECT_EQ(SupportedContentTypesLegacy::instance(nullptr)->lookupObject(contentInfo().id), nullptr);
    EXPECT_EQ(SupportedEContentTypes::instance(nullptr)->lookupObject(e_contentInfo().id), nullptr);
    EXPECT_EQ(ExtensionSet::instance(nullptr)->lookupObject(ocspNoCheck().id), nullptr);
}

const std::type_info* assertion_of(const MATCHING_RULE& rule) {
    ASN1BEREncodeBuffer buffer;
    ASN1CType* control =
        rule.constructASN1CAssertionType(buffer, rule.constructASN1TAssertionType(buffer.getCtxtPtr()));
    const std::type_info* type = &typeid(*control);
    rule.destructASN1CAssertionType(control);
    return type;
}

TEST(ObjectSetContract, MatchingRulesCarryTheirAssertionsAndHaveNoIdentifier) {
    EXPECT_EQ(*assertion_of(algorithmIdentifierMatch()), typeid(ASN1C_AlgorithmIdentifier));
    EXPECT_EQ(*assertion_of(certificateExactMatch()), typeid(ASN1C_CertificateExactAssertion));
    EXPECT_EQ(*assertion_of(certificateListExactMatch()), typeid(ASN1C_CertificateListExactAssertion));
    EXPECT_EQ(*assertion_of(certificateListMatch()), typeid(ASN1C_CertificateListAssertion));
    EXPECT_EQ(*assertion_of(certificateMatch()), typeid(ASN1C_CertificateAssertion));
    EXPECT_EQ(*assertion_of(certificatePairExactMatch()), typeid(ASN1C_CertificatePairExactAssertion));
    EXPECT_EQ(*assertion_of(certificatePairMatch()), typeid(ASN1C_CertificatePairAssertion));
    EXPECT_EQ(certificateMatch().id.numids, 0u);
}

TEST(ObjectSetContract, AMatchingRuleDecodesCopiesAndEncodesItsAssertion) {
    // CertificateExactAssertion of serial number 7 and an empty name
    const Octets der = from_hex("30 05 02 01 07 30 00");
    ASN1BERDecodeBuffer in(der.data(), static_cast<int>(der.size()));
    in.init();
    const certificateExactMatch rule;
    Asn1TObject value;
    ASSERT_EQ(rule.decodeBERAssertionType(in.getCtxtPtr(), value), RT_OK);
    Asn1TObject copy;
    rule.copyAssertionType(in.getCtxtPtr(), value, copy);
    rule.freeAssertionType(in.getCtxtPtr(), value);
    EXPECT_EQ(value.decoded, nullptr);
    ASN1BEREncodeBuffer out;
    out.init();
    const int length = rule.encodeBERAssertionType(out.getCtxtPtr(), copy);
    EXPECT_EQ(to_hex(out.getMsgPtr(), static_cast<std::size_t>(length)), to_hex(der));
    rule.freeAssertionType(in.getCtxtPtr(), copy);
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

// Decodes `der`, takes the octets of the carried value away, and has the table step make them anew.
template <typename Record, typename Control>
std::string octets_by_table_step(const Octets& der, Asn1TObject Record::*member,
                                 int (*encode_table)(ASN1CTXT*, Record*)) {
    Decoded<Record, Control> decoded(der);
    EXPECT_EQ(decoded.status(), RT_OK);
    Asn1TObject& value = decoded.record().*member;
    if (value.decoded != nullptr) {
        value.numocts = 0;
        value.data = nullptr;
    }
    ASN1BEREncodeBuffer buffer;
    EXPECT_EQ(encode_table(buffer.getCtxtPtr(), &decoded.record()), RT_OK);
    return to_hex(value.data, value.numocts);
}

TEST(CarriedValueContract, IsWrittenByItsTableStep) {
    const Octets common_name = sequence({from_hex("06 03 55 04 03"), from_hex("0c 01 41")});
    EXPECT_EQ((octets_by_table_step<ASN1T_AttributeTypeAndValue, ASN1C_AttributeTypeAndValue>(
                  common_name, &ASN1T_AttributeTypeAndValue::value, asn1ETC_AttributeTypeAndValue)),
              "0c 01 41");
    const Octets practice = sequence({from_hex("06 08 2b 06 01 05 05 07 02 01"), from_hex("16 01 61")});
    EXPECT_EQ((octets_by_table_step<ASN1T_PolicyQualifierInfo, ASN1C_PolicyQualifierInfo>(
                  practice, &ASN1T_PolicyQualifierInfo::qualifier, asn1ETC_PolicyQualifierInfo)),
              "16 01 61");
    const Octets no_attributes = sequence(
        {kSignedData, element(0xA0, sequence({from_hex("02 01 01 31 00 30 04 06 02 2a 03 31 00")}))});
    EXPECT_EQ((octets_by_table_step<ASN1T_ContentInfo, ASN1C_ContentInfo>(
                  no_attributes, &ASN1T_ContentInfo::content, asn1ETC_ContentInfo)),
              "30 0d 02 01 01 31 00 30 04 06 02 2a 03 31 00");
}

TEST(CarriedValueContract, OfAnUnknownIdentifierStaysInItsTableStep) {
    const Octets unknown = sequence({from_hex("06 02 2a 03"), from_hex("0c 01 41")});
    EXPECT_EQ((octets_by_table_step<ASN1T_AttributeTypeAndValue, ASN1C_AttributeTypeAndValue>(
                  unknown, &ASN1T_AttributeTypeAndValue::value, asn1ETC_AttributeTypeAndValue)),
              "0c 01 41");
    EXPECT_EQ((octets_by_table_step<ASN1T_AlgorithmIdentifier, ASN1C_AlgorithmIdentifier>(
                  unknown, &ASN1T_AlgorithmIdentifier::parameters, asn1ETC_AlgorithmIdentifier)),
              "0c 01 41");
}

TEST(CarriedValueContract, OfEachMemberIsWrittenByTheTableStepOfASet) {
    Decoded<ASN1T_Attribute, ASN1C_Attribute> decoded(
        sequence({from_hex("06 09 2a 86 48 86 f7 0d 01 09 04"), from_hex("31 07 04 01 aa 04 02 bb cc")}));
    ASSERT_EQ(decoded.status(), RT_OK);
    std::vector<Asn1TObject*> values;
    for (const _Asn1RTDListNode* node = decoded.record().values.head; node != nullptr; node = node->next) {
        values.push_back(static_cast<Asn1TObject*>(node->data));
        values.back()->numocts = 0;
    }
    ASSERT_EQ(values.size(), 2u);
    ASN1BEREncodeBuffer buffer;
    ASSERT_EQ(asn1ETC_Attribute(buffer.getCtxtPtr(), &decoded.record()), RT_OK);
    EXPECT_EQ(to_hex(values[0]->data, values[0]->numocts), "04 01 aa");
    EXPECT_EQ(to_hex(values[1]->data, values[1]->numocts), "04 02 bb cc");
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
