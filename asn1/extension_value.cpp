#include "asn1/extension_value.h"

#include "asn1/choice.h"
#include "asn1/detail/bridge.h"
#include "asn1/detail/check.h"
#include "asn1/detail/heap.h"
#include "asn1data/codecs.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"
#include "runtime/time_class.h"

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_CRLReason_traits> {
    using Record = asn1data::ASN1T_CRLReason;
    using Control = asn1data::ASN1C_CRLReason;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_PrivateKeyUsagePeriod_traits> {
    using Record = asn1data::ASN1T_PrivateKeyUsagePeriod;
    using Control = asn1data::ASN1C_PrivateKeyUsagePeriod;
};

template <>
struct Quillmark::detail::Binding<Quillmark::ASN1::ASN1T_Time_traits> {
    using Record = asn1data::ASN1T_Time;
    using Control = asn1data::ASN1C_Time;
};

namespace Quillmark::ASN1 {

using asn1data::T_Time_generalTime;
using asn1data::T_Time_utcTime;

template CBlob asn1Encode<ASN1T_CRLReason_traits, CrlReason>(const CrlReason&);
template void asn1Decode<ASN1T_CRLReason_traits, CrlReason>(const CBlob&, CrlReason&);
template CBlob asn1Encode<ASN1T_PrivateKeyUsagePeriod_traits, CExtPrivateKeyUsagePeriod>(
    const CExtPrivateKeyUsagePeriod&);
template void asn1Decode<ASN1T_PrivateKeyUsagePeriod_traits, CExtPrivateKeyUsagePeriod>(
    const CBlob&, CExtPrivateKeyUsagePeriod&);
template CBlob asn1Encode<ASN1T_Time_traits, CTimeChoice>(const CTimeChoice&);
template void asn1Decode<ASN1T_Time_traits, CTimeChoice>(const CBlob&, CTimeChoice&);

class CTimeChoiceImpl final : public Choice {
  public:
    CTimeChoiceImpl() = default;
    CTimeChoiceImpl(const CTimeChoiceImpl& other) : Choice() { copy_from(other); }
    CTimeChoiceImpl& operator=(const CTimeChoiceImpl&) = delete;
    ~CTimeChoiceImpl() override { delete_value(); }

    const ChoiceValueTraits* findTraits(unsigned int type) const override {
        switch (type) {
            case T_Time_utcTime:
                return &ChoiceValueTraitsT<CDateTime, T_Time_utcTime>::instance;
            case T_Time_generalTime:
                return &ChoiceValueTraitsT<CDateTime, T_Time_generalTime>::instance;
            default:
                return &NoChoiceValueTraits::instance;
        }
    }
};

namespace {

constexpr const char* kPrivateKeyUsagePeriod = "2.5.29.16";
constexpr const char* kReasonCode = "2.5.29.21";
constexpr const char* kHoldInstructionCode = "2.5.29.23";
constexpr const char* kInvalidityDate = "2.5.29.24";
constexpr const char* kCertificateIssuer = "2.5.29.29";

// RFC 5280 4.1.2.5: dates through the year 2049 are UTCTime.
constexpr unsigned int kLastYearOfUTCTime = 2049;

/// The text of a date, written by a time object that is on `text`.
const char* time_text(ASN1CTXT* ctxt, const CDateTime& date, ASN1CTime&& time) {
    const _SYSTEMTIME fields = date.getSystemTime();
    time.clear();
    // The hour last: each setter renews the text once year, month, day and hour are there.
    const bool written = time.setYear(fields.wYear) == 0 && time.setMonth(fields.wMonth) == 0 &&
                         time.setDay(fields.wDay) == 0 && time.setMinute(fields.wMinute) == 0 &&
                         time.setSecond(fields.wSecond) == 0 && time.setHour(fields.wHour) == 0;
    const int length = time.getTimeStringLen();
    if (!written || length <= 0) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    char* text = static_cast<char*>(rtMemHeapAlloc(&ctxt->typeHeap, static_cast<std::size_t>(length) + 1));
    if (text == nullptr || time.getTimeString(text, length + 1) == nullptr) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    return text;
}

CDateTime read_time(const ASN1CTime& time) {
    const auto field = [](int value) { return static_cast<unsigned int>(value); };
    return CDateTime(field(time.getYear()), field(time.getMonth()), field(time.getDay()),
                     field(time.getHour()), field(time.getMinute()), field(time.getSecond()), 0, 0);
}

}  // namespace

CTimeChoice::CTimeChoice() : impl_(std::make_unique<CTimeChoiceImpl>()) {
    const CDateTime start(0L, 0);
    impl_->put(T_Time_utcTime, &start);
}

CTimeChoice::CTimeChoice(const CDateTime& time) : impl_(std::make_unique<CTimeChoiceImpl>()) {
    put_time(time);
}

CTimeChoice::CTimeChoice(const CTimeChoice& other)
    : impl_(other.impl_ ? std::make_unique<CTimeChoiceImpl>(*other.impl_) : nullptr) {}

CTimeChoice& CTimeChoice::operator=(const CTimeChoice& other) {
    if (impl_ != other.impl_) {
        copy_to_auto_ptr(impl_, other.impl_.get());
    }
    return *this;
}

CTimeChoice::~CTimeChoice() = default;

void CTimeChoice::clear() {
    impl_.reset();
}

unsigned int CTimeChoice::get_type() const {
    return impl_->get_type();
}

const CDateTime* CTimeChoice::get_time() const {
    const auto* utc_time = impl_->get<CDateTime>(T_Time_utcTime);
    return utc_time != nullptr ? utc_time : impl_->get<CDateTime>(T_Time_generalTime);
}

void CTimeChoice::put_time(const CDateTime& time) {
    // Intended: years before 1950 are not told apart from later ones.
    impl_->put(time.year() > kLastYearOfUTCTime ? T_Time_generalTime : T_Time_utcTime, &time);
}

CBlob CTimeChoice::encode() const {
    return asn1Encode<ASN1T_Time_traits>(*this);
}

void CTimeChoice::decode(const CBlob& der) {
    asn1Decode<ASN1T_Time_traits>(der, *this);
}

CExtCRLReason::CExtCRLReason() : CExtValue(kReasonCode) {}

CExtCRLReason::CExtCRLReason(CrlReason reason) : CExtValue(kReasonCode), reason_(reason) {
    encode();
}

CExtCRLReason::CExtCRLReason(const CBlob& der) : CExtValue(kReasonCode, der) {
    decode();
}

void CExtCRLReason::encode() {
    value() = asn1Encode<ASN1T_CRLReason_traits>(reason_);
}

void CExtCRLReason::decode() {
    asn1Decode<ASN1T_CRLReason_traits>(get_value(), reason_);
}

void CExtCRLReason::put_reason(CrlReason reason) {
    reason_ = reason;
    encode();
}

CExtHoldInstructionCode::CExtHoldInstructionCode() : CExtValue(kHoldInstructionCode), code_("") {}

CExtHoldInstructionCode::CExtHoldInstructionCode(const char* code)
    : CExtValue(kHoldInstructionCode), code_(code) {
    encode();
}

CExtHoldInstructionCode::CExtHoldInstructionCode(const CBlob& der)
    : CExtValue(kHoldInstructionCode, der), code_("") {
    decode();
}

void CExtHoldInstructionCode::encode() {
    value() = asn1Encode<ASN1TObjId_traits, const char*>(code_.c_str());
}

void CExtHoldInstructionCode::decode() {
    asn1Decode<ASN1TObjId_traits>(get_value(), code_);
}

void CExtHoldInstructionCode::put_code(const char* code) {
    code_ = CStringProxy(code);
    encode();
}

CExtInvalidityDate::CExtInvalidityDate() : CExtValue(kInvalidityDate), invalidityDate_(0L, 0) {}

CExtInvalidityDate::CExtInvalidityDate(const CDateTime& invalidityDate)
    : CExtValue(kInvalidityDate), invalidityDate_(invalidityDate) {
    encode();
}

CExtInvalidityDate::CExtInvalidityDate(const CBlob& der)
    : CExtValue(kInvalidityDate, der), invalidityDate_(0L, 0) {
    decode();
}

void CExtInvalidityDate::encode() {
    value() = asn1Encode<ASN1GeneralizedTime_traits>(invalidityDate_);
}

void CExtInvalidityDate::decode() {
    asn1Decode<ASN1GeneralizedTime_traits>(get_value(), invalidityDate_);
}

void CExtInvalidityDate::put_invalidityDate(const CDateTime& invalidityDate) {
    invalidityDate_ = invalidityDate;
    encode();
}

CExtCertificateIssuer::CExtCertificateIssuer() : CExtValue(kCertificateIssuer) {}

CExtCertificateIssuer::CExtCertificateIssuer(const CGeneralNames& issuer)
    : CExtValue(kCertificateIssuer), issuer_(issuer) {
    encode();
}

CExtCertificateIssuer::CExtCertificateIssuer(const CBlob& der) : CExtValue(kCertificateIssuer, der) {
    decode();
}

void CExtCertificateIssuer::encode() {
    value() = issuer_.encode();
}

void CExtCertificateIssuer::decode() {
    issuer_.decode(get_value());
}

void CExtCertificateIssuer::put_issuer(const CGeneralNames& issuer) {
    issuer_ = issuer;
    encode();
}

CExtPrivateKeyUsagePeriod::CExtPrivateKeyUsagePeriod(const CDateTime* notBefore, const CDateTime* notAfter)
    : CExtValue(kPrivateKeyUsagePeriod) {
    copy_to_auto_ptr(notBefore_, notBefore);
    copy_to_auto_ptr(notAfter_, notAfter);
    encode();
}

CExtPrivateKeyUsagePeriod::CExtPrivateKeyUsagePeriod(const CBlob& der)
    : CExtValue(kPrivateKeyUsagePeriod, der) {
    decode();
}

CExtPrivateKeyUsagePeriod::CExtPrivateKeyUsagePeriod(const CExtPrivateKeyUsagePeriod& other)
    : CExtValue(other) {
    copy_to_auto_ptr(notBefore_, other.get_notBefore());
    copy_to_auto_ptr(notAfter_, other.get_notAfter());
}

CExtPrivateKeyUsagePeriod& CExtPrivateKeyUsagePeriod::operator=(const CExtPrivateKeyUsagePeriod& other) {
    if (this != &other) {
        CExtValue::operator=(other);
        copy_to_auto_ptr(notBefore_, other.get_notBefore());
        copy_to_auto_ptr(notAfter_, other.get_notAfter());
    }
    return *this;
}

CExtPrivateKeyUsagePeriod::~CExtPrivateKeyUsagePeriod() = default;

void CExtPrivateKeyUsagePeriod::encode() {
    value() = asn1Encode<ASN1T_PrivateKeyUsagePeriod_traits>(*this);
}

void CExtPrivateKeyUsagePeriod::decode() {
    // Reading replaces the octets that are read.
    const CBlob der(get_value());
    asn1Decode<ASN1T_PrivateKeyUsagePeriod_traits>(der, *this);
}

void CExtPrivateKeyUsagePeriod::put_notBefore(const CDateTime* notBefore) {
    copy_to_auto_ptr(notBefore_, notBefore);
    encode();
}

void CExtPrivateKeyUsagePeriod::put_notAfter(const CDateTime* notAfter) {
    copy_to_auto_ptr(notAfter_, notAfter);
    encode();
}

void ASN1T_CRLReason_traits::set(ASN1CTXT*, unsigned int& record, const CrlReason& value) {
    record = value;
}

void ASN1T_CRLReason_traits::get(const unsigned int& record, CrlReason& value) {
    value = static_cast<CrlReason>(record);
}

void ASN1T_CRLReason_traits::copy(ASN1CTXT*, const unsigned int& source, unsigned int& target) {
    target = source;
}

void ASN1T_PrivateKeyUsagePeriod_traits::set(ASN1CTXT* ctxt, ASN1_T& record,
                                             const CExtPrivateKeyUsagePeriod& value) {
    record.m.notBeforePresent = 0;
    record.m.notAfterPresent = 0;
    if (value.get_notBefore() != nullptr) {
        ASN1GeneralizedTime_traits::set(ctxt, record.notBefore, *value.get_notBefore());
        record.m.notBeforePresent = 1;
    }
    if (value.get_notAfter() != nullptr) {
        ASN1GeneralizedTime_traits::set(ctxt, record.notAfter, *value.get_notAfter());
        record.m.notAfterPresent = 1;
    }
}

void ASN1T_PrivateKeyUsagePeriod_traits::get(const ASN1_T& record, CExtPrivateKeyUsagePeriod& value) {
    // Intended: each of the two writes the value's octets, the first with the other date as it was.
    if (record.m.notBeforePresent) {
        const CDateTime not_before(record.notBefore);
        value.put_notBefore(&not_before);
    } else {
        value.put_notBefore(nullptr);
    }
    if (record.m.notAfterPresent) {
        const CDateTime not_after(record.notAfter);
        value.put_notAfter(&not_after);
    } else {
        value.put_notAfter(nullptr);
    }
}

void ASN1T_PrivateKeyUsagePeriod_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_PrivateKeyUsagePeriod(ctxt, const_cast<ASN1_T*>(&source), &target);
}

void ASN1T_Time_traits::set(ASN1CTXT* ctxt, ASN1_T& record, const CTimeChoice& value) {
    const char* text = nullptr;
    if (value.get_type() == T_Time_utcTime) {
        record.t = T_Time_utcTime;
        record.u.utcTime = time_text(ctxt, *value.get_time(), ASN1CUTCTime(text, 1));
    } else if (value.get_type() == T_Time_generalTime) {
        record.t = T_Time_generalTime;
        record.u.generalTime = time_text(ctxt, *value.get_time(), ASN1CGeneralizedTime(text, 1));
    }
}

void ASN1T_Time_traits::get(const ASN1_T& record, CTimeChoice& value) {
    if (record.t == T_Time_utcTime) {
        const char* text = record.u.utcTime;
        value.put_time(read_time(ASN1CUTCTime(text, 0)));
    } else if (record.t == T_Time_generalTime) {
        const char* text = record.u.generalTime;
        value.put_time(read_time(ASN1CGeneralizedTime(text, 0)));
    } else {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
}

void ASN1T_Time_traits::copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target) {
    asn1data::asn1Copy_Time(ctxt, const_cast<ASN1_T*>(&source), &target);
}

}  // namespace Quillmark::ASN1
