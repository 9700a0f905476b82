#include "runtime/time_string.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "runtime/character.h"
#include "runtime/detail/calendar.h"
#include "runtime/detail/decimal_text.h"

using Quillmark::detail::date_exists;
using Quillmark::detail::put_decimal;

namespace {

constexpr size_t kMaxFractionDigits = sizeof(ASN1TimeRecord::fraction) - 1;
constexpr int kMaxOffsetHours = 12;

bool is_digit(char c) {
    return (rtCtypeTable[static_cast<uint8_t>(c)] & RT_CT_DIGIT) != 0;
}

// Reads a time text from left to right. Every step is false for a text that is malformed there.
class TimeReader {
  public:
    TimeReader(const char* text, ASN1TimeRecord& record) : position_(text), record_(record) {}

    // "YYYYMMDD" or "YYMMDD", by a `sscanf` format of three numbers and the octets read.
    bool date(const char* format) {
        int year = 0;
        int month = 0;
        int day = 0;
        int octets = 0;
        if (std::sscanf(position_, format, &year, &month, &day, &octets) != 3 || year < 0) {
            return false;
        }
        position_ += octets;
        record_.year = static_cast<int16_t>(year);
        record_.mon = static_cast<int16_t>(month);
        record_.day = static_cast<int16_t>(day);
        return true;
    }

    bool at_digit() const { return is_digit(*position_); }
    bool at(char c) const { return *position_ == c; }
    bool at_sign() const { return at('+') || at('-'); }

    // One or two digits, up to `most`.
    bool number(int16_t& value, int most) {
        if (!at_digit()) {
            return false;
        }
        int read = *position_++ - '0';
        if (at_digit()) {
            read = read * 10 + (*position_++ - '0');
        }
        value = static_cast<int16_t>(read);
        return read <= most;
    }

    bool fraction() {
        ++position_;
        if (!at_digit()) {
            return false;
        }
        while (at('0')) {
            ++position_;
        }
        // Intended: what stands behind the twentieth digit is not looked at.
        for (size_t i = 0; i < kMaxFractionDigits && at_digit(); ++i) {
            record_.fraction[i] = *position_++;
        }
        return true;
    }

    // A sign and "hh[mm]", or "hhmm" where the minutes are required.
    bool offset(bool minutesRequired) {
        const bool negative = at('-');
        ++position_;
        if (minutesRequired && !four_digits()) {
            return false;
        }
        if (!number(record_.diffHour, kMaxOffsetHours)) {
            return false;
        }
        if (at_digit() && !number(record_.diffMin, 59)) {
            return false;
        }
        if (negative) {
            record_.diffHour = static_cast<int16_t>(-record_.diffHour);
            record_.diffMin = static_cast<int16_t>(-record_.diffMin);
        }
        return true;
    }

    // "Z" as the last character.
    bool utc() {
        ++position_;
        record_.utc = 1;
        return at('\0');
    }

  private:
    bool four_digits() const {
        for (int i = 0; i < 4; ++i) {
            if (!is_digit(position_[i])) {
                return false;
            }
        }
        return true;
    }

    const char* position_;
    ASN1TimeRecord& record_;
};

bool read_generalized_time(const char* text, ASN1TimeRecord& record) {
    TimeReader reader(text, record);
    if (!reader.date("%4d%2d%2d%n") || !date_exists(record.year, record.mon, record.day)) {
        return false;
    }
    if (!reader.number(record.hour, 23)) {
        return false;
    }
    bool hasSeconds = false;
    if (reader.at_digit()) {
        if (!reader.number(record.min, 59)) {
            return false;
        }
        hasSeconds = reader.at_digit();
        if (hasSeconds && !reader.number(record.sec, 59)) {
            return false;
        }
    }
    if (reader.at('.') && !(hasSeconds && reader.fraction())) {
        return false;
    }
    if (reader.at_sign() && !reader.offset(false)) {
        return false;
    }
    // Intended: any other end is that of a local time.
    return !reader.at('Z') || reader.utc();
}

bool read_utc_time(const char* text, ASN1TimeRecord& record) {
    TimeReader reader(text, record);
    if (!reader.date("%2d%2d%2d%n")) {
        return false;
    }
    // RFC 5280 4.1.2.5.1: 50 to 99 are years of 1900.
    record.year = static_cast<int16_t>(record.year + (record.year < 50 ? 2000 : 1900));
    if (!date_exists(record.year, record.mon, record.day)) {
        return false;
    }
    if (!reader.number(record.hour, 23) || !reader.number(record.min, 59)) {
        return false;
    }
    if (reader.at_digit() && !reader.number(record.sec, 59)) {
        return false;
    }
    if (reader.at_sign()) {
        return reader.offset(true) && reader.at('\0');
    }
    return reader.at('Z') && reader.utc();
}

int fail(ASN1CTXT* ctxt, int status) {
    return ctxt == nullptr ? status : rtErrSetData(&ctxt->errInfo, status);
}

using Reader = bool (*)(const char* text, ASN1TimeRecord& record);

int parse(ASN1CTXT* ctxt, const char* text, ASN1TimeRecord* record, Reader reader) {
    ASN1TimeRecord result{};
    if (text == nullptr || !reader(text, result)) {
        return fail(ctxt, RT_E_INVFORMAT);
    }
    *record = result;
    return RT_OK;
}

// Long enough for any values of the record's types.
struct TimeText {
    char text[96];
    int length;
};

TimeText format_generalized_time(const ASN1TimeRecord& record) {
    TimeText out{};
    char* end = put_decimal(out.text, record.year, 4);
    for (const int field : {record.mon, record.day, record.hour, record.min, record.sec}) {
        end = put_decimal(end, field, 2);
    }
    if (record.fraction[0] != '\0') {
        *end++ = '.';
        const char* const digits = record.fraction;
        end = std::copy(digits, digits + strnlen(digits, kMaxFractionDigits), end);
    }
    if (record.utc != 0) {
        *end++ = 'Z';
    } else if (record.diffHour != 0 || record.diffMin != 0) {
        *end++ = record.diffHour < 0 || record.diffMin < 0 ? '-' : '+';
        end = put_decimal(end, std::abs(record.diffHour), 2);
        end = put_decimal(end, std::abs(record.diffMin), 2);
    }
    out.length = static_cast<int>(end - out.text);
    return out;
}

}  // namespace

extern "C" {

const int8_t OS_daysInMonth[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

int rtParseGeneralizedTime(ASN1CTXT* ctxt, const char* text, ASN1TimeRecord* record) {
    return parse(ctxt, text, record, read_generalized_time);
}

int rtParseUTCTime(ASN1CTXT* ctxt, const char* text, ASN1TimeRecord* record) {
    return parse(ctxt, text, record, read_utc_time);
}

int rtMakeGeneralizedTime(ASN1CTXT* ctxt, const ASN1TimeRecord* record, char** text, size_t size) {
    if (record->year < 0 || record->year > 9999 || !date_exists(record->year, record->mon, record->day)) {
        return fail(ctxt, RT_E_INVFORMAT);
    }
    const TimeText made = format_generalized_time(*record);
    if (size == 0) {
        *text = rtUTF8Strdup(ctxt, made.text);
        return *text == nullptr ? fail(ctxt, RT_E_NOMEM) : 0;
    }
    const size_t octets = static_cast<size_t>(made.length) + 1;
    if (octets > size) {
        return fail(ctxt, RT_E_STROVFL);
    }
    std::memcpy(*text, made.text, octets);
    return RT_OK;
}

}  // extern "C"
