// Reading the dateTime form of XML Schema (XML Schema part 2, 3.2.7).

#include "values/datetime.h"
#include "values/result.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

namespace Quillmark {

namespace {

[[noreturn]] void throw_bad_text() {
    throw CAtlException(HRESULT_FROM_WIN32(ERROR_INVALID_TIME));
}

// What stands behind the seconds has at most this many characters.
constexpr std::size_t kMaxRemainder = 31;

struct Scanned {
    int year, month, day, hour, minute, second;
    std::array<char, kMaxRemainder + 2> remainder;  // one more than is taken, so that too much shows
};

Scanned scan(const char* text) {
    Scanned parts{};
    const int count = std::sscanf(text, "%4d-%2d-%2dT%2d:%2d:%2d%32s", &parts.year, &parts.month, &parts.day,
                                  &parts.hour, &parts.minute, &parts.second, parts.remainder.data());
    if (count != 7 || std::strlen(parts.remainder.data()) > kMaxRemainder) {
        throw_bad_text();
    }
    return parts;
}

struct Zone {
    char sign;
    CDateTimeSpan offset;
};

// Intended: only the sum is tested, so 13:60 passes as 14:00 does, and signs of the parts are not.
CDateTimeSpan read_offset(const char* zone) {
    char sign = 0;
    int hours = 0;
    int minutes = 0;
    if (std::sscanf(zone, "%c%2d:%2d", &sign, &hours, &minutes) < 3) {
        throw_bad_text();
    }
    const CDateTimeSpan offset = CDateTimeSpan::oneHour * static_cast<unsigned int>(hours) +
                                 CDateTimeSpan::oneMinute * static_cast<unsigned int>(minutes);
    if (offset > CDateTimeSpan::oneHour * 14) {
        throw_bad_text();
    }
    return offset;
}

// Cuts the zone off the remainder, which is then the fraction alone. Without a sign the time is UTC.
Zone take_zone(std::string& remainder) {
    std::size_t cut = remainder.find('-');
    if (cut == std::string::npos) {
        cut = remainder.find('+');
    }
    if (cut == std::string::npos) {
        return {'Z', CDateTimeSpan()};
    }
    const Zone zone{remainder[cut], read_offset(remainder.c_str() + cut)};
    remainder.erase(cut);
    return zone;
}

void remove_zone_colon(std::string& remainder) {
    if (remainder.size() >= 3 && remainder[remainder.size() - 3] == ':') {
        remainder.erase(remainder.size() - 3, 1);
    }
}

Zone split_remainder(std::string& remainder) {
    if (remainder.find_first_of("Zz") == std::string::npos) {
        return take_zone(remainder);
    }
    remove_zone_colon(remainder);
    return {'Z', CDateTimeSpan()};
}

CDateTime parse_compact(const Scanned& parts, const std::string& remainder) {
    // Six numbers of at most four and five times two characters: a sign counts among them.
    char fields[32];
    static_cast<void>(std::snprintf(fields, sizeof fields, "%04d%02d%02d%02d%02d%02d", parts.year,
                                    parts.month, parts.day, parts.hour, parts.minute, parts.second));
    return CDateTime((fields + remainder).c_str());
}

}  // namespace

CDateTime fromXsdDateTimeString(const char* text) try {
    const Scanned parts = scan(text != nullptr ? text : "");
    std::string remainder = parts.remainder.data();
    const Zone zone = split_remainder(remainder);
    const CDateTime local = parse_compact(parts, remainder);
    if (zone.sign == '-') {
        return local + zone.offset;
    }
    return local - zone.offset;
} catch (const std::bad_alloc&) {
    throw CAtlException(NTE_NO_MEMORY);
}

}  // namespace Quillmark
