#include "runtime/der_encode.h"

#include <bit>
#include <cstring>

#include "runtime/detail/encode_space.h"

using Quillmark::detail::finish_value;
using Quillmark::detail::take_front;

namespace {

// The universal tags of X.680 8.4, one octet each.
constexpr ASN1TAG kBoolean = 1;
constexpr ASN1TAG kInteger = 2;
constexpr ASN1TAG kBitString = 3;
constexpr ASN1TAG kOctetString = 4;
constexpr ASN1TAG kNull = 5;
constexpr ASN1TAG kObjectIdentifier = 6;
constexpr ASN1TAG kEnumerated = 10;

// The low `count` octets of `value`, most significant first.
int write_octets(ASN1CTXT* ctxt, uint64_t value, int count) {
    uint8_t* octets;
    const int status = take_front(ctxt, octets, static_cast<size_t>(count));
    if (status != RT_OK) {
        return status;
    }
    for (int i = count - 1; i >= 0; --i, value >>= 8) {
        octets[i] = static_cast<uint8_t>(value);
    }
    return count;
}

// X.690 8.3.2: the first nine bits are never all equal, so a value takes one sign bit and its own bits.
int write_integer(ASN1CTXT* ctxt, int64_t value) {
    const uint64_t magnitude = static_cast<uint64_t>(value < 0 ? ~value : value);
    return write_octets(ctxt, static_cast<uint64_t>(value),
                        static_cast<int>(std::bit_width(magnitude)) / 8 + 1);
}

// Seven bits an octet.
constexpr size_t kMostArcOctets = 5;

uint8_t* put_base128(uint8_t* behind, uint32_t value) {
    *--behind = value & 0x7F;
    for (value >>= 7; value != 0; value >>= 7) {
        *--behind = static_cast<uint8_t>(0x80 | (value & 0x7F));
    }
    return behind;
}

// X.690 8.19.4 puts the first two arcs into one subidentifier: X * 40 + Y, with Y below 40 under 0 and 1.
bool is_encodable(const ASN1OBJID* value) {
    if (value == nullptr || value->numids < 2 || value->numids > ASN1_K_MAXSUBIDS) {
        return false;
    }
    const uint32_t first = value->subid[0];
    const uint32_t second = value->subid[1];
    return first < 2 ? second <= 39 : first == 2 && second <= UINT32_MAX - 80;
}

template <typename Character>
int write_characters(ASN1CTXT* ctxt, const Character* characters, uint32_t count) {
    const uint64_t size = uint64_t{count} * sizeof(Character);
    uint8_t* octets;
    const int status = take_front(ctxt, octets, size);
    if (status != RT_OK) {
        return status;
    }
    for (uint32_t i = 0; i < count; ++i) {
        for (int shift = 8 * (int{sizeof(Character)} - 1); shift >= 0; shift -= 8) {
            *octets++ = static_cast<uint8_t>(characters[i] >> shift);
        }
    }
    return static_cast<int>(size);
}

template <typename String>
int write_wide_string(ASN1CTXT* ctxt, const String* value, ASN1TagType tagging, ASN1TAG tag) {
    if (value == nullptr || (value->data == nullptr && value->nchars != 0)) {
        return RT_E_BADVALUE;
    }
    return finish_value(ctxt, tag, tagging, write_characters(ctxt, value->data, value->nchars));
}

}  // namespace

extern "C" {

int xe_boolean(ASN1CTXT* ctxt, const uint8_t* value, ASN1TagType tagging) {
    if (value == nullptr) {
        return RT_E_BADVALUE;
    }
    return finish_value(ctxt, kBoolean, tagging, write_octets(ctxt, *value != 0 ? 0xFF : 0x00, 1));
}

int xe_integer(ASN1CTXT* ctxt, const int32_t* value, ASN1TagType tagging) {
    if (value == nullptr) {
        return RT_E_BADVALUE;
    }
    return finish_value(ctxt, kInteger, tagging, write_integer(ctxt, *value));
}

int xe_unsigned(ASN1CTXT* ctxt, const uint32_t* value, ASN1TagType tagging) {
    if (value == nullptr) {
        return RT_E_BADVALUE;
    }
    return finish_value(ctxt, kInteger, tagging, write_integer(ctxt, *value));
}

int xe_uint16(ASN1CTXT* ctxt, const uint16_t* value, ASN1TagType tagging) {
    if (value == nullptr) {
        return RT_E_BADVALUE;
    }
    return finish_value(ctxt, kInteger, tagging, write_integer(ctxt, *value));
}

int xe_enum(ASN1CTXT* ctxt, const int32_t* value, ASN1TagType tagging) {
    return finish_value(ctxt, kEnumerated, tagging, xe_integer(ctxt, value, ASN1IMPL));
}

int xe_null(ASN1CTXT* ctxt, ASN1TagType tagging) {
    return finish_value(ctxt, kNull, tagging, 0);
}

int xe_octstr(ASN1CTXT* ctxt, const uint8_t* bytes, uint32_t count, ASN1TagType tagging) {
    const int written = bytes == nullptr ? 0 : xe_memcpy(ctxt, bytes, count);
    return finish_value(ctxt, kOctetString, tagging, written);
}

int xe_objid(ASN1CTXT* ctxt, const ASN1OBJID* value, ASN1TagType tagging) {
    if (!is_encodable(value)) {
        return RT_E_INVOBJID;
    }
    // Gathered back to front, so that one bounds test does for all arcs.
    uint8_t octets[ASN1_K_MAXSUBIDS * kMostArcOctets];
    uint8_t* const end = octets + sizeof octets;
    uint8_t* first = end;
    for (uint32_t i = value->numids; i > 2; --i) {
        first = put_base128(first, value->subid[i - 1]);
    }
    first = put_base128(first, value->subid[0] * 40 + value->subid[1]);
    const int written = xe_memcpy(ctxt, first, static_cast<size_t>(end - first));
    return finish_value(ctxt, kObjectIdentifier, tagging, written);
}

int xe_charstr(ASN1CTXT* ctxt, const char* text, ASN1TagType tagging, ASN1TAG tag) {
    if (text == nullptr) {
        return RT_E_BADVALUE;
    }
    const uint8_t* octets = reinterpret_cast<const uint8_t*>(text);
    return finish_value(ctxt, tag, tagging, xe_memcpy(ctxt, octets, std::strlen(text)));
}

int xe_16BitCharStr(ASN1CTXT* ctxt, const ASN1_16BITCHARSTRING* value, ASN1TagType tagging, ASN1TAG tag) {
    return write_wide_string(ctxt, value, tagging, tag);
}

int xe_32BitCharStr(ASN1CTXT* ctxt, const ASN1_32BITCHARSTRING* value, ASN1TagType tagging, ASN1TAG tag) {
    return write_wide_string(ctxt, value, tagging, tag);
}

int xe_bitstr(ASN1CTXT* ctxt, const uint8_t* data, uint32_t numbits, ASN1TagType tagging) {
    if (data == nullptr && numbits != 0) {
        return 0;  // Intended: not even a header
    }
    const size_t count = (size_t{numbits} + 7) / 8;
    uint8_t* octets;
    const int status = take_front(ctxt, octets, count + 1);
    if (status != RT_OK) {
        return status;
    }
    octets[0] = static_cast<uint8_t>(count * 8 - numbits);
    if (count != 0) {
        std::memcpy(octets + 1, data, count);
    }
    return finish_value(ctxt, kBitString, tagging, static_cast<int>(count + 1));
}

}  // extern "C"
