#include "runtime/ber_decode.h"

#include "runtime/detail/decode_position.h"
#include "runtime/detail/element.h"

using Quillmark::detail::at_end;
using Quillmark::detail::contents_here;
using Quillmark::detail::next_octet;
using Quillmark::detail::take_primitive_header;

namespace {

constexpr uint8_t kBoolean = 1;
constexpr uint8_t kInteger = 2;
constexpr uint8_t kNull = 5;
constexpr uint8_t kObjectIdentifier = 6;
constexpr uint8_t kEnumerated = 10;

int record(ASN1CTXT* ctxt, int status) {
    return rtErrSetData(&ctxt->errInfo, status);
}

// A primitive's identifier octet; unlike `xd_match1` it minds the form. Moves only on a match.
int take_identifier(ASN1CTXT* ctxt, uint8_t identifier) {
    if (at_end(ctxt)) {
        return RT_E_ENDOFBUF;
    }
    if (next_octet(ctxt) != identifier) {
        return RT_E_IDNOTFOUND;
    }
    ++ctxt->buffer.byteIndex;
    ctxt->flags = static_cast<uint16_t>(ctxt->flags & ~RT_F_CONSTAG);
    return RT_OK;
}

// For the types whose decoders take a length octet as it stands.
int take_raw_header(ASN1CTXT* ctxt, uint8_t identifier, int& length) {
    const int status = take_identifier(ctxt, identifier);
    if (status != RT_OK) {
        return status;
    }
    if (at_end(ctxt)) {
        return RT_E_ENDOFBUF;
    }
    length = next_octet(ctxt);
    ++ctxt->buffer.byteIndex;
    return RT_OK;
}

uint32_t join_octets(const uint8_t* octets, uint32_t count, uint32_t sign) {
    uint32_t value = sign;
    for (uint32_t i = 0; i < count; ++i) {
        value = value << 8 | octets[i];
    }
    return value;
}

int read_integer(ASN1CTXT* ctxt, int32_t* value, int length) {
    if (length > 4) {
        return RT_E_TOOBIG;
    }
    if (length < 1) {
        return RT_E_INVLEN;
    }
    const uint32_t count = static_cast<uint32_t>(length);
    const uint8_t* octets = contents_here(ctxt, count);
    if (octets == nullptr) {
        return RT_E_ENDOFBUF;
    }
    const uint32_t sign = (octets[0] & 0x80) != 0 ? UINT32_MAX : 0;
    *value = static_cast<int32_t>(join_octets(octets, count, sign));
    ctxt->buffer.byteIndex += count;
    return RT_OK;
}

// Intended: the first bit is no sign, and no octets at all are 0.
int read_unsigned(ASN1CTXT* ctxt, uint32_t* value, int length) {
    if (length > 5) {
        return RT_E_TOOBIG;
    }
    if (length < 0) {
        return RT_E_INVLEN;
    }
    const uint32_t count = static_cast<uint32_t>(length);
    const uint8_t* octets = contents_here(ctxt, count);
    if (octets == nullptr && count != 0) {
        return RT_E_ENDOFBUF;
    }
    if (count == 5 && octets[0] != 0) {
        return RT_E_TOOBIG;
    }
    *value = join_octets(octets, count, 0);
    ctxt->buffer.byteIndex += count;
    return RT_OK;
}

// Intended: lengths 0 and 1 take one octet alike.
int read_uint16(ASN1CTXT* ctxt, uint16_t* value, int length) {
    if (length > 3) {
        return RT_E_TOOBIG;
    }
    if (length < 0) {
        return RT_E_INVLEN;
    }
    const uint32_t count = length == 0 ? 1 : static_cast<uint32_t>(length);
    const uint8_t* octets = contents_here(ctxt, count);
    if (octets == nullptr) {
        return RT_E_ENDOFBUF;
    }
    if (count == 3 && octets[0] != 0) {
        return RT_E_TOOBIG;
    }
    *value = static_cast<uint16_t>(join_octets(octets, count, 0));
    ctxt->buffer.byteIndex += count;
    return RT_OK;
}

// X.690 8.19. Intended: arcs wrap at 32 bits, and contents that end inside a subidentifier end it.
int read_objid(ASN1CTXT* ctxt, ASN1OBJID* value, int length) {
    if (length < 1) {
        return RT_E_INVLEN;
    }
    const uint32_t count = static_cast<uint32_t>(length);
    const uint8_t* octet = contents_here(ctxt, count);
    if (octet == nullptr) {
        return RT_E_ENDOFBUF;
    }
    ctxt->buffer.byteIndex += count;
    const uint8_t* const end = octet + count;
    // The first subidentifier makes two arcs: it is gathered as the second and split afterwards.
    uint32_t numids = 1;
    uint32_t arc = 0;
    for (; octet != end && numids < ASN1_K_MAXSUBIDS; ++octet) {
        arc = arc << 7 | (*octet & 0x7F);
        if ((*octet & 0x80) == 0 || octet + 1 == end) {
            value->subid[numids++] = arc;
            arc = 0;
        }
    }
    value->numids = numids;
    const uint32_t joined = value->subid[1];
    value->subid[0] = joined < 80 ? joined / 40 : 2;
    value->subid[1] = joined - value->subid[0] * 40;
    return octet == end ? RT_OK : RT_E_INVOBJID;
}

}  // namespace

