// INTEGER of any size (X.690 8.3) as text.

#include <algorithm>
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

// Digits of a base that divides an octet evenly.
class OctetDigits {
  public:
    OctetDigits(std::string_view digits, unsigned bits_per_digit)
        : digits_(digits), bits_(bits_per_digit), per_octet_(8 / bits_per_digit) {}

    bool valid() const {
        return std::all_of(digits_.begin(), digits_.end(), [this](char c) { return value(c) >> bits_ == 0; });
    }
    bool empty() const { return digits_.empty(); }
    bool whole_octets() const { return digits_.size() % per_octet_ == 0; }
    /// Of the first digit.
    bool top_bit() const { return !empty() && value(digits_.front()) >> (bits_ - 1) != 0; }
    size_t octet_count() const { return (digits_.size() + per_octet_ - 1) / per_octet_; }

    void drop_zero_digits() {
        digits_.remove_prefix(std::min(digits_.find_first_not_of('0'), digits_.size()));
    }
    void drop_all_ones_octets() {
        while (!empty() && octet_before(digits_.size() - per_octet_) == 0xFF) {
            digits_.remove_prefix(per_octet_);
        }
    }
    size_t size() const { return digits_.size(); }

    void put(uint8_t* behind) const {
        for (size_t left = 0; left < digits_.size(); left += per_octet_) {
            *--behind = octet_before(left);
        }
    }

  private:
    static unsigned value(char c) {
        if (c >= '0' && c <= '9') {
            return static_cast<unsigned>(c - '0');
        }
        const char lower = static_cast<char>(c | 0x20);
        return lower >= 'a' && lower <= 'f' ? static_cast<unsigned>(lower - 'a') + 10 : 0xFF;
    }

    // The octet whose last digit has `behind` digits behind it; incomplete at the front of the text.
    uint8_t octet_before(size_t behind) const {
        const size_t end = digits_.size() - behind;
        unsigned octet = 0;
        for (size_t i = end - std::min(end, per_octet_); i < end; ++i) {
            octet = octet << bits_ | value(digits_[i]);
        }
        return static_cast<uint8_t>(octet);
    }

    std::string_view digits_;
    unsigned bits_;
    size_t per_octet_;
};

std::optional<OctetDigits> octet_digits(std::string_view text) {
    if (text == "0") {
        return OctetDigits({}, 4);
    }
    if (text.starts_with("0x")) {
        return OctetDigits(text.substr(2), 4);
    }
    if (text.starts_with("0b")) {
        return OctetDigits(text.substr(2), 1);
    }
    return std::nullopt;
}

int write_digits(ASN1CTXT* ctxt, const OctetDigits& digits, std::optional<uint8_t> front) {
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

int write_signed(ASN1CTXT* ctxt, OctetDigits digits) {
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
int write_magnitude(ASN1CTXT* ctxt, OctetDigits digits) {
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
    const std::optional<OctetDigits> digits = octet_digits(text);
    if (!digits) {
        return write_decimal(ctxt, text);
    }
    return digits->valid() ? write_signed(ctxt, *digits) : RT_E_BADVALUE;
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
    const std::optional<OctetDigits> digits = octet_digits(text);
    if (!digits || !digits->valid()) {
        return RT_E_BADVALUE;
    }
    return finish_value(ctxt, kInteger, tagging, write_magnitude(ctxt, *digits));
}

int xd_bigint(ASN1CTXT* ctxt, char** text, ASN1TagType tagging, int length) {
    int status = tagging == ASN1EXPL ? take_primitive_header(ctxt, kInteger, length) : RT_OK;
    if (status == RT_OK) {
        status = read_number(ctxt, text, length);
    }
    return status == RT_OK ? RT_OK : rtErrSetData(&ctxt->errInfo, status);
}

}  // extern "C"
