// Laws that every type of the catalogue obeys, over values of each of them.

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "runtime/context.h"
#include "runtime/message_buffer.h"
#include "tests/asn1data/record_codec.h"
#include "tests/asn1data/type_vectors.h"
#include "tests/support/codec_heap.h"
#include "tests/support/hex.h"

using namespace asn1data;

namespace Quillmark::test {
namespace {

using Octets = std::vector<std::uint8_t>;

/// What the tests do with a value of a type.
struct TypeOperations {
    Octets (*round_trip)(const Octets& der);
    Octets (*copied)(const Octets& der);
    Octets (*copied_by_control)(const Octets& der);
    int (*decode_and_free)(const Octets& ber);
    bool (*survives_failing_allocation)(const Octets& der, std::size_t n);
};

template <typename Record, typename Control, void (*Copy)(ASN1CTXT*, Record*, Record*),
          void (*Free)(ASN1CTXT*, Record*)>
struct Operations {
    static Octets round_trip(const Octets& der) {
        Decoded<Record, Control> decoded(der);
        EXPECT_EQ(decoded.status(), RT_OK);
        return encode<Control>(decoded.record()).octets;
    }

    static Octets copied(const Octets& der) {
        ASN1BEREncodeBuffer other;
        Record copy{};
        {
            Decoded<Record, Control> decoded(der);
            Copy(other.getCtxtPtr(), &decoded.record(), &copy);
            Copy(other.getCtxtPtr(), &copy, &copy);
        }
        const Octets octets = encode<Control>(copy).octets;
        Free(other.getCtxtPtr(), &copy);
        return octets;
    }

    static Octets copied_by_control(const Octets& der) {
        ASN1BERDecodeBuffer buffer(der.data(), static_cast<int>(der.size()));
        Record record{};
        Control control(buffer, record);
        EXPECT_EQ(control.Decode(), RT_OK);
        Record copy{};
        EXPECT_EQ(control.getCopy(&copy), &copy);
        EXPECT_EQ(control.getCopy(&record), &record);
        return encode<Control>(copy).octets;
    }

    static int decode_and_free(const Octets& ber) {
        Decoded<Record, Control> decoded(ber);
        Free(decoded.context(), &decoded.record());
        return decoded.status();
    }

