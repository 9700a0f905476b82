#include "runtime/time_class.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

constexpr int16_t kUnset = -3;
constexpr int32_t kLeastCallerRoom = 30;
constexpr int kMaxOffsetHours = 12;

// Leaves the context's status as it was.
class KeepStatus {
  public:
    explicit KeepStatus(ASN1CTXT* ctxt)
        : ctxt_(ctxt), status_(ctxt == nullptr ? RT_OK : ctxt->errInfo.status) {}
    ~KeepStatus() {
        if (ctxt_ != nullptr) {
            ctxt_->errInfo.status = status_;
        }
    }
    KeepStatus(const KeepStatus&) = delete;
    KeepStatus& operator=(const KeepStatus&) = delete;

  private:
    ASN1CTXT* ctxt_;
    int status_;
};

// The digits as a number, without those that 32 bits have no room for.
int32_t fraction_value(const char* digits) {
    int64_t value = 0;
    for (; *digits != '\0'; ++digits) {
        const int64_t next = value * 10 + (*digits - '0');
        if (next > INT32_MAX) {
            break;
        }
        value = next;
    }
    return static_cast<int32_t>(value);
}

// What `local` is ahead of UTC, in minutes.
long minutes_ahead(std::tm local, std::tm utc) {
    utc.tm_isdst = local.tm_isdst;
    return static_cast<long>((std::mktime(&local) - std::mktime(&utc)) / 60);
}

}  // namespace

ASN1CTime::ASN1CTime(char*& buffer, int size, unsigned char useDerivedUTC) {
    start(const_cast<const char**>(&buffer), size, useDerivedUTC);
}

ASN1CTime::ASN1CTime(const char*& buffer, unsigned char useDerivedUTC) {
    start(&buffer, 0, useDerivedUTC);
}

ASN1CTime::ASN1CTime(ASN1MessageBufferIF& msgBuf, char*& buffer, int size, unsigned char useDerivedUTC)
    : ASN1CType(msgBuf) {
    start(const_cast<const char**>(&buffer), size, useDerivedUTC);
}

ASN1CTime::ASN1CTime(ASN1MessageBufferIF& msgBuf, const char*& buffer, unsigned char useDerivedUTC)
    : ASN1CType(msgBuf) {
    start(&buffer, 0, useDerivedUTC);
}

ASN1CTime::ASN1CTime(ASN1Context& ctxt, char*& buffer, int size, unsigned char useDerivedUTC)
    : ASN1CType(ctxt) {
    start(const_cast<const char**>(&buffer), size, useDerivedUTC);
}

ASN1CTime::ASN1CTime(ASN1Context& ctxt, const char*& buffer, unsigned char useDerivedUTC) : ASN1CType(ctxt) {
    start(&buffer, 0, useDerivedUTC);
}

ASN1CTime::~ASN1CTime() = default;

void ASN1CTime::start(const char** pointer, int size, unsigned char useDerivedUTC) {
    derivedUTC = useDerivedUTC != 0 ? 1 : 0;
    textPointer = pointer;
    room = *pointer == nullptr ? 0 : size;
    ownBuffer[0] = '\0';
    unsetFields();
    parsed = 0;
}

void ASN1CTime::unsetFields() {
    year = month = day = hour = kUnset;
    minute = second = 0;
    diffHour = diffMinute = 0;
    secFraction = 0;
    utc = derivedUTC;
}

ASN1CTXT* ASN1CTime::context() const {
    return getCtxtPtr();
}

int ASN1CTime::fail(int status) const {
    ASN1CTXT* ctxt = context();
    return ctxt == nullptr ? status : rtErrSetData(&ctxt->errInfo, status);
}

int ASN1CTime::ensureParsed() const {
    // The fields are a cache of the text, hence mutable.
    return parsed != 0 ? RT_OK : const_cast<ASN1CTime*>(this)->parseString(*textPointer);
}

void ASN1CTime::prepareSet() {
    const KeepStatus keep(context());
    ensureParsed();
    parsed = 1;
}

