#include "asn1/signer_info.h"

#include "asn1/detail/bridge.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_SignerInfo_traits> {
    using Record = asn1data::ASN1T_SignerInfo;
    using Control = asn1data::ASN1C_SignerInfo;
};

namespace Quillmark::ASN1 {

template void asn1Decode<ASN1T_SignerInfo_traits, CSignerInfo>(const CBlob&, CSignerInfo&);

void CSignerInfo::decode(const CBlob& der) {
    asn1Decode<ASN1T_SignerInfo_traits>(der, *this);
}

bool operator==(const CSignerInfo& left, const CSignerInfo& right) {
    return left.get_version() == right.get_version() &&
           left.get_digestAlgorithm() == right.get_digestAlgorithm() &&
           left.get_issuer() == right.get_issuer() && left.get_serialNumber() == right.get_serialNumber() &&
           left.get_signature() == right.get_signature() &&
           left.get_signatureAlgorithm() == right.get_signatureAlgorithm();
}

bool operator!=(const CSignerInfo& left, const CSignerInfo& right) {
    return !(left == right);
}

void ASN1T_SignerInfo_get(CSignerInfo& value, const asn1data::ASN1T_SignerInfo& record) {
    ASN1T_SignerInfo_traits::get(record, value);
}

void ASN1T_SignerInfo_traits::get(const ASN1_T& record, CSignerInfo& value) {
    value.version_ = static_cast<unsigned int>(record.version);
    ASN1T_AlgorithmIdentifier_get(value.digestAlgorithm_, record.digestAlgorithm);
    ASN1T_AlgorithmIdentifier_get(value.signatureAlgorithm_, record.signatureAlgorithm);
    value.signature_.assign(record.signature.data, record.signature.numocts);
    if (record.sid.t != asn1data::T_SignerIdentifier_issuerAndSerialNumber) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    const asn1data::ASN1T_IssuerAndSerialNumber& signer = *record.sid.u.issuerAndSerialNumber;
    ASN1StringToBigInteger(signer.serialNumber, value.serialNumber_);
    value.issuer_.assign(signer.issuer.data, signer.issuer.numocts);
}

void ASN1T_SignerInfo_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_SignerInfo(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::ASN1
