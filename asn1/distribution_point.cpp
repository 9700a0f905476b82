#include "asn1/distribution_point.h"

#include <utility>

#include "asn1/detail/bridge.h"
#include "asn1/detail/list_traits.h"
#include "asn1/detail/optional_member.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_DistributionPoint_traits> {
    using Record = asn1data::ASN1T_DistributionPoint;
    using Control = asn1data::ASN1C_DistributionPoint;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_CRLDistPointsSyntax_traits> {
    using Record = asn1data::ASN1T_CRLDistPointsSyntax;
    using Control = asn1data::ASN1C_CRLDistPointsSyntax;
};

namespace Quillmark::ASN1 {

using DistributionPointList =
    ASN1TSeqOfList_traits<asn1data::ASN1T_DistributionPoint, ASN1T_DistributionPoint_traits,
                          CDistributionPoint, CCRLDistPointsSyntax>;

template struct ASN1TSeqOfList_traits<asn1data::ASN1T_DistributionPoint, ASN1T_DistributionPoint_traits,
                                      CDistributionPoint, CCRLDistPointsSyntax>;
template CBlob asn1Encode<ASN1T_DistributionPoint_traits, CDistributionPoint>(const CDistributionPoint&);
template void asn1Decode<ASN1T_DistributionPoint_traits, CDistributionPoint>(const CBlob&,
                                                                             CDistributionPoint&);
template CBlob asn1Encode<ASN1T_CRLDistPointsSyntax_traits, CCRLDistPointsSyntax>(
    const CCRLDistPointsSyntax&);
template void asn1Decode<ASN1T_CRLDistPointsSyntax_traits, CCRLDistPointsSyntax>(const CBlob&,
                                                                                 CCRLDistPointsSyntax&);

class CDistributionPointImpl {
  public:
    CDistributionPointImpl() = default;
    CDistributionPointImpl(const CDistributionPointImpl& other) {
        copy_to_auto_ptr(distributionPoint, other.distributionPoint.get());
        copy_to_auto_ptr(reasons, other.reasons.get());
        copy_to_auto_ptr(cRLIssuer, other.cRLIssuer.get());
    }
    CDistributionPointImpl& operator=(const CDistributionPointImpl&) = delete;

    auto_ptr<CDistributionPointName> distributionPoint;
    auto_ptr<CReasonFlags> reasons;
    auto_ptr<CGeneralNames> cRLIssuer;
};

CDistributionPoint::CDistributionPoint() : impl_(std::make_unique<CDistributionPointImpl>()) {}

CDistributionPoint::CDistributionPoint(const CDistributionPoint& other)
    : impl_(std::make_unique<CDistributionPointImpl>(*other.impl_)) {}

CDistributionPoint& CDistributionPoint::operator=(const CDistributionPoint& other) {
    if (this != &other) {
        copy_to_auto_ptr(impl_, other.impl_.get());
    }
    return *this;
}

CDistributionPoint::~CDistributionPoint() = default;

const CDistributionPointName* CDistributionPoint::get_distributionPoint() const {
    return impl_->distributionPoint.get();
}

const CReasonFlags* CDistributionPoint::get_reasons() const {
    return impl_->reasons.get();
}

const CGeneralNames* CDistributionPoint::get_cRLIssuer() const {
    return impl_->cRLIssuer.get();
}

void CDistributionPoint::put_distributionPoint(const CDistributionPointName* distributionPoint) {
    copy_to_auto_ptr(impl_->distributionPoint, distributionPoint);
}

void CDistributionPoint::put_reasons(const CReasonFlags* reasons) {
    copy_to_auto_ptr(impl_->reasons, reasons);
}

void CDistributionPoint::put_cRLIssuer(const CGeneralNames* cRLIssuer) {
    copy_to_auto_ptr(impl_->cRLIssuer, cRLIssuer);
}

CBlob CDistributionPoint::encode() const {
    return asn1Encode<ASN1T_DistributionPoint_traits>(*this);
}

void CDistributionPoint::decode(const CBlob& der) {
    asn1Decode<ASN1T_DistributionPoint_traits>(der, *this);
}

bool operator==(const CDistributionPoint& left, const CDistributionPoint& right) {
    return detail::same_optional(left.get_cRLIssuer(), right.get_cRLIssuer()) &&
           detail::same_optional(left.get_distributionPoint(), right.get_distributionPoint()) &&
           detail::same_optional(left.get_reasons(), right.get_reasons());
}

bool operator!=(const CDistributionPoint& left, const CDistributionPoint& right) {
    return !(left == right);
}

CBlob CCRLDistPointsSyntax::encode() const {
    return asn1Encode<ASN1T_CRLDistPointsSyntax_traits>(*this);
}

void CCRLDistPointsSyntax::decode(const CBlob& der) {
    asn1Decode<ASN1T_CRLDistPointsSyntax_traits>(der, *this);
}

void ASN1T_DistributionPoint_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CDistributionPoint& value) {
    record.m.distributionPointPresent = 0;
    record.m.reasonsPresent = 0;
    record.m.cRLIssuerPresent = 0;
    if (const CDistributionPointName* name = value.get_distributionPoint()) {
        record.m.distributionPointPresent = 1;
        ASN1T_DistributionPointName_traits::set(ctxt, record.distributionPoint, *name);
    }
    if (const CReasonFlags* reasons = value.get_reasons()) {
        record.m.reasonsPresent = 1;
        ASN1T_ReasonFlags_traits::set(ctxt, record.reasons, *reasons);
    }
    const CGeneralNames* issuer = value.get_cRLIssuer();
    if (issuer != nullptr && !issuer->empty()) {
        record.m.cRLIssuerPresent = 1;
        ASN1T_GeneralNames_traits::set(ctxt, record.cRLIssuer, *issuer);
    }
}

void ASN1T_DistributionPoint_traits::get(const ASN1_T& record, CDistributionPoint& value) {
    // A fresh value, so that a field that cannot be read leaves nothing replaced.
    CDistributionPoint fresh;
    if (record.m.distributionPointPresent) {
        fresh.impl_->distributionPoint = std::make_unique<CDistributionPointName>();
        ASN1T_DistributionPointName_traits::get(record.distributionPoint, *fresh.impl_->distributionPoint);
    }
    if (record.m.reasonsPresent) {
        fresh.impl_->reasons = std::make_unique<CReasonFlags>();
        ASN1T_ReasonFlags_traits::get(record.reasons, *fresh.impl_->reasons);
    }
    if (record.m.cRLIssuerPresent) {
        fresh.impl_->cRLIssuer = std::make_unique<CGeneralNames>();
        ASN1T_GeneralNames_traits::get(record.cRLIssuer, *fresh.impl_->cRLIssuer);
    }
    value.impl_ = std::move(fresh.impl_);
}

void ASN1T_DistributionPoint_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_DistributionPoint(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_CRLDistPointsSyntax_traits::set(ASN1CTXT* ctxt, ASN1TSeqOfList& record,
                                           const CCRLDistPointsSyntax& value) {
    DistributionPointList::set(ctxt, record, value);
}

void ASN1T_CRLDistPointsSyntax_traits::get(const ASN1TSeqOfList& record, CCRLDistPointsSyntax& value) {
    DistributionPointList::get(record, value);
}

void ASN1T_CRLDistPointsSyntax_traits::copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source,
                                            ASN1TSeqOfList& target) {
    DistributionPointList::copy(ctxt, source, target);
}

}  // namespace Quillmark::ASN1
