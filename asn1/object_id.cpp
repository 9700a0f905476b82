#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include "asn1/codec.h"
#include "asn1/detail/check.h"
#include "asn1/detail/oid_text.h"

namespace Quillmark::detail {

OidText::OidText(const ASN1OBJID& oid) {
    const std::uint32_t count = std::min(oid.numids, ASN1_K_MAXSUBIDS);
    char* end = text_;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (i != 0) {
            *end++ = '.';
        }
        end = std::to_chars(end, text_ + kRoom, oid.subid[i]).ptr;
    }
    *end++ = '\0';
    size_ = static_cast<std::size_t>(end - text_);
}

}  // namespace Quillmark::detail

namespace Quillmark::ASN1 {
namespace {

const char* skip_blanks(const char* text) {
    while (std::isspace(static_cast<unsigned char>(*text)) != 0) {
        ++text;
    }
    return text;
}

}  // namespace

int str2oid(const char* text, ASN1OBJID* oid) {
    oid->numids = 0;
    if (text == nullptr) {
        return 1;
    }
    for (;;) {
        char* number_end = nullptr;
        // Intended: strtoul lets blanks and a sign stand in front, and the value is cut to 32 bits.
        const auto arc = static_cast<std::uint32_t>(std::strtoul(text, &number_end, 10));
        if (number_end == text || oid->numids == ASN1_K_MAXSUBIDS) {
            return 1;
        }
        text = skip_blanks(number_end);
        const bool last = *text == '\0';
        // Intended: what strtoul makes of an overlong number is refused in the last arc alone.
        if (last ? arc == 0xFFFFFFFFu : *text != '.') {
            return 1;
        }
        oid->subid[oid->numids++] = arc;
        if (last) {
            return 0;
        }
        ++text;
    }
}

int oid2str(CBlob& text, const ASN1OBJID* oid) {
    const detail::OidText dotted(*oid);
    text.assign(reinterpret_cast<const unsigned char*>(dotted.c_str()), dotted.size());
    return 1;
}

ASN1OBJID toASN1OBJID(const char* text) {
    ASN1OBJID oid;
    detail::check_argument(str2oid(text, &oid) == 0);
    return oid;
}

CStringProxy toOID(const ASN1OBJID& oid) {
    return CStringProxy(detail::OidText(oid).c_str());
}

void ASN1TObjId_traits::set(ASN1CTXT*, ASN1OBJID& record, const char* value) {
    detail::check_argument(str2oid(value, &record) == 0);
}

void ASN1TObjId_traits::get(const ASN1OBJID& record, CStringProxy& value) {
    value = toOID(record);
}

void ASN1TObjId_traits::copy(ASN1CTXT*, const ASN1OBJID& source, ASN1OBJID& target) {
    rtSetOID(&target, &source);
}

}  // namespace Quillmark::ASN1
