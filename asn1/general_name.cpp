#include "asn1/general_name.h"

#include <array>
#include <cwchar>

#include "asn1/choice.h"
#include "asn1/detail/bridge.h"
#include "asn1/detail/check.h"
#include "asn1/detail/heap.h"
#include "asn1/detail/list_traits.h"
#include "asn1/detail/oid_text.h"
#include "asn1/detail/text.h"
#include "asn1/name.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_GeneralName_traits> {
    using Record = asn1data::ASN1T_GeneralName;
    using Control = asn1data::ASN1C_GeneralName;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_GeneralNames_traits> {
    using Record = asn1data::ASN1T_GeneralNames;
    using Control = asn1data::ASN1C_GeneralNames;
};

namespace Quillmark::ASN1 {

using asn1data::T_GeneralName_directoryName;
using asn1data::T_GeneralName_dNSName;
using asn1data::T_GeneralName_iPAddress;
using asn1data::T_GeneralName_registeredID;
using asn1data::T_GeneralName_rfc822Name;
using asn1data::T_GeneralName_uniformResourceIdentifier;

using GeneralNameList =
    ASN1TSeqOfList_traits<asn1data::ASN1T_GeneralName, ASN1T_GeneralName_traits, CGeneralName, CGeneralNames>;

template struct ASN1TSeqOfList_traits<asn1data::ASN1T_GeneralName, ASN1T_GeneralName_traits, CGeneralName,
                                      CGeneralNames>;
template CBlob asn1Encode<ASN1T_GeneralName_traits, CGeneralName>(const CGeneralName&);
template void asn1Decode<ASN1T_GeneralName_traits, CGeneralName>(const CBlob&, CGeneralName&);
template CBlob asn1Encode<ASN1T_GeneralNames_traits, CGeneralNames>(const CGeneralNames&);
template void asn1Decode<ASN1T_GeneralNames_traits, CGeneralNames>(const CBlob&, CGeneralNames&);

class CGeneralNameImpl final : public Choice {
  public:
    CGeneralNameImpl() = default;
    CGeneralNameImpl(const CGeneralNameImpl& other) : Choice() { copy_from(other); }
    CGeneralNameImpl& operator=(const CGeneralNameImpl&) = delete;
    ~CGeneralNameImpl() override { delete_value(); }

    const ChoiceValueTraits* findTraits(unsigned int type) const override {
        switch (type) {
            case T_GeneralName_rfc822Name:
                return &ChoiceValueTraitsT<std::wstring, T_GeneralName_rfc822Name>::instance;
            case T_GeneralName_dNSName:
                return &ChoiceValueTraitsT<std::wstring, T_GeneralName_dNSName>::instance;
            case T_GeneralName_directoryName:
                return &ChoiceValueTraitsT<CBlob, T_GeneralName_directoryName>::instance;
            case T_GeneralName_uniformResourceIdentifier:
                return &ChoiceValueTraitsT<std::wstring, T_GeneralName_uniformResourceIdentifier>::instance;
            case T_GeneralName_iPAddress:
                return &ChoiceValueTraitsT<CBlob, T_GeneralName_iPAddress>::instance;
            case T_GeneralName_registeredID:
                return &ChoiceValueTraitsT<std::wstring, T_GeneralName_registeredID>::instance;
            default:
                return &NoChoiceValueTraits::instance;
        }
    }

    const wchar_t* get_text(unsigned int type) const {
        const auto* text = get<std::wstring>(type);
        return text == nullptr ? nullptr : text->c_str();
    }