int ASN1CTime::finishSet() {
    if (year < 0 || month < 1 || day < 1 || hour < 0) {
        return RT_OK;
    }
    return compileString();
}

int ASN1CTime::takeFields(const ASN1TimeRecord& record, const char* source) {
    year = record.year;
    month = record.mon;
    day = record.day;
    hour = record.hour;
    minute = record.min;
    second = record.sec;
    diffHour = record.diffHour;
    diffMinute = record.diffMin;
    secFraction = fraction_value(record.fraction);
    utc = record.utc;
    parsed = 1;
    return source == *textPointer ? RT_OK : compileString();
}

int ASN1CTime::storeText(const char* text, int length) {
    const bool inOwnBuffer = room < kLeastCallerRoom || *textPointer == nullptr;
    const int available = inOwnBuffer ? static_cast<int>(sizeof ownBuffer) : room;
    if (length >= available) {
        return fail(RT_E_STROVFL);
    }
    char* target = inOwnBuffer ? ownBuffer : const_cast<char*>(*textPointer);
    std::memcpy(target, text, static_cast<size_t>(length));
    target[length] = '\0';
    *textPointer = target;
    return RT_OK;
}

int ASN1CTime::getYear() const {
    const int status = ensureParsed();
    return status != RT_OK ? status : year;
}

int ASN1CTime::getMonth() const {
    const int status = ensureParsed();
    return status != RT_OK ? status : month;
}

int ASN1CTime::getDay() const {
    const int status = ensureParsed();
    return status != RT_OK ? status : day;
}

int ASN1CTime::getHour() const {
    const int status = ensureParsed();
    return status != RT_OK ? status : hour;
}

int ASN1CTime::getMinute() const {
    const int status = ensureParsed();
    return status != RT_OK ? status : minute;
}

int ASN1CTime::getSecond() const {
    const int status = ensureParsed();
    return status != RT_OK ? status : second;
}

int ASN1CTime::getFraction() const {
    const int status = ensureParsed();
    return status != RT_OK ? status : secFraction;
}

int ASN1CTime::getDiffHour() const {
    const int status = ensureParsed();
    return status != RT_OK ? status : diffHour;
}

int ASN1CTime::getDiffMinute() const {
    const int status = ensureParsed();
    return status != RT_OK ? status : diffMinute;
}

int ASN1CTime::getDiff() const {
    const int status = ensureParsed();
    return status != RT_OK ? status : diffHour * 60 + diffMinute;
}

int ASN1CTime::getUTC() const {
    const int status = ensureParsed();
    return status != RT_OK ? status : utc;
}

long ASN1CTime::getTime() const {
    if (const int status = ensureParsed(); status != RT_OK) {
        return status;
    }
    if (year < 0 || month < 1 || day < 1 || hour < 0) {
        return fail(RT_E_INVFORMAT);
    }
    if (utc == 0 && diffHour == 0 && diffMinute == 0) {
        std::tm local{};
        local.tm_year = year - 1900;
        local.tm_mon = month - 1;
        local.tm_mday = day;
        local.tm_hour = hour;
        local.tm_min = minute;
        local.tm_sec = second;
        local.tm_isdst = -1;
        return static_cast<long>(std::mktime(&local));
    }
    return getDaysNum() * 86'400 + (hour * 60L + minute) * 60 + second - (diffHour * 60L + diffMinute) * 60;
}

int ASN1CTime::setUTC(int flag) {
    prepareSet();
    if (derivedUTC != 0) {
        return RT_OK;
    }
    utc = flag != 0 ? 1 : 0;
    return finishSet();
}

int ASN1CTime::setYear(int value) {
    prepareSet();
    if (value < 0 || value > INT16_MAX || checkDate(day, month, value) == 0) {
        return fail(RT_E_INVFORMAT);
    }
    year = static_cast<int16_t>(value);
    return finishSet();
}

