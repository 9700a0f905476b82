#include "runtime/big_integer.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

namespace {

using Digits = std::string_view;

// Number text is worked on in groups of digits that fill at most one octet. Indexed by base / 2.
constexpr int bitsPerDigit[] = {0, 1024, 0, 0, 3072, 3402, 0, 0, 4096};  // times 1024
constexpr size_t digitsPerByte[] = {0, 8, 0, 0, 2, 2, 0, 0, 2};
constexpr uint32_t byteRadix[] = {0, 256, 0, 0, 64, 100, 0, 0, 256};

struct NumberText {
    Digits digits;
    int base;
};

bool is_base(int radix) {
    return radix == 2 || radix == 8 || radix == 10 || radix == 16;
}

Digits without_blanks(Digits text) {
    while (!text.empty() && (text.front() == ' ' || (text.front() >= '\t' && text.front() <= '\r'))) {
        text.remove_prefix(1);
    }
    return text;
}

NumberText detect_prefix(Digits text) {
    if (text.starts_with("0b")) {
        return {text.substr(2), 2};
    }
    if (text.starts_with("0o")) {
        return {text.substr(2), 8};
    }
    if (text.starts_with("0x")) {
        return {text.substr(2), 16};
    }
    return {text, 10};
}

int digit_value(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return 16;
}

std::optional<uint32_t> read_group(Digits group, int base) {
    uint32_t value = 0;
    for (const char c : group) {
        const int digit = digit_value(c);
        if (digit >= base) {
            return std::nullopt;
        }
        value = value * static_cast<uint32_t>(base) + static_cast<uint32_t>(digit);
    }
    return value;
}

// `magnitude` times `factor` plus `addend`. The magnitude has room for the result.
void multiply_add(std::span<uint8_t> magnitude, uint32_t factor, uint32_t addend) {
    uint32_t carry = addend;
    for (size_t i = magnitude.size(); i-- != 0;) {
        carry += magnitude[i] * factor;
        magnitude[i] = static_cast<uint8_t>(carry);
        carry >>= 8;
    }
}

// Divides in place and returns the remainder.
uint32_t divide(std::span<uint8_t> magnitude, uint32_t divisor) {
    uint32_t remainder = 0;
    for (uint8_t& octet : magnitude) {
        const uint32_t dividend = remainder << 8 | octet;
        octet = static_cast<uint8_t>(dividend / divisor);
        remainder = dividend % divisor;
    }
    return remainder;
}

std::span<uint8_t> without_leading_zeros(std::span<uint8_t> magnitude) {
    const auto first =
        std::find_if(magnitude.begin(), magnitude.end(), [](uint8_t octet) { return octet != 0; });
    return {first, magnitude.end()};
}

void set_zero(ASN1BigInt* number) {
    number->numocts = 0;
    number->sign = 0;
}

// Room for `octets` cleared octets at `mag`. A caller's array that is too small is left for the heap.
int take_room(ASN1CTXT* ctxt, ASN1BigInt* number, size_t octets) {
    if (octets > INT32_MAX) {
        return RT_E_NOMEM;
    }
    if (number->mag == nullptr || octets > static_cast<size_t>(std::max(number->allocated, 0))) {
        void* block = number->dynamic != 0 ? rtMemHeapRealloc(&ctxt->typeHeap, number->mag, octets)
                                           : rtMemHeapAlloc(&ctxt->typeHeap, octets);
        if (block == nullptr) {
            return RT_E_NOMEM;
        }
        number->mag = static_cast<uint8_t*>(block);
        number->allocated = static_cast<int32_t>(octets);
        number->dynamic = 1;
    }
    std::memset(number->mag, 0, octets);
    number->numocts = static_cast<int32_t>(octets);
    return RT_OK;
}

void drop_leading_zeros(ASN1BigInt* number) {
    if (number->numocts == 0) {
        return;
    }
    const std::span<uint8_t> all(number->mag, static_cast<size_t>(number->numocts));
    const std::span<uint8_t> kept = without_leading_zeros(all);
    std::memmove(number->mag, kept.data(), kept.size());
    number->numocts = static_cast<int32_t>(kept.size());
    if (kept.empty()) {
        number->sign = 0;
    }
}

// Calls `take` with the value of each group, the first one being what is left over by whole groups. False
// for anything but digits.
template <typename Take>
bool for_each_group(NumberText text, Take take) {
    const size_t whole = digitsPerByte[text.base / 2];
    const size_t rest = text.digits.size() % whole;
    size_t size = rest == 0 ? whole : rest;
    for (Digits left = text.digits; !left.empty(); size = whole) {
        const std::optional<uint32_t> group = read_group(left.substr(0, size), text.base);
        if (!group) {
            return false;
        }
        take(*group);
        left.remove_prefix(size);
    }
    return true;
}

// Bases 2 and 16: a group is an octet.
int set_octets(ASN1CTXT* ctxt, ASN1BigInt* number, NumberText text) {
    const size_t perOctet = digitsPerByte[text.base / 2];
    const size_t octets = text.digits.size() / perOctet + (text.digits.size() % perOctet != 0 ? 1 : 0);
    if (const int status = take_room(ctxt, number, octets); status != RT_OK) {
        return status;
    }
    number->sign = 1;
    uint8_t* next = number->mag;
    const bool good =
        for_each_group(text, [&next](uint32_t octet) { *next++ = static_cast<uint8_t>(octet); });
    return good ? RT_OK : RT_E_BADVALUE;
}

// Bases 8 and 10.
int set_by_arithmetic(ASN1CTXT* ctxt, ASN1BigInt* number, NumberText text) {
    number->sign = 1;
    if (text.digits.front() == '-') {
        number->sign = -1;
        text.digits.remove_prefix(1);
        if (text.digits.empty()) {
            return RT_E_BADVALUE;
        }
    }
    text.digits.remove_prefix(std::min(text.digits.find_first_not_of('0'), text.digits.size()));
    if (text.digits.empty()) {
        set_zero(number);
        return RT_OK;
    }
    const size_t bits = text.digits.size() * static_cast<size_t>(bitsPerDigit[text.base / 2]) / 1024;
    if (const int status = take_room(ctxt, number, (bits + 8) / 8); status != RT_OK) {
        return status;
    }
    const std::span<uint8_t> magnitude(number->mag, static_cast<size_t>(number->numocts));
    const bool good = for_each_group(
        text, [&](uint32_t group) { multiply_add(magnitude, byteRadix[text.base / 2], group); });
    return good ? RT_OK : RT_E_BADVALUE;
}

bool is_zero(const ASN1BigInt* number) {
    return number->sign == 0 || number->numocts <= 0;
}

// The top octet of the two's complement of a magnitude in as many octets.
uint8_t negated_top(const ASN1BigInt* number) {
    const bool lowerAreZero =
        std::all_of(number->mag + 1, number->mag + number->numocts, [](uint8_t octet) { return octet == 0; });
    return static_cast<uint8_t>(~number->mag[0] + (lowerAreZero ? 1 : 0));
}

void negate(std::span<uint8_t> octets) {
    uint32_t carry = 1;
    for (size_t i = octets.size(); i-- != 0;) {
        carry += static_cast<uint8_t>(~octets[i]);
        octets[i] = static_cast<uint8_t>(carry);
        carry >>= 8;
    }
}

// Takes the lowest group of digits off. In the bases 2 and 16 that is the last octet.
uint32_t take_group(std::span<uint8_t>& magnitude, int base) {
    if (base == 2 || base == 16) {
        const uint32_t octet = magnitude.back();
        magnitude = magnitude.first(magnitude.size() - 1);
        return octet;
    }
    const uint32_t group = divide(magnitude, byteRadix[base / 2]);
    magnitude = without_leading_zeros(magnitude);
    return group;
}

// Writes the digits of `magnitude`, which it uses up, to the end of `out`. Returns their number, or nothing
// when `out` is too small.
std::optional<size_t> write_digits(std::span<uint8_t> magnitude, int base, std::span<char> out) {
    constexpr char kDigits[] = "0123456789abcdef";
    size_t written = 0;
    magnitude = without_leading_zeros(magnitude);
    while (!magnitude.empty()) {
        uint32_t group = take_group(magnitude, base);
        for (size_t i = 0; i < digitsPerByte[base / 2] && (group != 0 || !magnitude.empty()); ++i) {
            if (written == out.size()) {
                return std::nullopt;
            }
            out[out.size() - ++written] = kDigits[group % static_cast<uint32_t>(base)];
            group /= static_cast<uint32_t>(base);
        }
    }
    return written;
}

int compare_sizes_and_octets(const ASN1BigInt& a, const ASN1BigInt& b) {
    if (a.numocts != b.numocts) {
        return a.numocts < b.numocts ? -1 : 1;
    }
    return a.numocts == 0 ? 0 : std::memcmp(a.mag, b.mag, static_cast<size_t>(a.numocts));
}

int compare(const ASN1BigInt& a, const ASN1BigInt& b) {
    if (a.sign != b.sign) {
        return a.sign < b.sign ? -1 : 1;
    }
    const int magnitudes = compare_sizes_and_octets(a, b);
    return a.sign < 0 ? -magnitudes : magnitudes;
}

// A number in an array of its own, for the sizes that occur; larger ones move to the heap.
class LocalNumber {
  public:
    explicit LocalNumber(ASN1CTXT* ctxt) : ctxt_(ctxt) {
        rtBigIntInit(&number_);
        number_.mag = room_;
        number_.allocated = sizeof room_;
    }
    ~LocalNumber() { rtBigIntFree(ctxt_, &number_); }
    LocalNumber(const LocalNumber&) = delete;
    LocalNumber& operator=(const LocalNumber&) = delete;

