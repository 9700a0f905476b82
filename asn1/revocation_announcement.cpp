#include "asn1/revocation_announcement.h"

#include "asn1/detail/bridge.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_CertId_traits> {
    using Record = asn1data::ASN1T_CertId;
    using Control = asn1data::ASN1C_CertId;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_RevAnnContent_traits> {
    using Record = asn1data::ASN1T_RevAnnContent;
    using Control = asn1data::ASN1C_RevAnnContent;
};

namespace Quillmark::ASN1 {

template CBlob asn1Encode<ASN1T_CertId_traits, CCertId>(const CCertId&);
template void asn1Decode<ASN1T_CertId_traits, CCertId>(const CBlob&, CCertId&);
template CBlob asn1Encode<ASN1T_RevAnnContent_traits, CRevAnnContent>(const CRevAnnContent&);
template void asn1Decode<ASN1T_RevAnnContent_traits, CRevAnnContent>(const CBlob&, CRevAnnContent&);

struct CRevAnnContent::Impl {
    PKIStatusEnum status = PKIStatus_granted;
    CCertId certId;
    CDateTime willBeRevokedAt{0L, 0};
    CDateTime badSinceDate{0L, 0};
    auto_ptr<CExtensions> crlDetails;

    Impl() = default;
    Impl(const Impl& other)
        : status(other.status),
          certId(other.certId),
          willBeRevokedAt(other.willBeRevokedAt),
          badSinceDate(other.badSinceDate) {
        copy_to_auto_ptr(crlDetails, other.crlDetails.get());
    }
};

CCertId::CCertId(const CGeneralName& issuer, const CBigInteger& serialNumber)
    : issuer_(issuer), serialNumber_(serialNumber) {}

void CCertId::put_issuer(const CGeneralName& issuer) {
    issuer_ = issuer;
}

void CCertId::put_serialNumber(const CBigInteger& serialNumber) {
    serialNumber_ = serialNumber;
}

CBlob CCertId::encode() const {
    return asn1Encode<ASN1T_CertId_traits>(*this);
}

void CCertId::decode(const CBlob& der) {
    asn1Decode<ASN1T_CertId_traits>(der, *this);
}

CRevAnnContent::CRevAnnContent() : impl_(std::make_unique<Impl>()) {}

CRevAnnContent::CRevAnnContent(const PKIStatusEnum& status, const CCertId& certId,
                               const CDateTime& willBeRevokedAt, const CDateTime& badSinceDate)
    : CRevAnnContent() {
    impl_->status = status;
    impl_->certId = certId;
    impl_->willBeRevokedAt = willBeRevokedAt;
    impl_->badSinceDate = badSinceDate;
}

CRevAnnContent::CRevAnnContent(const CRevAnnContent& other) : impl_(std::make_unique<Impl>(*other.impl_)) {}

CRevAnnContent& CRevAnnContent::operator=(const CRevAnnContent& other) {
    if (this != &other) {
        copy_to_auto_ptr(impl_, other.impl_.get());
    }
    return *this;
}

CRevAnnContent::~CRevAnnContent() = default;

PKIStatusEnum CRevAnnContent::get_status() const {
    return impl_->status;
}

const CCertId& CRevAnnContent::get_certId() const {
    return impl_->certId;
}

const CDateTime& CRevAnnContent::get_willBeRevokedAt() const {
    return impl_->willBeRevokedAt;
}

const CDateTime& CRevAnnContent::get_badSinceDate() const {
    return impl_->badSinceDate;
}

const CExtensions* CRevAnnContent::get_crlDetails() const {
    return impl_->crlDetails.get();
}

void CRevAnnContent::put_status(PKIStatusEnum status) {
    impl_->status = status;
}

void CRevAnnContent::put_certId(const CCertId& certId) {
    impl_->certId = certId;
}

void CRevAnnContent::put_willBeRevokedAt(const CDateTime& willBeRevokedAt) {
    impl_->willBeRevokedAt = willBeRevokedAt;
}

void CRevAnnContent::put_badSinceDate(const CDateTime& badSinceDate) {
    impl_->badSinceDate = badSinceDate;
}

void CRevAnnContent::put_crlDetails(const CExtensions* crlDetails) {
    copy_to_auto_ptr(impl_->crlDetails, crlDetails);
}

CBlob CRevAnnContent::encode() const {
    return asn1Encode<ASN1T_RevAnnContent_traits>(*this);
}

void CRevAnnContent::decode(const CBlob& der) {
    asn1Decode<ASN1T_RevAnnContent_traits>(der, *this);
}

void ASN1T_CertId_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CCertId& value) {
    ASN1T_GeneralName_traits::set(ctxt, record.issuer, value.get_issuer());
    record.serialNumber = BigIntegerToASN1String(ctxt, value.get_serialNumber());
}

void ASN1T_CertId_traits::get(const ASN1_T& record, CCertId& value) {
    CGeneralName issuer;
    ASN1T_GeneralName_traits::get(record.issuer, issuer);
    CBigInteger serial_number;
    ASN1StringToBigInteger(record.serialNumber, serial_number);
    value.put_issuer(issuer);
    value.put_serialNumber(serial_number);
}

void ASN1T_CertId_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_CertId(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_RevAnnContent_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CRevAnnContent& value) {
    record.m.crlDetailsPresent = 0;
    record.status = value.get_status();
    ASN1T_CertId_traits::set(ctxt, record.certId, value.get_certId());
    ASN1GeneralizedTime_traits::set(ctxt, record.willBeRevokedAt, value.get_willBeRevokedAt());
    ASN1GeneralizedTime_traits::set(ctxt, record.badSinceDate, value.get_badSinceDate());
    const CExtensions* details = value.get_crlDetails();
    if (details != nullptr && !details->empty()) {
        record.m.crlDetailsPresent = 1;
        ASN1T_Extensions_traits::set(ctxt, record.crlDetails, *details);
    }
}

void ASN1T_RevAnnContent_traits::get(const ASN1_T& record, CRevAnnContent& value) {
    value.put_status(static_cast<PKIStatusEnum>(record.status));
    CCertId cert_id;
    ASN1T_CertId_traits::get(record.certId, cert_id);
    value.put_certId(cert_id);
    CDateTime time(0L, 0);
    ASN1GeneralizedTime_traits::get(record.willBeRevokedAt, time);
    value.put_willBeRevokedAt(time);
    ASN1GeneralizedTime_traits::get(record.badSinceDate, time);
    value.put_badSinceDate(time);
    if (!record.m.crlDetailsPresent) {
        value.put_crlDetails(nullptr);
        return;
    }
    CExtensions details;
    ASN1T_Extensions_traits::get(record.crlDetails, details);
    value.put_crlDetails(&details);
}

void ASN1T_RevAnnContent_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_RevAnnContent(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::ASN1