    void put_text(unsigned int type, const wchar_t* text) {
        detail::check_argument(text != nullptr);
        const std::wstring copy(text);
        put(type, &copy);
    }
};

namespace {

// Four octets for each character must fit a 32-bit size.
constexpr std::size_t kMaxCharacters = 0x3FFFFFFF;

std::string to_code_page(const wchar_t* text) {
    detail::check_argument(text != nullptr && std::wcslen(text) < kMaxCharacters);
    std::optional<std::string> narrowed = detail::narrow(text);
    detail::check_argument(narrowed.has_value());
    return *std::move(narrowed);
}

std::wstring from_code_page(const char* text) {
    detail::check_argument(text != nullptr && std::strlen(text) < kMaxCharacters);
    std::optional<std::wstring> widened = detail::widen(text);
    detail::check_argument(widened.has_value());
    return *std::move(widened);
}

/// Both absent, or both there and `equal`.
template <class T, class Equal>
bool same_alternative(const T* left, const T* right, Equal equal) {
    if (left == nullptr || right == nullptr) {
        return left == right;
    }
    return equal(*left, *right);
}

}  // namespace

CGeneralName::CGeneralName() : impl_(std::make_unique<CGeneralNameImpl>()) {}

CGeneralName::CGeneralName(const CGeneralName& other)
    : impl_(other.impl_ ? std::make_unique<CGeneralNameImpl>(*other.impl_) : nullptr) {}

CGeneralName& CGeneralName::operator=(const CGeneralName& other) {
    if (impl_ != other.impl_) {
        copy_to_auto_ptr(impl_, other.impl_.get());
    }
    return *this;
}

CGeneralName::~CGeneralName() = default;

void CGeneralName::clear() {
    impl_.reset();
}

unsigned int CGeneralName::get_type() const {
    return impl_->get_type();
}

const wchar_t* CGeneralName::get_rfc822Name() const {
    return impl_->get_text(T_GeneralName_rfc822Name);
}

const wchar_t* CGeneralName::get_dNSName() const {
    return impl_->get_text(T_GeneralName_dNSName);
}

const CBlob* CGeneralName::get_directoryName() const {
    return impl_->get<CBlob>(T_GeneralName_directoryName);
}

const wchar_t* CGeneralName::get_uniformResourceIdentifier() const {
    return impl_->get_text(T_GeneralName_uniformResourceIdentifier);
}

const CBlob* CGeneralName::get_iPAddress() const {
    return impl_->get<CBlob>(T_GeneralName_iPAddress);
}

const wchar_t* CGeneralName::get_registeredID() const {
    return impl_->get_text(T_GeneralName_registeredID);
}

void CGeneralName::put_rfc822Name(const wchar_t* name) {
    impl_->put_text(T_GeneralName_rfc822Name, name);
}

void CGeneralName::put_dNSName(const wchar_t* name) {
    impl_->put_text(T_GeneralName_dNSName, name);
}

void CGeneralName::put_directoryName(const CBlob& name) {
    impl_->put(T_GeneralName_directoryName, &name);
}

void CGeneralName::put_uniformResourceIdentifier(const wchar_t* uri) {
    impl_->put_text(T_GeneralName_uniformResourceIdentifier, uri);
}

void CGeneralName::put_iPAddress(const CBlob& address) {
    impl_->put(T_GeneralName_iPAddress, &address);
}

void CGeneralName::put_registeredID(const wchar_t* oid) {
    impl_->put_text(T_GeneralName_registeredID, oid);
}

CBlob CGeneralName::encode() const {
    return asn1Encode<ASN1T_GeneralName_traits>(*this);
}

void CGeneralName::decode(const CBlob& der) {
    asn1Decode<ASN1T_GeneralName_traits>(der, *this);
}

std::wstring CGeneralName::toString() const {
    // Intended: of a text alternative one character is shown.
    switch (get_type()) {
        case T_GeneralName_rfc822Name:
            return std::wstring(L"rfc822Name: ") + *get_rfc822Name();
        case T_GeneralName_dNSName:
            return std::wstring(L"dNSName: ") + *get_dNSName();
        case T_GeneralName_directoryName: {
            CName name;
            name.decode(*get_directoryName());
            return L"directoryName: " + name.toString();
        }
        case T_GeneralName_uniformResourceIdentifier:
            return std::wstring(L"uniformResourceIdentifier: ") + *get_uniformResourceIdentifier();
        case T_GeneralName_iPAddress:
            return L"iPAddress: (to string is not implemented)";
        case T_GeneralName_registeredID:
            return std::wstring(L"registeredID: ") + *get_registeredID();
        default:
            return std::wstring();
    }
}

bool operator==(const CGeneralName& left, const CGeneralName& right) {
    // Intended: of a text alternative the first characters are compared and no others.
    const auto same_start = [](wchar_t a, wchar_t b) { return a == b; };
    const auto same_octets = [](const CBlob& a, const CBlob& b) { return a == b; };
    return left.get_type() == right.get_type() &&
           same_alternative(left.get_directoryName(), right.get_directoryName(), same_octets) &&
           same_alternative(left.get_dNSName(), right.get_dNSName(), same_start) &&
           same_alternative(left.get_iPAddress(), right.get_iPAddress(), same_octets) &&
           same_alternative(left.get_registeredID(), right.get_registeredID(), same_start) &&
           same_alternative(left.get_rfc822Name(), right.get_rfc822Name(), same_start) &&
           same_alternative(left.get_uniformResourceIdentifier(), right.get_uniformResourceIdentifier(),
                            same_start);
}

bool operator!=(const CGeneralName& left, const CGeneralName& right) {
    return !(left == right);
}

CBlob CGeneralNames::encode() const {
    return asn1Encode<ASN1T_GeneralNames_traits>(*this);
}

void CGeneralNames::decode(const CBlob& der) {
    asn1Decode<ASN1T_GeneralNames_traits>(der, *this);
}

void ASN1T_GeneralName_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CGeneralName& value) {
    const auto heap_text = [ctxt](const wchar_t* text) {
        return detail::copy_text(ctxt, to_code_page(text).c_str());
    };
    const unsigned int type = value.get_type();
    switch (type) {
        case T_GeneralName_rfc822Name:
            record.t = type;
            record.u.rfc822Name = heap_text(value.get_rfc822Name());
            return;
        case T_GeneralName_dNSName:
            record.t = type;
            record.u.dNSName = heap_text(value.get_dNSName());
            return;
        case T_GeneralName_directoryName:
            record.t = type;
            record.u.directoryName = detail::new_record<asn1data::ASN1T_Name>(ctxt);
            ASN1T_Name_traits::set(ctxt, *record.u.directoryName, *value.get_directoryName());
            return;
        case T_GeneralName_uniformResourceIdentifier:
            record.t = type;
            record.u.uniformResourceIdentifier = heap_text(value.get_uniformResourceIdentifier());
            return;
        case T_GeneralName_iPAddress:
            record.t = type;
            record.u.iPAddress = detail::new_record<ASN1TDynOctStr>(ctxt);
            ASN1TDynOctStr_traits::set(ctxt, *record.u.iPAddress, *value.get_iPAddress());
            return;
        case T_GeneralName_registeredID:
            record.t = type;
            record.u.registeredID = detail::new_record<ASN1TObjId>(ctxt);
            ASN1TObjId_traits::set(ctxt, *record.u.registeredID,
                                   to_code_page(value.get_registeredID()).c_str());
            return;
        default:
            throw CAtlException(E_INVALIDARG);
    }
}

