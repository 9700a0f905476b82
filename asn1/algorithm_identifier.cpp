#include "asn1/algorithm_identifier.h"

#include <cstring>
#include <utility>

#include "asn1/detail/bridge.h"
#include "asn1/detail/check.h"
#include "asn1/detail/heap.h"
#include "asn1/detail/oid_text.h"
#include "asn1/detail/table_constraint.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_AlgorithmIdentifier_traits> {
    using Record = asn1data::ASN1T_AlgorithmIdentifier;
    using Control = asn1data::ASN1C_AlgorithmIdentifier;
};

namespace Quillmark::ASN1 {
namespace {

void fill(ASN1CTXT* ctxt, asn1data::ASN1T_AlgorithmIdentifier& record, const char* oid,
          const CBlob* parameters) {
    record.setContext(nullptr);
    record.m.parametersPresent = 0;
    if (str2oid(oid, &record.algorithm) != 0) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    if (parameters == nullptr || parameters->cbData() == 0) {
        return;
    }
    record.m.parametersPresent = 1;
    Asn1TObject_traits::set(ctxt, record.parameters, *parameters);
    detail::check_table_constraint(ctxt, record, asn1data::asn1DTC_AlgorithmIdentifier);
}

}  // namespace

template CBlob asn1Encode<ASN1T_AlgorithmIdentifier_traits, CAlgorithmIdentifier>(
    const CAlgorithmIdentifier&);
template void asn1Decode<ASN1T_AlgorithmIdentifier_traits, CAlgorithmIdentifier>(const CBlob&,
                                                                                 CAlgorithmIdentifier&);

CAlgorithmIdentifier::CAlgorithmIdentifier() : algorithm_("") {}

CAlgorithmIdentifier::CAlgorithmIdentifier(const char* oid) : algorithm_(oid) {}

CAlgorithmIdentifier::CAlgorithmIdentifier(const CAlgorithmIdentifier& other) = default;

CAlgorithmIdentifier& CAlgorithmIdentifier::operator=(const CAlgorithmIdentifier& other) = default;

CAlgorithmIdentifier::~CAlgorithmIdentifier() = default;

void CAlgorithmIdentifier::put_algorithm(const char* oid) {
    algorithm_ = CStringProxy(oid);
}

void CAlgorithmIdentifier::assign(const CAlgorithmIdentifier& other) {
    put_algorithm(other.get_algorithm());
    put_parameters(other.parameters_);
}

void CAlgorithmIdentifier::swap(CAlgorithmIdentifier& other) {
    std::swap(algorithm_, other.algorithm_);
    parameters_.swap(other.parameters_);
}

void CAlgorithmIdentifier::put_parameters(CBlob parameters) {
    parameters_ = std::move(parameters);
}

CBlob CAlgorithmIdentifier::encode() const {
    return asn1Encode<ASN1T_AlgorithmIdentifier_traits>(*this);
}

void CAlgorithmIdentifier::decode(const CBlob& der) {
    asn1Decode<ASN1T_AlgorithmIdentifier_traits>(der, *this);
}

bool operator==(const CAlgorithmIdentifier& left, const CAlgorithmIdentifier& right) {
    return std::strcmp(left.get_algorithm(), right.get_algorithm()) == 0 &&
           left.get_parameters() == right.get_parameters();
}

bool operator!=(const CAlgorithmIdentifier& left, const CAlgorithmIdentifier& right) {
    return !(left == right);
}

CAlgorithmIdentifierEx::CAlgorithmIdentifierEx(const char* oid) : CAlgorithmIdentifier(oid) {}

CAlgorithmIdentifierEx::CAlgorithmIdentifierEx(const CAlgorithmIdentifier& other)
    : CAlgorithmIdentifier(other) {}

CAlgorithmIdentifierEx::~CAlgorithmIdentifierEx() = default;

void CAlgorithmIdentifierEx::put_algorithm(const char* oid) {
    if (std::strcmp(oid != nullptr ? oid : "", get_algorithm()) == 0) {
        return;
    }
    algExtra_ = 0;
    CAlgorithmIdentifier::put_algorithm(oid);
}

asn1data::ASN1T_AlgorithmIdentifier* ASN1T_AlgorithmIdentifier_set(ASN1CTXT* ctxt, const char* oid,
                                                                   const CBlob* parameters) {
    auto* record = detail::new_record<asn1data::ASN1T_AlgorithmIdentifier>(ctxt);
    fill(ctxt, *record, oid, parameters);
    return record;
}

void ASN1T_AlgorithmIdentifier_get(CAlgorithmIdentifier& value,
                                   const asn1data::ASN1T_AlgorithmIdentifier& record) {
    value.put_algorithm(detail::OidText(record.algorithm).c_str());
    if (record.m.parametersPresent) {
        value.parameters_.assign(record.parameters.data, record.parameters.numocts);
    } else {
        value.parameters_.clear();
    }
}

void ASN1T_AlgorithmIdentifier_traits::set(ASN1CTXT* ctxt, ASN1_T& record,
                                           const CAlgorithmIdentifier& value) {
    fill(ctxt, record, value.get_algorithm(), &value.get_parameters());
}

void ASN1T_AlgorithmIdentifier_traits::get(const ASN1_T& record, CAlgorithmIdentifier& value) {
    ASN1T_AlgorithmIdentifier_get(value, record);
}

void ASN1T_AlgorithmIdentifier_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_AlgorithmIdentifier(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::ASN1
