#include <algorithm>
#include <cwchar>

#include "asn1/detail/check.h"
#include "asn1/detail/text.h"
#include "asn1/name.h"

namespace Quillmark::ASN1 {

/// A row of this library; it registers nothing by itself.
struct CATAVRegister::BuiltIn {
    const char* oid;
    const wchar_t* name;
    StringType type;
};

namespace {

constexpr unsigned long kMaxLength = 32768;

/// What valueToStr writes in front of the hexadecimal digits of an unregistered type.
constexpr const wchar_t* kHexMarker = L"#";

}  // namespace

CATAVRegister::CATAVRegister(const char* oid, const wchar_t* name, StringType type, unsigned long maxLength)
    : oid_(detail::or_empty(oid)), name_(detail::or_empty(name)), type_(type), maxLength_(maxLength) {
    rows().push_back(*this);
}

CATAVRegister::CATAVRegister(const BuiltIn& row)
    : oid_(row.oid), name_(row.name), type_(row.type), maxLength_(kMaxLength) {}

// The rows are made on first use and never destroyed, so that other load-time and exit-time code finds them.
std::list<CATAVRegister>& CATAVRegister::rows() {
    static constexpr BuiltIn kRows[] = {
        {"2.5.4.3", L"CN", StringTypeUTF8},
        {"2.5.4.6", L"C", StringTypePrintable},
        {"2.5.4.7", L"L", StringTypeUTF8},
        {"2.5.4.8", L"ST", StringTypeUTF8},
        {"1.2.840.113549.1.9.1", L"E", StringTypeIA5},
        {"2.5.4.10", L"O", StringTypeUTF8},
        {"2.5.4.11", L"OU", StringTypeUTF8},
        {"2.5.4.12", L"T", StringTypeUTF8},
        {"2.5.4.42", L"GN", StringTypeUTF8},
        {"2.5.4.43", L"I", StringTypeUTF8},
        {"2.5.4.4", L"SN", StringTypeUTF8},
        {"2.5.4.65", L"PS", StringTypeUTF8},
        {"1.2.643.100.1", L"OGRN", StringTypeUTF8},
        {"1.2.643.100.5", L"OGRNIP", StringTypeUTF8},
        {"1.2.643.100.3", L"SNILS", StringTypeUTF8},
        {"1.2.643.100.4", L"INNLE", StringTypeUTF8},
        {"1.2.643.3.131.1.1", L"INN", StringTypeUTF8},
        {"2.5.4.9", L"STREET", StringTypeUTF8},
        {"0.9.2342.19200300.100.1.25", L"DC", StringTypeIA5},
        {"1.2.840.113549.1.9.2", L"UnstructuredName", StringTypeUTF8},
        {"2.5.4.17", L"PostalCode", StringTypeUTF8},
        {"2.5.4.5", L"SERIALNUMBER", StringTypePrintable},
    };
    static std::list<CATAVRegister>& list = *[] {
        auto made = std::make_unique<std::list<CATAVRegister>>();
        for (const BuiltIn& row : kRows) {
            made->push_back(CATAVRegister(row));
        }
        return made.release();
    }();
    return list;
}

const std::list<CATAVRegister>& CATAVRegister::registered() {
    return rows();
}

CATAVRegister::const_iterator CATAVRegister::find(const char* oid) {
    return std::find_if(
        registered().begin(), registered().end(),
        [wanted = detail::or_empty(oid)](const CATAVRegister& row) { return row.oid_ == wanted; });
}

CATAVRegister::const_iterator CATAVRegister::find(const wchar_t* name) {
    return std::find_if(
        registered().begin(), registered().end(),
        [wanted = detail::or_empty(name)](const CATAVRegister& row) { return row.name_ == wanted; });
}

std::wstring CATAVRegister::typeToStr(const char* oid) {
    const const_iterator row = find(oid);
    return row == registered().end() ? towstring(detail::or_empty(oid)) : row->name_;
}

std::string CATAVRegister::typeFromStr(const wchar_t* name) {
    const const_iterator row = find(name);
    return row == registered().end() ? tostring(detail::or_empty(name)) : row->oid_;
}

std::wstring CATAVRegister::valueToStr(const char* oid, const CBlob& value) {
    if (find(oid) == registered().end()) {
        return kHexMarker + towstring(value.writeToHexString(0).c_str());
    }
    return decodeCharString(value).c_str();
}

CBlob CATAVRegister::valueFromStr(const char* oid, const wchar_t* text, StringType type) {
    const const_iterator row = find(oid);
    if (row == registered().end()) {
        // Intended: the marker is not looked at.
        const std::wstring digits = std::wstring(detail::or_empty(text)).substr(1);
        CBlob der;
        der.readFromHexString(tostring(digits.c_str()).c_str());
        return der;
    }
    detail::check_argument(std::wcslen(detail::or_empty(text)) <= row->maxLength_);
    return encodeCharString(text, type == StringTypeDefault ? row->type_ : type);
}

CAttributeTypeAndValue CATAVRegister::makeATAV(const wchar_t* type, const wchar_t* value,
                                               StringType stringType) {
    const std::string oid = typeFromStr(type);
    return CAttributeTypeAndValue(oid.c_str(), valueFromStr(oid.c_str(), value, stringType));
}

CAttributeTypeAndValue CATAVRegister::makeATAV(const wchar_t* text, StringType stringType) {
    text = detail::or_empty(text);
    const wchar_t* separator = std::wcschr(text, L'=');
    detail::check_argument(separator != nullptr);
    const std::wstring type(text, separator);
    return makeATAV(type.c_str(), separator + 1, stringType);
}

const CATAVRegister& commonNameAttribute = *CATAVRegister::find("2.5.4.3");
const CATAVRegister& countryNameAttribute = *CATAVRegister::find("2.5.4.6");
const CATAVRegister& localityNameAttribute = *CATAVRegister::find("2.5.4.7");
const CATAVRegister& stateOrProvinceNameAttribute = *CATAVRegister::find("2.5.4.8");
const CATAVRegister& emailAddressAttribute = *CATAVRegister::find("1.2.840.113549.1.9.1");
const CATAVRegister& organizationNameAttribute = *CATAVRegister::find("2.5.4.10");
const CATAVRegister& organizationUnitNameAttribute = *CATAVRegister::find("2.5.4.11");
const CATAVRegister& titleAttribute = *CATAVRegister::find("2.5.4.12");
const CATAVRegister& givenNameAttribute = *CATAVRegister::find("2.5.4.42");
const CATAVRegister& initialsAttribute = *CATAVRegister::find("2.5.4.43");
const CATAVRegister& surnameAttribute = *CATAVRegister::find("2.5.4.4");
const CATAVRegister& pseudonymAttribute = *CATAVRegister::find("2.5.4.65");
const CATAVRegister& ogrnAttribute = *CATAVRegister::find("1.2.643.100.1");
const CATAVRegister& ogrnipAttribute = *CATAVRegister::find("1.2.643.100.5");
const CATAVRegister& snilsAttribute = *CATAVRegister::find("1.2.643.100.3");
const CATAVRegister& innleAttribute = *CATAVRegister::find("1.2.643.100.4");
const CATAVRegister& innAttribute = *CATAVRegister::find("1.2.643.3.131.1.1");
const CATAVRegister& streetAddressAttribute = *CATAVRegister::find("2.5.4.9");
const CATAVRegister& domainComponentAttribute = *CATAVRegister::find("0.9.2342.19200300.100.1.25");
const CATAVRegister& unstructuredNameAttribute = *CATAVRegister::find("1.2.840.113549.1.9.2");
const CATAVRegister& PostalCodeAttribute = *CATAVRegister::find("2.5.4.17");
const CATAVRegister& serialNumberAttribute = *CATAVRegister::find("2.5.4.5");

}  // namespace Quillmark::ASN1
