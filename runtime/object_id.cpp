#include "runtime/object_id.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace {

// Ten digits for 32 bits, and the dot before them.
constexpr size_t kMaxArcText = 11;

uint32_t arc_count(uint32_t announced) {
    return std::min(announced, ASN1_K_MAXSUBIDS);
}

void copy_arcs(ASN1OBJID& dst, const ASN1OBJID& src) {
    const uint32_t count = arc_count(src.numids);
    dst.numids = count;
    std::memmove(dst.subid, src.subid, count * sizeof src.subid[0]);
}

void copy_arcs(ASN1OID64& dst, const ASN1OID64& src) {
    const uint32_t count = arc_count(src.numids);
    dst.numids = count;
    std::memmove(dst.subid, src.subid, count * sizeof src.subid[0]);
}

// Writes the arc at `index`, with a dot in front unless it is the first, and returns the characters.
size_t format_arc(const ASN1OBJID& oid, uint32_t index, char (&out)[kMaxArcText]) {
    char* position = out;
    if (index != 0) {
        *position++ = '.';
    }
    return static_cast<size_t>(std::to_chars(position, out + kMaxArcText, oid.subid[index]).ptr - out);
}

}  // namespace

ASN1TObjId::ASN1TObjId(unsigned char count, const unsigned int* arcs) {
    numids = arc_count(count);
    std::copy_n(arcs, numids, subid);
}

ASN1TObjId::ASN1TObjId(const ASN1OBJID& other) {
    copy_arcs(*this, other);
}

ASN1TObjId::ASN1TObjId(const ASN1TObjId& other) : ASN1TObjId(static_cast<const ASN1OBJID&>(other)) {}

ASN1TObjId& ASN1TObjId::operator=(const ASN1OBJID& other) {
    copy_arcs(*this, other);
    return *this;
}

ASN1TObjId& ASN1TObjId::operator=(const ASN1TObjId& other) {
    copy_arcs(*this, other);
    return *this;
}

ASN1TObjId64::ASN1TObjId64(unsigned char count, const long long* arcs) {
    numids = arc_count(count);
    std::copy_n(arcs, numids, subid);
}

ASN1TObjId64::ASN1TObjId64(const ASN1OID64& other) {
    copy_arcs(*this, other);
}

ASN1TObjId64::ASN1TObjId64(const ASN1TObjId64& other) : ASN1TObjId64(static_cast<const ASN1OID64&>(other)) {}

ASN1TObjId64& ASN1TObjId64::operator=(const ASN1OID64& other) {
    copy_arcs(*this, other);
    return *this;
}

ASN1TObjId64& ASN1TObjId64::operator=(const ASN1TObjId64& other) {
    copy_arcs(*this, other);
    return *this;
}

bool operator==(const ASN1OBJID& left, const ASN1OBJID& right) {
    if (left.numids != right.numids) {
        return false;
    }
    const uint32_t count = arc_count(left.numids);
    // Identifiers of one family differ in their last arcs.
    return count == 0 || (left.subid[count - 1] == right.subid[count - 1] &&
                          std::equal(left.subid, left.subid + count, right.subid));
}

extern "C" {

int rtStrToOid(const char* text, ASN1OBJID* oid) {
    oid->numids = 0;
    if (text == nullptr) {
        return 0;
    }
    while (oid->numids < ASN1_K_MAXSUBIDS) {
        char* end = nullptr;
        const unsigned long arc = std::strtoul(text, &end, 10);
        if (end == text || (*end != '.' && *end != '\0')) {
            return 0;
        }
        oid->subid[oid->numids++] = static_cast<uint32_t>(arc);
        if (*end == '\0') {
            return 1;
        }
        text = end + 1;
    }
    return 0;
}

int rtOidToStr(const ASN1OBJID* oid, char* text, size_t room) {
    *text = '\0';
    const uint32_t count = arc_count(oid->numids);
    for (uint32_t i = 0; i < count; ++i) {
        char arc[kMaxArcText];
        const size_t length = format_arc(*oid, i, arc);
        if (length > room) {
            return 0;
        }
        std::memcpy(text, arc, length);
        text += length;
        *text = '\0';
        room -= length;
    }
    return 1;
}

int rtOidToStrLen(const ASN1OBJID* oid) {
    size_t length = 0;
    const uint32_t count = arc_count(oid->numids);
    for (uint32_t i = 0; i < count; ++i) {
        char arc[kMaxArcText];
        length += format_arc(*oid, i, arc);
    }
    return static_cast<int>(length);  // at most 128 arcs of eleven characters
}

int rtCmpOID(const char* /*name*/, const ASN1OBJID* a, const ASN1OBJID* b, int* result) {
    if (*a == *b) {
        return 1;
    }
    if (result != nullptr) {
        *result = 0;
    }
    return 0;
}

int rtCmpOIDValue(const char* name, const ASN1OBJID* a, const ASN1OBJID* b, int* result) {
    return rtCmpOID(name, a, b, result);
}

void rtSetOID(ASN1OBJID* dst, const ASN1OBJID* src) {
    copy_arcs(*dst, *src);
}

}  // extern "C"
