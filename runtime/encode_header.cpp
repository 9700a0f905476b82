#include <climits>

#include "runtime/der_encode.h"
#include "runtime/detail/encode_space.h"

using Quillmark::detail::is_short_header;
using Quillmark::detail::kTagNumber;

namespace {

// Octets gathered back to front before they are written with one bounds test.
class HeaderOctets {
  public:
    void put(uint32_t octet) { octets_[--first_] = static_cast<uint8_t>(octet); }
    int size() const { return kRoom - first_; }
    int write(ASN1CTXT* ctxt) const { return xe_memcpy(ctxt, octets_ + first_, static_cast<size_t>(size())); }

  private:
    static constexpr int kRoom = 16;  // six octets of a tag, five of a length

    uint8_t octets_[kRoom];
    int first_ = kRoom;
};

// Seven bits an octet, all but the last with the top bit set (X.690 8.1.2.4.2, 8.19.2).
void put_base128(HeaderOctets& out, uint32_t value) {
    out.put(value & 0x7F);
    for (value >>= 7; value != 0; value >>= 7) {
        out.put(0x80 | (value & 0x7F));
    }
}

void put_tag(HeaderOctets& out, ASN1TAG tag) {
    const uint32_t class_and_form = tag >> 24 & 0xE0;
    const uint32_t number = tag & kTagNumber;
    if (number <= 30) {
        out.put(class_and_form | number);
        return;
    }
    put_base128(out, number);
    out.put(class_and_form | 31);
}

void put_length(HeaderOctets& out, int length) {
    if (length == RT_INDEFLEN) {
        out.put(0x80);
        return;
    }
    if (length < 0) {
        return;
    }
    uint32_t rest = static_cast<uint32_t>(length);
    out.put(rest & 0xFF);
    if (length < 0x80) {
        return;
    }
    uint32_t count = 1;
    for (rest >>= 8; rest != 0; rest >>= 8) {
        out.put(rest & 0xFF);
        ++count;
    }
    out.put(0x80 | count);
}

}  // namespace

extern "C" {

int xe_tag(ASN1CTXT* ctxt, ASN1TAG tag) {
    HeaderOctets out;
    put_tag(out, tag);
    return out.write(ctxt);
}

int xe_len(ASN1CTXT* ctxt, int length) {
    HeaderOctets out;
    put_length(out, length);
    return out.write(ctxt);
}

int xe_tag_len(ASN1CTXT* ctxt, ASN1TAG tag, int length) {
    if (is_short_header(tag, length)) {
        return Quillmark::detail::write_header(ctxt, tag, length);
    }
    if (length < 0 && length != RT_INDEFLEN) {
        return length;
    }
    HeaderOctets header;
    put_length(header, length);
    put_tag(header, tag);
    const int contents = length == RT_INDEFLEN ? 0 : length;
    if (contents > INT_MAX - header.size()) {
        return RT_E_NOMEM;  // no buffer is so large
    }
    const int written = header.write(ctxt);
    return written < 0 ? written : contents + written;
}

int xe_identifier(ASN1CTXT* ctxt, uint32_t value) {
    HeaderOctets out;
    put_base128(out, value);
    return out.write(ctxt);
}

}  // extern "C"