int ASN1CTime::setMonth(int value) {
    prepareSet();
    if (value < 1 || value > 12 || checkDate(day, value, year) == 0) {
        return fail(RT_E_INVFORMAT);
    }
    month = static_cast<int16_t>(value);
    return finishSet();
}

int ASN1CTime::setDay(int value) {
    prepareSet();
    if (value < 1 || value > 31 || checkDate(value, month, year) == 0) {
        return fail(RT_E_INVFORMAT);
    }
    day = static_cast<int16_t>(value);
    return finishSet();
}

int ASN1CTime::setHour(int value) {
    prepareSet();
    if (value < 0 || value > 23) {
        return fail(RT_E_INVFORMAT);
    }
    hour = static_cast<int16_t>(value);
    return finishSet();
}

int ASN1CTime::setMinute(int value) {
    prepareSet();
    if (value < 0 || value > 59) {
        return fail(RT_E_INVFORMAT);
    }
    minute = static_cast<int16_t>(value);
    return finishSet();
}

int ASN1CTime::setSecond(int value) {
    prepareSet();
    if (value < 0 || value > 59) {
        return fail(RT_E_INVFORMAT);
    }
    second = static_cast<int16_t>(value);
    return finishSet();
}

int ASN1CTime::setFraction(int value) {
    prepareSet();
    secFraction = value;
    return finishSet();
}

int ASN1CTime::setDiffHour(int hours) {
    prepareSet();
    return setDiff(hours, diffMinute);
}

int ASN1CTime::setDiff(int hours, int minutes) {
    prepareSet();
    if (hours < -kMaxOffsetHours || hours > kMaxOffsetHours || minutes < -59 || minutes > 59) {
        return fail(RT_E_INVFORMAT);
    }
    if (hours != 0) {
        minutes = hours < 0 ? -std::abs(minutes) : std::abs(minutes);
    }
    diffHour = static_cast<int16_t>(hours);
    diffMinute = static_cast<int16_t>(minutes);
    return finishSet();
}

int ASN1CTime::setDiff(int minutes) {
    return setDiff(minutes / 60, minutes % 60);
}

int ASN1CTime::setFieldsFromTime(long time, unsigned char diffTime) {
    prepareSet();
    const std::time_t instant = time;
    std::tm utcParts{};
    std::tm parts{};
    if (gmtime_r(&instant, &utcParts) == nullptr || localtime_r(&instant, &parts) == nullptr) {
        return fail(RT_E_INVFORMAT);
    }
    long ahead = 0;
    if (utc != 0) {
        parts = utcParts;
    } else if (diffTime != 0) {
        ahead = minutes_ahead(parts, utcParts);
    }
    if (parts.tm_year < -1900 || parts.tm_year > INT16_MAX - 1900) {
        return fail(RT_E_INVFORMAT);
    }
    year = static_cast<int16_t>(parts.tm_year + 1900);
    month = static_cast<int16_t>(parts.tm_mon + 1);
    day = static_cast<int16_t>(parts.tm_mday);
    hour = static_cast<int16_t>(parts.tm_hour);
    minute = static_cast<int16_t>(parts.tm_min);
    second = static_cast<int16_t>(std::min(parts.tm_sec, 59));  // a leap second has no place in the text
    secFraction = 0;
    diffHour = static_cast<int16_t>(ahead / 60);
    diffMinute = static_cast<int16_t>(ahead % 60);
    return compileString();
}

void ASN1CTime::clear() {
    unsetFields();
    parsed = 1;
    storeText("", 0);
}

int ASN1CTime::getTimeStringLen() const {
    return *textPointer == nullptr ? 0 : static_cast<int>(std::strlen(*textPointer));
}

char* ASN1CTime::getTimeString(char* buf, int size) const {
    const int length = getTimeStringLen();
    if (size <= length) {
        return nullptr;
    }
    std::memcpy(buf, length == 0 ? "" : *textPointer, static_cast<size_t>(length) + 1);
    return buf;
}
