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
        const std::uint32_t arc = oid.subid[i];
        if (arc < 10) {  // as most are
            *end++ = static_cast<char>('0' + arc);
        } else {
            end = std::to_chars(end, text_ + kRoom, arc).ptr;
        }
        *end++ = '.';
    }
    if (end != text_) {
        --end;  // the last full stop gives way to the terminator
    }
    *end++ = '\0';
    size_ = static_cast<std::size_t>(end - text_);
}

}  // namespace Quillmark::detail

namespace Quillmark::ASN1 {
namespace {

bool ends_arc(char c) {
    return c == '.' || c == '\0';
}

/// Reads an arc of up to nine digits with nothing around it, as nearly all are. Returns where it ends, null
/// for any other text.
const char* read_plain_arc(const char* text, std::uint32_t& arc) {
    const char* digit = text;
    for (arc = 0; *digit >= '0' && *digit <= '9'; ++digit) {
        if (digit - text == 9) {
            return nullptr;  // ten digits may not fit 32 bits
        }
        arc = arc * 10 + static_cast<std::uint32_t>(*digit - '0');
    }
    return digit != text && ends_arc(*digit) ? digit : nullptr;
}

/// Reads an arc with what may stand around it. Intended: strtoul lets blanks and a sign stand in front, and
/// the value is cut to 32 bits.
const char* read_any_arc(const char* text, std::uint32_t& arc) {
    char* end = nullptr;
    arc = static_cast<std::uint32_t>(std::strtoul(text, &end, 10));
    if (end == text) {
        return nullptr;
    }
    while (std::isspace(static_cast<unsigned char>(*end)) != 0) {
        ++end;
    }
    return ends_arc(*end) ? end : nullptr;
}

}  // namespace

int str2oid(const char* text, ASN1OBJID* oid) {
    oid->numids = 0;
    if (text == nullptr) {
        return 1;
    }
    for (;;) {
        std::uint32_t arc = 0;
        const char* end = read_plain_arc(text, arc);
        if (end == nullptr) {
            end = read_any_arc(text, arc);
        }
        if (end == nullptr || oid->numids == ASN1_K_MAXSUBIDS) {
            return 1;
        }
        const bool last = *end == '\0';
        // Intended: what strtoul makes of an overlong number is refused in the last arc alone.
        if (last && arc == 0xFFFFFFFFu) {
            return 1;
        }
        oid->subid[oid->numids++] = arc;
        if (last) {
            return 0;
        }
        text = end + 1;
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
