#include <cstdio>
#include <cstdlib>

#include "runtime/time_class.h"

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
    char text[80];
    char* end = text;
    const auto left = [&] { return static_cast<size_t>(text + sizeof text - end); };
    end += std::snprintf(end, left(), "%.4d%.2d%.2d%.2d", year, month, day, hour);
    if (minute >= 0) {
        end += std::snprintf(end, left(), "%.2d", minute);
        if (second >= 0) {
            end += std::snprintf(end, left(), "%.2d", second);
        }
    }
    if (secFraction > 0) {
        end += std::snprintf(end, left(), ".%d", secFraction);
    }
    const char sign = diffHour < 0 || diffMinute < 0 ? '-' : '+';
    if (utc != 0) {
        end += std::snprintf(end, left(), "Z");
    } else if (diffMinute != 0) {
        end += std::snprintf(end, left(), "%c%.2d%.2d", sign, std::abs(diffHour), std::abs(diffMinute));
    } else if (diffHour != 0) {
        end += std::snprintf(end, left(), "%c%.2d", sign, std::abs(diffHour));
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
