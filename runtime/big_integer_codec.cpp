// INTEGER of any size (X.690 8.3) as text.

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "runtime/ber_decode.h"
#include "runtime/big_integer.h"
#include "runtime/der_encode.h"
#include "runtime/detail/decode_position.h"
#include "runtime/detail/element.h"
#include "runtime/detail/encode_space.h"

using Quillmark::detail::contents_here;
using Quillmark::detail::finish_value;
using Quillmark::detail::take_front;
using Quillmark::detail::take_primitive_header;

namespace {

constexpr uint8_t kInteger = 2;

// The value of every character as a hexadecimal digit; one that is none has high bits.
constexpr std::array<uint8_t, 256> kDigitValues = [] {
    std::array<uint8_t, 256> values{};
    values.fill(0xFF);
    for (uint8_t digit = 0; digit < 10; ++digit) {
        values['0' + digit] = digit;
    }
    for (uint8_t letter = 0; letter < 6; ++letter) {
        values['a' + letter] = values['A' + letter] = static_cast<uint8_t>(10 + letter);
    }
    return values;
}();

// Digits of a base that divides an octet evenly.
template <unsigned BitsPerDigit>
class OctetDigits {
  public:
    explicit OctetDigits(std::string_view digits) : digits_(digits) {}

    bool valid() const {
        unsigned all = 0;
        for (const char c : digits_) {
            all |= value(c);
        }
        return all >> BitsPerDigit == 0;
    }
    bool empty() const { return digits_.empty(); }
    bool whole_octets() const { return digits_.size() % kPerOctet == 0; }
    /// Of the first digit.
    bool top_bit() const { return !empty() && value(digits_.front()) >> (BitsPerDigit - 1) != 0; }
    size_t octet_count() const { return (digits_.size() + kPerOctet - 1) / kPerOctet; }

    void drop_zero_digits() {
        digits_.remove_prefix(std::min(digits_.find_first_not_of('0'), digits_.size()));
    }
    void drop_all_ones_octets() {
        while (!empty() && octet(0, kPerOctet) == 0xFF) {
            digits_.remove_prefix(kPerOctet);
        }
    }
    size_t size() const { return digits_.size(); }

    void put(uint8_t* behind) const {
        size_t end = digits_.size();
        for (; end >= kPerOctet; end -= kPerOctet) {
            *--behind = octet(end - kPerOctet, end);
        }
        if (end != 0) {
            *--behind = octet(0, end);
        }
    }

  private:
    static constexpr size_t kPerOctet = 8 / BitsPerDigit;

    static unsigned value(char c) { return kDigitValues[static_cast<uint8_t>(c)]; }

    uint8_t octet(size_t begin, size_t end) const {
        unsigned octet = 0;
        for (size_t i = begin; i < end; ++i) {
            octet = octet << BitsPerDigit | value(digits_[i]);
        }
        return static_cast<uint8_t>(octet);
    }

