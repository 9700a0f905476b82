#include <cstdlib>

#include "runtime/detail/decimal_text.h"
#include "runtime/time_class.h"

using Quillmark::detail::put_decimal;

// A text of this type must end in "Z" or an offset (X.680 47.3), so a new object has the flag for "Z".

ASN1CUTCTime::ASN1CUTCTime(char*& buffer, int size, unsigned char useDerivedUTC)
    : ASN1CTime(buffer, size, useDerivedUTC) {
    utc = 1;
}

ASN1CUTCTime::ASN1CUTCTime(const char*& buffer, unsigned char useDerivedUTC)
    : ASN1CTime(buffer, useDerivedUTC) {
    utc = 1;
}

ASN1CUTCTime::ASN1CUTCTime(ASN1MessageBufferIF& msgBuf, char*& buffer, int size, unsigned char useDerivedUTC)
    : ASN1CTime(msgBuf, buffer, size, useDerivedUTC) {
    utc = 1;
}

ASN1CUTCTime::ASN1CUTCTime(ASN1MessageBufferIF& msgBuf, const char*& buffer, unsigned char useDerivedUTC)
    : ASN1CTime(msgBuf, buffer, useDerivedUTC) {
    utc = 1;
}

ASN1CUTCTime::ASN1CUTCTime(ASN1Context& context, char*& buffer, int size, unsigned char useDerivedUTC)
    : ASN1CTime(context, buffer, size, useDerivedUTC) {
    utc = 1;
}

ASN1CUTCTime::ASN1CUTCTime(ASN1Context& context, const char*& buffer, unsigned char useDerivedUTC)
    : ASN1CTime(context, buffer, useDerivedUTC) {
    utc = 1;
}

int ASN1CUTCTime::getFraction() const {
    return 0;
}

int ASN1CUTCTime::setUTC(int flag) {
    prepareSet();
    if (flag == 0 && diffHour == 0 && diffMinute == 0) {
        return RT_OK;
    }
    return ASN1CTime::setUTC(flag);
}

int ASN1CUTCTime::setYear(int value) {
    // RFC 5280 4.1.2.5.1: 50 to 99 are years of 1900.
    if (value >= 0 && value < 100) {
        value += value < 50 ? 2000 : 1900;
    }
    return ASN1CTime::setYear(value);
}

int ASN1CUTCTime::setFraction(int /*value*/) {
    secFraction = 0;
    return fail(RT_E_NOTSUPP);
}

int ASN1CUTCTime::setTime(long time, unsigned char diffTime) {
    return setFieldsFromTime(time, diffTime);
}

int ASN1CUTCTime::parseString(const char* text) {
    ASN1TimeRecord parts;
    const int status = rtParseUTCTime(context(), text, &parts);
    return status != RT_OK ? status : takeFields(parts, text);
}

void ASN1CUTCTime::clear() {
    ASN1CTime::clear();
    utc = 1;
}

int ASN1CUTCTime::compileString() {
    if (year < 0 || month < 1 || day < 1 || hour < 0) {
        return fail(RT_E_INVFORMAT);
    }
    char text[64];  // eight numbers of 16 bits and a sign take less
    char* end = text;
    for (const int field : {year % 100, int{month}, int{day}, int{hour}, int{minute}, int{second}}) {
        end = put_decimal(end, field, 2);
    }
    if (utc != 0) {
        *end++ = 'Z';
    } else {
        *end++ = diffHour < 0 || diffMinute < 0 ? '-' : '+';
        end = put_decimal(end, std::abs(diffHour), 2);
        end = put_decimal(end, std::abs(diffMinute), 2);
    }
    return storeText(text, static_cast<int>(end - text));
}