int Quillmark::detail::take_primitive_header(ASN1CTXT* ctxt, uint8_t identifier, int& length) {
    if (take_short_header(ctxt, identifier, length)) {
        return RT_OK;
    }
    const int status = take_identifier(ctxt, identifier);
    return status == RT_OK ? xd_len(ctxt, &length) : status;
}

extern "C" {

int xd_boolean(ASN1CTXT* ctxt, uint8_t* value, ASN1TagType tagging, int length) {
    if (tagging == ASN1EXPL) {
        const int status = take_raw_header(ctxt, kBoolean, length);
        if (status != RT_OK) {
            return record(ctxt, status);
        }
    }
    if (length != 1) {
        return record(ctxt, RT_E_INVLEN);
    }
    const int status = xd_memcpy(ctxt, value, 1);
    return status == RT_OK ? RT_OK : record(ctxt, status);
}

int xd_integer(ASN1CTXT* ctxt, int32_t* value, ASN1TagType tagging, int length) {
    int status = tagging == ASN1EXPL ? take_primitive_header(ctxt, kInteger, length) : RT_OK;
    if (status == RT_OK) {
        status = read_integer(ctxt, value, length);
    }
    return status == RT_OK ? RT_OK : record(ctxt, status);
}

int xd_unsigned(ASN1CTXT* ctxt, uint32_t* value, ASN1TagType tagging, int length) {
    int status = tagging == ASN1EXPL ? take_primitive_header(ctxt, kInteger, length) : RT_OK;
    if (status == RT_OK) {
        status = read_unsigned(ctxt, value, length);
    }
    return status == RT_OK || status == RT_E_ENDOFBUF ? status : record(ctxt, status);
}

int xd_uint16(ASN1CTXT* ctxt, uint16_t* value, ASN1TagType tagging, int length) {
    int status = tagging == ASN1EXPL ? take_raw_header(ctxt, kInteger, length) : RT_OK;
    if (status == RT_OK && tagging == ASN1EXPL && at_end(ctxt)) {
        status = RT_E_ENDOFBUF;  // before the length is looked at
    }
    if (status == RT_OK) {
        status = read_uint16(ctxt, value, length);
    }
    return status == RT_OK ? RT_OK : record(ctxt, status);
}

int xd_enum(ASN1CTXT* ctxt, int32_t* value, ASN1TagType tagging, int length) {
    if (tagging == ASN1EXPL) {
        const int status = take_primitive_header(ctxt, kEnumerated, length);
        if (status != RT_OK) {
            return status;
        }
    }
    return xd_integer(ctxt, value, ASN1IMPL, length);
}

int xd_null(ASN1CTXT* ctxt, ASN1TagType tagging) {
    if (tagging == ASN1IMPL) {
        return RT_OK;
    }
    int length;
    const int status = take_raw_header(ctxt, kNull, length);
    if (status != RT_OK) {
        return record(ctxt, status);
    }
    return length == 0 ? RT_OK : record(ctxt, RT_E_INVLEN);
}

int xd_objid(ASN1CTXT* ctxt, ASN1OBJID* value, ASN1TagType tagging, int length) {
    int status = tagging == ASN1EXPL ? take_primitive_header(ctxt, kObjectIdentifier, length) : RT_OK;
    if (status == RT_OK) {
        status = read_objid(ctxt, value, length);
    }
    return status == RT_OK ? RT_OK : record(ctxt, status);
}

}  // extern "C"