    /// Whether the allocation with number `n` was refused on the way through decoder, copy and encoder.
    static bool survives_failing_allocation(const Octets& der, std::size_t n) {
        CodecHeap heap;
        heap.fail_after(n);
        try {
            Decoded<Record, Control> decoded(der);
            if (decoded.status() == RT_OK) {
                Record copy{};
                ASN1BEREncodeBuffer other;
                Copy(other.getCtxtPtr(), &decoded.record(), &copy);
                encode<Control>(copy);
            }
        } catch (const std::bad_alloc&) {
        } catch (const ASN1MessageBuffer::RTLError&) {
        }
        EXPECT_EQ(heap.live_blocks(), 0u);
        return heap.failed();
    }
};

/// A NULL has no record.
struct NullOperations {
    static Octets round_trip(const Octets& der) {
        ASN1BERDecodeBuffer in(der.data(), static_cast<int>(der.size()));
        EXPECT_EQ(ASN1C_NULLParams_(in, nullptr).Decode(), RT_OK);
        ASN1BEREncodeBuffer out;
        const int length = ASN1C_NULLParams_(out, nullptr).Encode();
        return Octets(out.getMsgPtr(), out.getMsgPtr() + length);
    }
    static int decode_and_free(const Octets& ber) {
        ASN1BERDecodeBuffer in(ber.data(), static_cast<int>(ber.size()));
        const int status = ASN1C_NULLParams_(in, nullptr).Decode();
        asn1Free_NULLParams_(in.getCtxtPtr(), nullptr);
        return status;
    }
    static bool survives_failing_allocation(const Octets& /*der*/, std::size_t /*n*/) { return false; }
};

template <typename One>
constexpr TypeOperations operations_of() {
    return {One::round_trip, One::copied, One::copied_by_control, One::decode_and_free,
            One::survives_failing_allocation};
}

#define QUILLMARK_TYPE(name) \
    { #name, operations_of < Operations < ASN1T_##name, ASN1C_##name, asn1Copy_##name, asn1Free_##name>>() }

const std::map<std::string, TypeOperations> kTypes = {
    {"NULLParams_",
     {NullOperations::round_trip, NullOperations::round_trip, NullOperations::round_trip,
      NullOperations::decode_and_free, NullOperations::survives_failing_allocation}},
    QUILLMARK_TYPE(_gost2001DHPubKey_Type),
    QUILLMARK_TYPE(_gost2001PubKey_Type),
    QUILLMARK_TYPE(_gost2012_256_PubKey_Type),
    QUILLMARK_TYPE(_gost2012_512_PubKey_Type),
    QUILLMARK_TYPE(_gost94WithGostR34102001Sign_Type),
    QUILLMARK_TYPE(_gostR341194DigestParams_Type),
    QUILLMARK_TYPE(_pbeGost28147And3411_Type),
    QUILLMARK_TYPE(_SeqOfAttribute),
    QUILLMARK_TYPE(_SeqOfESSCertIDv2),
    QUILLMARK_TYPE(_SeqOfPolicyInformation),
    QUILLMARK_TYPE(Accuracy),
    QUILLMARK_TYPE(AdministrationDomainName),
    QUILLMARK_TYPE(AlgorithmIdentifier),
    QUILLMARK_TYPE(AttCertValidityPeriod),
    QUILLMARK_TYPE(Attribute),
    QUILLMARK_TYPE(Attribute_values),
    QUILLMARK_TYPE(AttributeCertificate),
    QUILLMARK_TYPE(AttributeCertificateInfo),
    QUILLMARK_TYPE(AttributeCertificateInfo_subject),
    QUILLMARK_TYPE(AttributeRaw),
    QUILLMARK_TYPE(AttributeRaw_valuesRaw),
    QUILLMARK_TYPE(AttributesRaw),
    QUILLMARK_TYPE(AttributeType),
    QUILLMARK_TYPE(AttributeTypeAndValue),
    QUILLMARK_TYPE(BuiltInDomainDefinedAttribute),
    QUILLMARK_TYPE(BuiltInDomainDefinedAttributes),
    QUILLMARK_TYPE(BuiltInStandardAttributes),
    QUILLMARK_TYPE(Certificate),
    QUILLMARK_TYPE(CertificateChoicesRaw),
    QUILLMARK_TYPE(CertificateSerialNumber),
    QUILLMARK_TYPE(CertificateSetRaw),
    QUILLMARK_TYPE(CertPolicyId),
    QUILLMARK_TYPE(CMSVersion),
    QUILLMARK_TYPE(ContentInfo),
    QUILLMARK_TYPE(ContentType),
    QUILLMARK_TYPE(CountryName),
    QUILLMARK_TYPE(DigestAlgorithmIdentifier),
    QUILLMARK_TYPE(DigestAlgorithmIdentifiers),
    QUILLMARK_TYPE(DomainParameters),
    QUILLMARK_TYPE(Dss_Parms),
    QUILLMARK_TYPE(EDIPartyName),
    QUILLMARK_TYPE(EDIPartyName_nameAssigner),
    QUILLMARK_TYPE(EDIPartyName_partyName),
    QUILLMARK_TYPE(EncapsulatedContentInfo),
    QUILLMARK_TYPE(ENCRYPTED_HASH),
    QUILLMARK_TYPE(ESSCertIDv2),
    QUILLMARK_TYPE(ExtendedCertificate),
    QUILLMARK_TYPE(ExtendedCertificateInfo),
    QUILLMARK_TYPE(Extension),
    QUILLMARK_TYPE(ExtensionAttribute),
    QUILLMARK_TYPE(ExtensionAttributes),
    QUILLMARK_TYPE(Extensions),
    QUILLMARK_TYPE(GeneralName),
    QUILLMARK_TYPE(GeneralName_otherName),
    QUILLMARK_TYPE(GeneralNames),
    QUILLMARK_TYPE(Gost28147_89_IV),
    QUILLMARK_TYPE(Gost28147_89_Parameters),
    QUILLMARK_TYPE(Gost28147_89_ParamSet),
    QUILLMARK_TYPE(Gost3412_15_Encryption_Parameters),
    QUILLMARK_TYPE(GostR3410_2001_PublicKeyParameters),
    QUILLMARK_TYPE(GostR3410_2012_PublicKeyParameters),
    QUILLMARK_TYPE(GostR3411_94_DigestParameters),
    QUILLMARK_TYPE(IssuerAndSerialNumber),
    QUILLMARK_TYPE(IssuerSerial),
    QUILLMARK_TYPE(KeyIdentifier),
    QUILLMARK_TYPE(MessageImprint),
    QUILLMARK_TYPE(Name),
    QUILLMARK_TYPE(NetworkAddress),
    QUILLMARK_TYPE(NumericUserIdentifier),
    QUILLMARK_TYPE(ORAddress),
    QUILLMARK_TYPE(OrganizationalUnitName),
    QUILLMARK_TYPE(OrganizationalUnitNames),
    QUILLMARK_TYPE(OrganizationName),
    QUILLMARK_TYPE(OtherRevocationInfoFormat),
    QUILLMARK_TYPE(PBEQuillmarkGostParameters),
    QUILLMARK_TYPE(PBEQuillmarkGostParameters_iv),
    QUILLMARK_TYPE(PBEQuillmarkGostParameters_salt),
    QUILLMARK_TYPE(PersonalName),
    QUILLMARK_TYPE(PKIFailureInfo),
    QUILLMARK_TYPE(PKIFreeText),
    QUILLMARK_TYPE(PKIStatus),
    QUILLMARK_TYPE(PKIStatusInfo),
    QUILLMARK_TYPE(PolicyInformation),
    QUILLMARK_TYPE(PolicyInformation_policyQualifiers),
    QUILLMARK_TYPE(PolicyQualifierInfo),
    QUILLMARK_TYPE(PrivateDomainName),
    QUILLMARK_TYPE(RDNSequence),
    QUILLMARK_TYPE(RelativeDistinguishedName),
    QUILLMARK_TYPE(RevocationInfoChoice),
    QUILLMARK_TYPE(RevocationInfoChoices),
    QUILLMARK_TYPE(Signature),
    QUILLMARK_TYPE(SignatureAlgorithmIdentifier),
    QUILLMARK_TYPE(SignatureValue),
    QUILLMARK_TYPE(SignedData),
    QUILLMARK_TYPE(SignedOpenType),
    QUILLMARK_TYPE(SignerIdentifier),
    QUILLMARK_TYPE(SignerInfo),
    QUILLMARK_TYPE(SignerInfos),
    QUILLMARK_TYPE(SigningCertificateV2),
    QUILLMARK_TYPE(SubjectKeyIdentifier),
    QUILLMARK_TYPE(SubjectPublicKeyInfo),
    QUILLMARK_TYPE(TBSCertificate),
    QUILLMARK_TYPE(TerminalIdentifier),
    QUILLMARK_TYPE(Time),
    QUILLMARK_TYPE(TimeStampReq),
    QUILLMARK_TYPE(TimeStampReq_version),
    QUILLMARK_TYPE(TimeStampResp),
    QUILLMARK_TYPE(TimeStampRespRaw),
    QUILLMARK_TYPE(TimeStampToken),
    QUILLMARK_TYPE(TSAPolicyId),
    QUILLMARK_TYPE(TSTInfo),
    QUILLMARK_TYPE(TSTInfo_version),
    QUILLMARK_TYPE(TSTInfoRaw),
    QUILLMARK_TYPE(TSTInfoRaw_version),
    QUILLMARK_TYPE(UnauthAttributes),
    QUILLMARK_TYPE(UniqueIdentifier),
    QUILLMARK_TYPE(ValidationParms),
    QUILLMARK_TYPE(Validity),
    QUILLMARK_TYPE(Version),
    QUILLMARK_TYPE(X121Address),
};

#undef QUILLMARK_TYPE

const std::vector<TypeVector>& vectors() {
    static const std::vector<TypeVector> rows = load_type_vectors(QUILLMARK_TEST_DATA "/asn1data/types.txt");
    return rows;
}

class EveryType : public testing::TestWithParam<TypeVector> {
  protected:
    const TypeOperations& type() const { return kTypes.at(GetParam().type); }
    const Octets& der() const { return GetParam().der; }
};

TEST_P(EveryType, ComesBackFromDecodingAsItWas) {
    EXPECT_EQ(to_hex(type().round_trip(der())), to_hex(der()));
}

TEST_P(EveryType, IsCopiedToAnotherContext) {
    EXPECT_EQ(to_hex(type().copied(der())), to_hex(der()));
}

TEST_P(EveryType, IsCopiedByItsControlClass) {
    EXPECT_EQ(to_hex(type().copied_by_control(der())), to_hex(der()));
}

TEST_P(EveryType, IsDecodedSafelyWhereverItIsCut) {
    for (std::size_t size = 0; size < der().size(); ++size) {
        type().decode_and_free(Octets(der().begin(), der().begin() + static_cast<std::ptrdiff_t>(size)));
    }
}

TEST_P(EveryType, IsDecodedSafelyWhateverOctetIsChanged) {
    for (std::size_t i = 0; i < der().size(); ++i) {
        for (const std::uint8_t value : {0x00, 0x01, 0x7F, 0x80, 0x84, 0xFF}) {
            Octets changed = der();
            changed[i] = value;
            type().decode_and_free(changed);
        }
    }
}

TEST_P(EveryType, LeavesNothingBehindWhateverAllocationFails) {
    for (std::size_t n = 0; type().survives_failing_allocation(der(), n); ++n) {
    }
}

std::string row_name(const testing::TestParamInfo<TypeVector>& row) {
    return row.param.type + "_" + row.param.name;
}

INSTANTIATE_TEST_SUITE_P(Types, EveryType, testing::ValuesIn(vectors()), row_name);

TEST(TypeVectors, HoldAValueOfEveryType) {
    std::set<std::string> seen;
    for (const TypeVector& row : vectors()) {
        seen.insert(row.type);
    }
    for (const auto& [name, operations] : kTypes) {
        EXPECT_TRUE(seen.contains(name)) << name;
    }
}

}  // namespace
}  // namespace Quillmark::test