    int set(const char* text) { return rtBigIntSetStr(ctxt_, &number_, text, 0); }
    const ASN1BigInt& value() const { return number_; }

  private:
    ASN1CTXT* ctxt_;
    ASN1BigInt number_;
    uint8_t room_[256];
};

}  // namespace

extern "C" {

void rtBigIntInit(ASN1BigInt* number) {
    *number = ASN1BigInt{};
}

void rtBigIntFree(ASN1CTXT* ctxt, ASN1BigInt* number) {
    if (number->dynamic != 0) {
        rtMemHeapFreePtr(&ctxt->typeHeap, number->mag);
        number->mag = nullptr;
        number->allocated = 0;
        number->dynamic = 0;
    }
    set_zero(number);
}

int rtBigIntSetStr(ASN1CTXT* ctxt, ASN1BigInt* number, const char* text, int radix) {
    set_zero(number);
    if (radix != 0 && !is_base(radix)) {
        return RT_E_INVPARAM;
    }
    const Digits digits = without_blanks(text == nullptr ? Digits() : Digits(text));
    const NumberText parts = radix == 0 ? detect_prefix(digits) : NumberText{digits, radix};
    if (parts.digits.empty()) {
        return RT_E_BADVALUE;
    }
    const bool byOctets = parts.base == 2 || parts.base == 16;
    const int status = byOctets ? set_octets(ctxt, number, parts) : set_by_arithmetic(ctxt, number, parts);
    if (status != RT_OK) {
        set_zero(number);
        return status;
    }
    drop_leading_zeros(number);
    return RT_OK;
}

int rtBigIntGetDataLen(const ASN1BigInt* number) {
    if (is_zero(number)) {
        return 1;
    }
    const bool topBit = ((number->sign > 0 ? number->mag[0] : negated_top(number)) & 0x80) != 0;
    // X.690 8.3.3: the top bit is the sign.
    return number->numocts + (topBit == (number->sign > 0) ? 1 : 0);
}

int rtBigIntGetData(ASN1CTXT* /*ctxt*/, const ASN1BigInt* number, uint8_t* octets, int room) {
    const int length = rtBigIntGetDataLen(number);
    if (room < length) {
        return RT_E_STROVFL;
    }
    if (is_zero(number)) {
        octets[0] = 0;
        return length;
    }
    const std::span<uint8_t> out(octets, static_cast<size_t>(length));
    const size_t magnitude = static_cast<size_t>(number->numocts);
    out[0] = 0;  // the octet in front, where there is one
    std::memcpy(out.last(magnitude).data(), number->mag, magnitude);
    if (number->sign < 0) {
        negate(out);
    }
    return length;
}

int rtBigIntDigitsNum(const ASN1BigInt* number, int radix) {
    const int base = radix == 0 ? 10 : radix;
    if (!is_base(base)) {
        return RT_E_INVPARAM;
    }
    const int64_t bits = int64_t{number->numocts} * 8 + 1;
    return static_cast<int>(std::min<int64_t>(bits * 1024 / bitsPerDigit[base / 2], INT32_MAX));
}

int rtBigIntToString(ASN1CTXT* ctxt, const ASN1BigInt* number, int radix, char* text, int room) {
    const int base = radix == 0 ? 10 : radix;
    if (!is_base(base)) {
        return RT_E_INVPARAM;
    }
    if (room < 2) {
        return RT_E_STROVFL;
    }
    if (is_zero(number)) {
        std::memcpy(text, "0", 2);
        return RT_OK;
    }
    const size_t octets = static_cast<size_t>(number->numocts);
    auto* copy = static_cast<uint8_t*>(rtMemHeapAlloc(&ctxt->typeHeap, octets));
    if (copy == nullptr) {
        return RT_E_NOMEM;
    }
    std::memcpy(copy, number->mag, octets);
    const size_t signs = number->sign < 0 ? 1 : 0;
    const std::span<char> digits(text + signs, static_cast<size_t>(room) - 1 - signs);
    const std::optional<size_t> written = write_digits({copy, octets}, base, digits);
    rtMemHeapFreePtr(&ctxt->typeHeap, copy);
    if (!written) {
        return RT_E_STROVFL;
    }
    if (signs != 0) {
        text[0] = '-';
    }
    std::memmove(digits.data(), digits.last(*written).data(), *written);
    digits.data()[*written] = '\0';
    return RT_OK;
}

int rtBigIntStrCompare(ASN1CTXT* ctxt, const char* a, const char* b) {
    LocalNumber left(ctxt);
    LocalNumber right(ctxt);
    if (left.set(a) != RT_OK || right.set(b) != RT_OK) {
        return Digits(a == nullptr ? "" : a).compare(b == nullptr ? "" : b);
    }
    return compare(left.value(), right.value());
}

}  // extern "C"
