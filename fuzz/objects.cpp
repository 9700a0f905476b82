// The classes of the object layer; the first two octets choose one. `decode` takes the octets or throws a
// code that its header names. What was decoded can be encoded, but for the stated exceptions; that encoding
// is decoded to an object which encodes to the same octets; and so do a copy and an assigned object.

#include "asn1/access_description.h"
#include "asn1/algorithm_identifier.h"
#include "asn1/attribute.h"
#include "asn1/big_integer.h"
#include "asn1/certificate.h"
#include "asn1/content_info.h"
#include "asn1/distribution_point.h"
#include "asn1/distribution_point_name.h"
#include "asn1/extension.h"
#include "asn1/extension_value.h"
#include "asn1/general_name.h"
#include "asn1/info_type_and_value.h"
#include "asn1/name.h"
#include "asn1/pki_status.h"
#include "asn1/policy_information.h"
#include "asn1/reason_flags.h"
#include "asn1/revocation_announcement.h"
#include "asn1/signer_info.h"
#include "asn1/signing_certificate.h"
#include "fuzz/ber_form.h"
#include "fuzz/input.h"
#include "fuzz/target.h"

namespace Quillmark::fuzz {

namespace {

using namespace ASN1;

constexpr Codes kDecode = {CRYPT_E_ASN1_INTERNAL, E_INVALIDARG};
/// The classes that hold a time or a text convert it too.
constexpr Codes kDecodeTime = {CRYPT_E_ASN1_INTERNAL, E_INVALIDARG, E_FAIL,
                               HRESULT_FROM_WIN32(ERROR_INVALID_TIME)};
constexpr Codes kDecodeText = {CRYPT_E_ASN1_INTERNAL, E_INVALIDARG, CRYPT_E_ASN1_UTF8};
constexpr Codes kEncode = {CRYPT_E_ASN1_INTERNAL, E_INVALIDARG};

template <class Value>
void check_equal_encoding(const Value& value, const CBlob& expected, const char* law) {
    must(law, [&] { require(value.encode() == expected, law); });
}

template <class Value>
void check_copies(const Value& value, const CBlob& encoding) {
    const Value copy(value);
    check_equal_encoding(copy, encoding, "a copy encodes as its source");
    Value assigned;
    assigned = value;
    check_equal_encoding(assigned, encoding, "an assigned object encodes as its source");
    assigned = *&assigned;
    check_equal_encoding(assigned, encoding, "an object assigned to itself encodes as before");
}

template <class Value>
bool has_encoding(const Value& /*value*/) {
    return true;
}
/// Intended: a nameRelativeToCRLIssuer leaves a name of no form.
bool has_encoding(const CDistributionPointName& name) {
    return name.get_type() != 0;
}

/// A value that encodes as it was encoded before.
template <class Value, const Codes& kThrown = kDecode>
void check_value(const CBlob& der) {
    Value value;
    const bool taken = attempt("decode", kThrown, [&] { value.decode(der); }) == S_OK && is_whole(view(der));
    CBlob first;
    if (attempt("encode", kEncode, [&] { first = value.encode(); }) != S_OK) {
        require(!taken || !has_encoding(value), "what was decoded can be encoded");
        return;
    }
    check_copies(value, first);
    if (!taken) {
        return;
    }
    Value again;
    must("decoding what was encoded", [&] { again.decode(first); });
    check_equal_encoding(again, first, "what was encoded is encoded as before");
}

/// A value that is not written as it was read, by intention: it can be written and read again.
template <class Value, const Codes& kThrown = kDecode>
void check_changing_value(const CBlob& der) {
    Value value;
    attempt("decode", kThrown, [&] { value.decode(der); });
    CBlob first;
    if (attempt("encode", kEncode, [&] { first = value.encode(); }) == S_OK) {
        check_copies(value, first);
        Value again;
        attempt("decoding what was encoded", kThrown, [&] { again.decode(first); });
    }
}

/// Encodes what was read from `der`, and once more what is read from that.
template <class Value>
void check_typed_encoding(Value& value) {
    must("encode", [&] { value.encode(); });
    const CBlob first = value.get_value();
    must("decoding what was encoded", [&] {
        Value again(first);
        again.encode();
        require(again.get_value() == first, "what was encoded is encoded as before");
    });
    const Value copy(value);
    require(copy.get_value() == first, "a copy has the octets of its source");
}

/// A value that keeps its own octets.
template <class Value, const Codes& kThrown = kDecode>
void check_typed_value(const CBlob& der) {
    attempt("construction", kThrown, [&] {
        Value value(der);
        require(value.get_value() == der, "the octets are those given");
        if (is_whole(view(der))) {
            check_typed_encoding(value);
        }
    });
}

/// Intended: these have the octets of what they read instead of those given.
template <class Value, const Codes& kThrown = kDecode>
void check_rewriting_value(const CBlob& der) {
    attempt("construction", kThrown, [&] {
        Value value(der);
        if (is_whole(view(der))) {
            check_typed_encoding(value);
        }
    });
}

void check_signer(const CBlob& der) {
    CSignerInfo signer;
    if (attempt("decode", kDecode, [&] { signer.decode(der); }) == S_OK) {
        const CSignerInfo copy(signer);
        require(copy == signer, "a copy equals its source");
    }
}

void check_character_string(const CBlob& der) {
    CWStringProxy text(L"");
    if (attempt("decodeCharString", kDecode, [&] { text = decodeCharString(der); }) != S_OK) {
        return;
    }
    CBlob written;
    must("encodeCharString", [&] { written = encodeCharString(text.c_str(), StringTypeUTF8); });
    must("decodeCharString", [&] {
        require(std::wstring(decodeCharString(written).c_str()) == text.c_str(),
                "text is read as it was written");
    });
}

void check_octet_string(const CBlob& der) {
    CBlob octets;
    if (attempt("fromOctetString", kDecode, [&] { octets = fromOctetString(der); }) == S_OK) {
        must("toOctetString", [&] {
            require(fromOctetString(toOctetString(octets)) == octets, "octets are read as they were written");
        });
    }
}

struct Row {
    const char* name;
    void (*check)(const CBlob& der);
};

constexpr Row kRows[] = {
    {"CAlgorithmIdentifier", check_value<CAlgorithmIdentifier>},
    {"CExtension", check_value<CExtension>},
    {"CExtensions", check_value<CExtensions>},
    {"CAttribute", check_value<CAttribute>},
    {"CAttributes", check_value<CAttributes>},
    {"CContentInfo", check_value<CContentInfo>},
    {"CBigInteger", check_value<CBigInteger>},
    {"CGeneralName", check_value<CGeneralName>},
    {"CGeneralNames", check_value<CGeneralNames>},
    {"CAttributeTypeAndValue", check_value<CAttributeTypeAndValue>},
    {"CRelativeDistinguishedName", check_value<CRelativeDistinguishedName>},
    {"CName", check_value<CName>},
    {"CPKIFailureInfo", check_value<CPKIFailureInfo>},
    // Intended: a language tag stays in the text that is read, and another is written before it.
    {"CPKIStatusInfo", check_changing_value<CPKIStatusInfo, kDecodeText>},
    {"CReasonFlags", check_value<CReasonFlags>},
    {"CTimeChoice", check_value<CTimeChoice, kDecodeTime>},
    {"CCertificateValue", check_value<CCertificateValue>},
    {"CCertificateValues", check_value<CCertificateValues>},
    {"CPolicyInformation", check_value<CPolicyInformation>},
    {"CPolicyInformationList", check_value<CPolicyInformationList>},
    {"CInfoTypeAndValue", check_value<CInfoTypeAndValue>},
    {"CInfoTypeAndValueList", check_value<CInfoTypeAndValueList>},
    {"CIssuerSerial", check_value<CIssuerSerial>},
    {"CESSCertID", check_value<CESSCertID>},
    {"CESSCertIDv2", check_value<CESSCertIDv2>},
    {"COtherCertID", check_value<COtherCertID>},
    {"COtherHashAlgAndValue", check_value<COtherHashAlgAndValue>},
    {"COtherHash", check_value<COtherHash>},
    {"CCertId", check_value<CCertId>},
    {"CRevAnnContent", check_value<CRevAnnContent, kDecodeTime>},
    {"CAuthorityInfoAccessSyntax", check_value<CAuthorityInfoAccessSyntax>},
    {"CDistributionPointName", check_value<CDistributionPointName>},
    {"CCRLDistPointsSyntax", check_value<CCRLDistPointsSyntax>},
    {"CAttrContentType", check_typed_value<CAttrContentType>},
    {"CAttrMessageDigest", check_typed_value<CAttrMessageDigest>},
    {"CAttrSigningTime", check_typed_value<CAttrSigningTime, kDecodeTime>},
    {"CExtCRLReason", check_typed_value<CExtCRLReason>},
    {"CExtHoldInstructionCode", check_typed_value<CExtHoldInstructionCode>},
    {"CExtInvalidityDate", check_typed_value<CExtInvalidityDate, kDecodeTime>},
    {"CExtCertificateIssuer", check_typed_value<CExtCertificateIssuer>},
    {"CExtPrivateKeyUsagePeriod", check_rewriting_value<CExtPrivateKeyUsagePeriod, kDecodeTime>},
    {"CAttrSigningCertificate", check_rewriting_value<CAttrSigningCertificate>},
    {"CAttrSigningCertificateV2", check_rewriting_value<CAttrSigningCertificateV2>},
    {"CAttrOtherSigningCertificate", check_rewriting_value<CAttrOtherSigningCertificate>},
    {"CSignerInfo", check_signer},
    {"CharacterString", check_character_string},
    {"OctetString", check_octet_string},
};

}  // namespace

std::vector<std::string> object_choices() {
    std::vector<std::string> names;
    for (const Row& row : kRows) {
        names.emplace_back(row.name);
    }
    return names;
}

void check_objects(Octets octets) {
    Input input(octets);
    const Row& row = kRows[input.choice(std::size(kRows))];
    row.check(blob_of(input.rest()));
}

}  // namespace Quillmark::fuzz