void ASN1T_GeneralName_traits::get(const ASN1_T& record, CGeneralName& value) {
    switch (record.t) {
        case T_GeneralName_rfc822Name:
            value.put_rfc822Name(from_code_page(record.u.rfc822Name).c_str());
            return;
        case T_GeneralName_dNSName:
            value.put_dNSName(from_code_page(record.u.dNSName).c_str());
            return;
        case T_GeneralName_directoryName: {
            CBlob der;
            ASN1T_Name_traits::get(*record.u.directoryName, der);
            value.put_directoryName(der);
            return;
        }
        case T_GeneralName_uniformResourceIdentifier:
            value.put_uniformResourceIdentifier(from_code_page(record.u.uniformResourceIdentifier).c_str());
            return;
        case T_GeneralName_iPAddress: {
            CBlob octets;
            ASN1TDynOctStr_traits::get(*record.u.iPAddress, octets);
            value.put_iPAddress(octets);
            return;
        }
        case T_GeneralName_registeredID:
            value.put_registeredID(from_code_page(detail::OidText(*record.u.registeredID).c_str()).c_str());
            return;
        default:
            throw CAtlException(E_INVALIDARG);
    }
}

void ASN1T_GeneralName_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_GeneralName(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_GeneralNames_traits::set(ASN1CTXT* ctxt, ASN1TSeqOfList& record, const CGeneralNames& value) {
    GeneralNameList::set(ctxt, record, value);
}

void ASN1T_GeneralNames_traits::get(const ASN1TSeqOfList& record, CGeneralNames& value) {
    GeneralNameList::get(record, value);
}

void ASN1T_GeneralNames_traits::copy(ASN1CTXT* ctxt, const ASN1TSeqOfList& source, ASN1TSeqOfList& target) {
    GeneralNameList::copy(ctxt, source, target);
}

}  // namespace Quillmark::ASN1
