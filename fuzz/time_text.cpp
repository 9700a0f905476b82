// Texts of times. What is read from a text is printed and read again as the same time; a text that is refused
// leaves what the header says; a time that is moved, or whose fields are set, is a time still.

#include <cstring>

#include "asn1/codec.h"
#include "fuzz/input.h"
#include "fuzz/target.h"
#include "runtime/message_buffer.h"
#include "runtime/time_class.h"
#include "values/datetime.h"

namespace Quillmark::fuzz {

namespace {

constexpr Codes kTime = {E_FAIL, HRESULT_FROM_WIN32(ERROR_INVALID_TIME)};
constexpr Codes kMove = {E_FAIL, E_INVALIDARG, HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER)};

ASN1TimeRecord marked_record() {
    ASN1TimeRecord record;
    std::memset(&record, 0x55, sizeof record);
    return record;
}

void require_parts(const ASN1TimeRecord& record) {
    require(record.mon >= 1 && record.mon <= 12, "a month is 1 to 12");
    require(record.day >= 1 && record.day <= 31, "a day is 1 to 31");
    require(record.hour >= 0 && record.hour <= 23, "an hour is 0 to 23");
    require(record.min >= 0 && record.min <= 59, "a minute is 0 to 59");
    require(record.sec >= 0 && record.sec <= 59, "a second is 0 to 59");
    require(record.diffHour >= -12 && record.diffHour <= 12, "an offset is 12 hours at most");
    require(std::memchr(record.fraction, 0, sizeof record.fraction) != nullptr, "a fraction is terminated");
}

using Parse = int (*)(ASN1CTXT*, const char*, ASN1TimeRecord*);

/// Whether the text was read into `record`.
bool parse(Parse parse_text, ASN1CTXT* ctxt, const char* text, ASN1TimeRecord& record) {
    const ASN1TimeRecord before = record;
    const int status = parse_text(ctxt, text, &record);
    rtErrReset(&ctxt->errInfo);
    if (status != RT_OK) {
        require(status == RT_E_INVFORMAT, "a text that is no time is malformed");
        require(std::memcmp(&record, &before, sizeof record) == 0,
                "a malformed text leaves the record alone");
        return false;
    }
    require_parts(record);
    return true;
}

void check_records(const std::string& text) {
    ASN1::ctxt_handle context;
    require(context.init(), "a context is made");
    ASN1CTXT* const ctxt = context.get();
    ASN1TimeRecord record = marked_record();
    parse(rtParseUTCTime, ctxt, text.c_str(), record);
    record = marked_record();
    if (!parse(rtParseGeneralizedTime, ctxt, text.c_str(), record)) {
        return;
    }
    char* printed = nullptr;
    require(rtMakeGeneralizedTime(ctxt, &record, &printed, 0) == RT_OK, "what was read can be printed");
    ASN1TimeRecord again = marked_record();
    require(parse(rtParseGeneralizedTime, ctxt, printed, again), "what was printed can be read");
    char* printed_again = nullptr;
    require(rtMakeGeneralizedTime(ctxt, &again, &printed_again, 0) == RT_OK, "what was read can be printed");
    require(std::strcmp(printed, printed_again) == 0, "what was printed is read as the same time");
}

void set_field(ASN1CTime& time, unsigned which, int value) {
    switch (which % 10) {
        case 0:
            time.setYear(value);
            break;
        case 1:
            time.setMonth(value);
            break;
        case 2:
            time.setDay(value);
            break;
        case 3:
            time.setHour(value);
            break;
        case 4:
            time.setMinute(value);
            break;
        case 5:
            time.setSecond(value);
            break;
        case 6:
            time.setFraction(value);
            break;
        case 7:
            time.setUTC(value & 1);
            break;
        case 8:
            time.setDiff(value);
            break;
        default:
            time.setTime(value, static_cast<unsigned char>(value & 1));
    }
}

constexpr int kLastYear = 9999;  // of a text with four digits; setters take more

/// A time object on a text, its fields read and set in any order. A text that it made is one that it reads.
template <class Time>
void check_object(Input& input) {
    ASN1BEREncodeBuffer buffer;
    const std::string given = input.text();
    const char* text = given.c_str();
    Time time(buffer, text, input.flag() ? 1 : 0);
    (void)time.getYear();
    for (int left = 12; left != 0; --left) {
        const unsigned which = input.octet();
        set_field(time, which, static_cast<std::int16_t>(input.number(2)));
    }
    (void)time.getTime();
    if (time.getYear() <= kLastYear && time.compileString() == RT_OK) {
        const std::string compiled = text;
        const char* copy = compiled.c_str();
        Time again(buffer, copy, 0);
        require(again.getYear() >= 0, "a text that was made can be read");
        require(again.getMonth() == time.getMonth() && again.getDay() == time.getDay() &&
                    again.getHour() == time.getHour() && again.getMinute() == time.getMinute(),
                "a text that was made is read with the same fields");
        require(static_cast<std::size_t>(time.getTimeStringLen()) == compiled.size(),
                "a text has its length");
    }
}

void check_date_time(const std::string& text) {
    attempt("CDateTime", kTime, [&] {
        const CDateTime time(text.c_str());
        must("printing", [&] {
            require(CDateTime(time.getGeneralizedTime().c_str()) == time,
                    "what was printed is read as it was");
            (void)time.tostring();
            (void)time.getGeneralizedTimeTrimMicroseconds();
        });
    });
    attempt("CDateTimeSpan", kTime, [&] {
        const CDateTimeSpan span(text.c_str());
        (void)span.getGeneralizedTime();
    });
    attempt("fromXsdDateTimeString", kTime, [&] {
        const CDateTime time = fromXsdDateTimeString(text.c_str());
        must("printing", [&] {
            const CStringProxy printed = toXsdDateTimeString(time);
            require(std::string(toXsdDateTimeString(fromXsdDateTimeString(printed.c_str())).c_str()) ==
                        printed.c_str(),
                    "what was printed is read as it was");
        });
    });
}

void check_moving(Input& input) {
    const std::string unit = input.text();
    const int number = static_cast<int>(input.number(4));
    const CDateTime start(static_cast<long long>(input.number(4)), input.number(4) % 1'000'000);
    attempt("DateAddA", kMove, [&] { (void)DateAddA(unit.c_str(), number, start); });
    attempt("DateAddW", kMove,
            [&] { (void)DateAddW(std::wstring(unit.begin(), unit.end()).c_str(), number, start); });
}

}  // namespace

void check_time_text(Octets octets) {
    Input input(octets);
    switch (input.octet() % 5) {
        case 0:
            return check_records(input.rest_as_text());
        case 1:
            return check_object<ASN1CGeneralizedTime>(input);
        case 2:
            return check_object<ASN1CUTCTime>(input);
        case 3:
            return check_moving(input);
        default:
            return check_date_time(input.rest_as_text());
    }
}

}  // namespace Quillmark::fuzz