    std::string_view digits_;
};

using HexDigits = OctetDigits<4>;
using BinaryDigits = OctetDigits<1>;

// Hands the digits of a text in such a base to `write`; nothing for a text in another base.
template <typename Write>
std::optional<int> write_octet_digits(std::string_view text, Write write) {
    if (text == "0") {
        return write(HexDigits({}));
    }
    if (text.starts_with("0x")) {
        return write(HexDigits(text.substr(2)));
    }
    if (text.starts_with("0b")) {
        return write(BinaryDigits(text.substr(2)));
    }
    return std::nullopt;
}

template <typename Digits>
int write_digits(ASN1CTXT* ctxt, const Digits& digits, std::optional<uint8_t> front) {
    const size_t size = digits.octet_count() + (front ? 1 : 0);
    uint8_t* octets;
    const int status = take_front(ctxt, octets, size);
    if (status != RT_OK) {
        return status;
    }
    if (front) {
        *octets = *front;
    }
    digits.put(octets + size);
    return static_cast<int>(size);
}

template <typename Digits>
int write_signed(ASN1CTXT* ctxt, Digits digits) {
    if (!digits.valid()) {
        return RT_E_BADVALUE;
    }
    const bool negative = digits.whole_octets() && digits.top_bit();
    if (negative) {
        digits.drop_all_ones_octets();
    } else {
        digits.drop_zero_digits();
    }
    // An incomplete top octet has its top bit clear, and only positive numbers have one.
    const bool reads_negative = digits.whole_octets() && digits.top_bit();
    std::optional<uint8_t> sign;
    if (digits.empty() || reads_negative != negative) {
        sign = negative ? 0xFF : 0x00;
    }
    return write_digits(ctxt, digits, sign);
}

// Intended: a set top bit gets its octet 00 only where the text asks for it by leading zeros.
template <typename Digits>
int write_magnitude(ASN1CTXT* ctxt, Digits digits) {
    if (!digits.valid()) {
        return RT_E_BADVALUE;
    }
    const size_t given = digits.size();
    digits.drop_zero_digits();
    std::optional<uint8_t> front;
    if (digits.whole_octets() && (digits.empty() || digits.size() != given)) {
        front = 0x00;
    }
    return write_digits(ctxt, digits, front);
}

int write_decimal(ASN1CTXT* ctxt, const char* text) {
    ASN1BigInt number;
    rtBigIntInit(&number);
    int result = rtBigIntSetStr(ctxt, &number, text, 10);
    if (result == RT_OK) {
        const int size = rtBigIntGetDataLen(&number);
        uint8_t* octets;
        result = take_front(ctxt, octets, static_cast<size_t>(size));
        result = result == RT_OK ? rtBigIntGetData(ctxt, &number, octets, size) : result;
    }
    rtBigIntFree(ctxt, &number);
    return result;
}

int write_number(ASN1CTXT* ctxt, const char* text) {
    const std::optional<int> written =
        write_octet_digits(text, [ctxt](auto digits) { return write_signed(ctxt, digits); });
    return written ? *written : write_decimal(ctxt, text);
}

bool is_empty(const char* text) {
    return text == nullptr || *text == '\0';
}

char* put_octet(char* out, uint8_t octet) {
    static constexpr char kDigits[] = "0123456789abcdef";
    *out++ = kDigits[octet >> 4];
    *out++ = kDigits[octet & 0x0F];
    return out;
}

void write_text(char* out, const uint8_t* octets, uint32_t count) {
    *out++ = '0';
    *out++ = 'x';
    const uint8_t* const end = octets + count;
    const uint8_t* const first = std::find_if(octets, end, [](uint8_t octet) { return octet != 0; });
    const bool sign_was_skipped = first != octets && first != end && (*first & 0x80) != 0;
    if (first == end || sign_was_skipped) {
        *out++ = '0';
    }
    for (const uint8_t* octet = first; octet != end; ++octet) {
        out = put_octet(out, *octet);
    }
    *out = '\0';
}

int read_number(ASN1CTXT* ctxt, char** text, int length) {
    if (length < 0) {
        return RT_E_INVLEN;
    }
    const uint32_t count = static_cast<uint32_t>(length);
    const uint8_t* octets = contents_here(ctxt, count);
    if (octets == nullptr && count != 0) {
        return RT_E_ENDOFBUF;
    }
    const size_t longest = sizeof("0x0") + 2 * size_t{count};
    char* block = static_cast<char*>(rtMemHeapAlloc(&ctxt->typeHeap, longest));
    if (block == nullptr) {
        return RT_E_NOMEM;
    }
    write_text(block, octets, count);
    ctxt->buffer.byteIndex += count;
    *text = block;
    return RT_OK;
}

}  // namespace

extern "C" {

int xe_bigint(ASN1CTXT* ctxt, const char* text, ASN1TagType tagging) {
    if (is_empty(text)) {
        return RT_E_BADVALUE;
    }
    return finish_value(ctxt, kInteger, tagging, write_number(ctxt, text));
}

int xe_biguint(ASN1CTXT* ctxt, const char* text, ASN1TagType tagging) {
    if (is_empty(text)) {
        return RT_E_BADVALUE;
    }
    const std::optional<int> written =
        write_octet_digits(text, [ctxt](auto digits) { return write_magnitude(ctxt, digits); });
    return finish_value(ctxt, kInteger, tagging, written.value_or(RT_E_BADVALUE));
}

int xd_bigint(ASN1CTXT* ctxt, char** text, ASN1TagType tagging, int length) {
    int status = tagging == ASN1EXPL ? take_primitive_header(ctxt, kInteger, length) : RT_OK;
    if (status == RT_OK) {
        status = read_number(ctxt, text, length);
    }
    return status == RT_OK ? RT_OK : rtErrSetData(&ctxt->errInfo, status);
}

}  // extern "C"
