#include <cstdlib>

#include "runtime/detail/decimal_text.h"
#include "runtime/time_class.h"

using Quillmark::detail::put_decimal;

ASN1CGeneralizedTime::ASN1CGeneralizedTime(char*& buffer, int size, unsigned char useDerivedUTC)
    : ASN1CTime(buffer, size, useDerivedUTC) {}

ASN1CGeneralizedTime::ASN1CGeneralizedTime(const char*& buffer, unsigned char useDerivedUTC)
    : ASN1CTime(buffer, useDerivedUTC) {}

ASN1CGeneralizedTime::ASN1CGeneralizedTime(ASN1MessageBufferIF& msgBuf, char*& buffer, int size,
                                           unsigned char useDerivedUTC)
    : ASN1CTime(msgBuf, buffer, size, useDerivedUTC) {}

ASN1CGeneralizedTime::ASN1CGeneralizedTime(ASN1MessageBufferIF& msgBuf, const char*& buffer,
                                           unsigned char useDerivedUTC)
    : ASN1CTime(msgBuf, buffer, useDerivedUTC) {}

ASN1CGeneralizedTime::ASN1CGeneralizedTime(ASN1Context& context, char*& buffer, int size,
                                           unsigned char useDerivedUTC)
    : ASN1CTime(context, buffer, size, useDerivedUTC) {}

ASN1CGeneralizedTime::ASN1CGeneralizedTime(ASN1Context& context, const char*& buffer,
                                           unsigned char useDerivedUTC)
    : ASN1CTime(context, buffer, useDerivedUTC) {}

int ASN1CGeneralizedTime::setTime(long time, unsigned char diffTime) {
    return setFieldsFromTime(time, diffTime);
}

int ASN1CGeneralizedTime::parseString(const char* text) {
    ASN1TimeRecord parts;
    const int status = rtParseGeneralizedTime(context(), text, &parts);
    return status != RT_OK ? status : takeFields(parts, text);
}

int ASN1CGeneralizedTime::compileString() {
    if (year < 0 || month < 1 || day < 1 || hour < 0) {
        return fail(RT_E_INVFORMAT);
    }
    char text[80];  // nine numbers of at most eleven characters, of which seven have 16 bits, take less
    char* end = put_decimal(text, year, 4);
    for (const int field : {month, day, hour}) {
        end = put_decimal(end, field, 2);
    }
    if (minute >= 0) {
        end = put_decimal(end, minute, 2);
        if (second >= 0) {
            end = put_decimal(end, second, 2);
        }
    }
    if (secFraction > 0) {
        *end++ = '.';
        end = put_decimal(end, secFraction, 1);
    }
    if (utc != 0) {
        *end++ = 'Z';
    } else if (diffHour != 0 || diffMinute != 0) {
        *end++ = diffHour < 0 || diffMinute < 0 ? '-' : '+';
        end = put_decimal(end, std::abs(diffHour), 2);
        if (diffMinute != 0) {
            end = put_decimal(end, std::abs(diffMinute), 2);
        }
    }
    return storeText(text, static_cast<int>(end - text));
}

int ASN1CGeneralizedTime::getCentury() const {
    const int whole = getYear();
    return whole < 0 ? whole : whole / 100;
}

int ASN1CGeneralizedTime::setCentury(int century) {
    prepareSet();
    if (century < 0 || century > 99) {
        return fail(RT_E_INVFORMAT);
    }
    return setYear(century * 100 + (year < 0 ? 0 : year % 100));
}
