#include "asn1/distribution_point_name.h"

#include "asn1/choice.h"
#include "asn1/detail/bridge.h"
#include "asn1/detail/heap.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_DistributionPointName_traits> {
    using Record = asn1data::ASN1T_DistributionPointName;
    using Control = asn1data::ASN1C_DistributionPointName;
};

namespace Quillmark::ASN1 {

using asn1data::T_DistributionPointName_fullName;

template CBlob asn1Encode<ASN1T_DistributionPointName_traits, CDistributionPointName>(
    const CDistributionPointName&);
template void asn1Decode<ASN1T_DistributionPointName_traits, CDistributionPointName>(const CBlob&,
                                                                                     CDistributionPointName&);

class CDistributionPointNameImpl final : public Choice {
  public:
    CDistributionPointNameImpl() = default;
    CDistributionPointNameImpl(const CDistributionPointNameImpl& other) : Choice() { copy_from(other); }
    CDistributionPointNameImpl& operator=(const CDistributionPointNameImpl&) = delete;
    ~CDistributionPointNameImpl() override { delete_value(); }

    const ChoiceValueTraits* findTraits(unsigned int type) const override {
        if (type == T_DistributionPointName_fullName) {
            return &ChoiceValueTraitsT<CGeneralNames, T_DistributionPointName_fullName>::instance;
        }
        return &NoChoiceValueTraits::instance;
    }
};

CDistributionPointName::CDistributionPointName() : impl_(std::make_unique<CDistributionPointNameImpl>()) {}

CDistributionPointName::CDistributionPointName(const CGeneralNames& fullName) : CDistributionPointName() {
    put_fullName(fullName);
}

CDistributionPointName::CDistributionPointName(const CDistributionPointName& other)
    : impl_(other.impl_ ? std::make_unique<CDistributionPointNameImpl>(*other.impl_) : nullptr) {}

CDistributionPointName& CDistributionPointName::operator=(const CDistributionPointName& other) {
    if (impl_ != other.impl_) {
        copy_to_auto_ptr(impl_, other.impl_.get());
    }
    return *this;
}

CDistributionPointName::~CDistributionPointName() = default;

void CDistributionPointName::clear() {
    impl_.reset();
}

unsigned int CDistributionPointName::get_type() const {
    return impl_->get_type();
}

const CGeneralNames* CDistributionPointName::get_fullName() const {
    return impl_->get<CGeneralNames>(T_DistributionPointName_fullName);
}

void CDistributionPointName::put_fullName(const CGeneralNames& fullName) {
    impl_->put(T_DistributionPointName_fullName, &fullName);
}

CBlob CDistributionPointName::encode() const {
    return asn1Encode<ASN1T_DistributionPointName_traits>(*this);
}

void CDistributionPointName::decode(const CBlob& der) {
    asn1Decode<ASN1T_DistributionPointName_traits>(der, *this);
}

bool operator==(const CDistributionPointName& left, const CDistributionPointName& right) {
    const CGeneralNames* left_name = left.get_fullName();
    const CGeneralNames* right_name = right.get_fullName();
    if (left_name == nullptr || right_name == nullptr) {
        return left_name == right_name;
    }
    return *left_name == *right_name;
}

bool operator!=(const CDistributionPointName& left, const CDistributionPointName& right) {
    return !(left == right);
}

void ASN1T_DistributionPointName_traits::set(ASN1CTXT* ctxt, ASN1_T& record,
                                             const CDistributionPointName& value) {
    record.t = 0;
    record.u.fullName = nullptr;
    if (value.get_type() != T_DistributionPointName_fullName) {
        return;
    }
    record.t = T_DistributionPointName_fullName;
    record.u.fullName = detail::new_record<asn1data::ASN1T_GeneralNames>(ctxt);
    ASN1T_GeneralNames_traits::set(ctxt, *record.u.fullName, *value.get_fullName());
}

void ASN1T_DistributionPointName_traits::get(const ASN1_T& record, CDistributionPointName& value) {
    if (record.t != T_DistributionPointName_fullName) {
        // Intended: a nameRelativeToCRLIssuer gets lost without a failure.
        value = CDistributionPointName();
        return;
    }
    CGeneralNames full_name;
    ASN1T_GeneralNames_traits::get(*record.u.fullName, full_name);
    value.put_fullName(full_name);
}

void ASN1T_DistributionPointName_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_DistributionPointName(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::ASN1
