#include "runtime/detail/element_decoder.h"

#include <algorithm>
#include <cstring>

namespace Quillmark::detail {

namespace {

// X.690 8.1.2.2: of the identifier octet, the bit that tells the form.
constexpr uint8_t kWithoutForm = 0xDF;

}  // namespace

bool ElementDecoder::fail(int status) {
    status_ = rtErrSetData(&ctxt_->errInfo, status);
    return false;
}

bool ElementDecoder::take_end() {
    if (!at_end_of_contents_octets(ctxt_)) {
        return fail(RT_E_INVLEN);
    }
    ctxt_->buffer.byteIndex += 2;
    return true;
}

int ElementDecoder::keep_retagged(ASN1OpenType& value, ASN1TAG own) {
    rewind();
    const int status = decode_open(ctxt_, value);
    if (status != RT_OK) {
        return status;
    }
    // With RT_F_FASTCOPY the octets are the message's.
    auto* octets = const_cast<uint8_t*>(value.data);
    if (in_message(ctxt_, octets)) {
        octets = static_cast<uint8_t*>(rtMemHeapAlloc(&ctxt_->typeHeap, value.numocts));
        if (octets == nullptr) {
            value = ASN1OpenType{};
            return RT_E_NOMEM;
        }
        std::memcpy(octets, value.data, value.numocts);
        value.data = octets;
    }
    octets[0] = identifier_octet(own);
    return RT_OK;
}

SequenceDecoder::SequenceDecoder(ASN1CTXT* ctxt, ASN1TAG tag, ASN1TagType tagging, int length)
    : ElementDecoder(ctxt), contents_length_(length), read_header_(tagging == ASN1EXPL) {
    if (read_header_ && !take_short_header(ctxt, identifier_octet(tag), contents_length_)) {
        taken(xd_match1(ctxt, identifier_octet(tag), &contents_length_));
    }
    start_ = ctxt->buffer.byteIndex;
    if (contents_length_ > 0) {
        const uint64_t end = uint64_t{start_} + static_cast<uint32_t>(contents_length_);
        limit_ = static_cast<uint32_t>(std::min<uint64_t>(end, ctxt->buffer.size));
    }
}

// In the indefinite form fewer than two octets left are the end as well.
bool SequenceDecoder::more_indefinite() const {
    return contents_length_ == RT_INDEFLEN && !contents_end(ctxt_, start_, RT_INDEFLEN);
}

bool SequenceDecoder::tagged(uint32_t number) {
    if (!more() || (next_octet(ctxt_) & kWithoutForm) != (0x80 | number)) {
        return false;
    }
    return taken(xd_Tag1AndLen(ctxt_, &length_));
}

ASN1TAG SequenceDecoder::next_tag() const {
    ASN1TAG tag = 0;
    int length = 0;
    return xd_tag_len(ctxt_, &tag, &length, 0) == RT_OK ? tag : 0;
}

bool SequenceDecoder::required(int status) {
    ++required_taken_;
    return taken(status);
}

bool SequenceDecoder::optional(int status) {
    if (status != RT_E_IDNOTFOUND) {
        return taken(status);
    }
    rtErrReset(&ctxt_->errInfo);
    ctxt_->buffer.byteIndex = element_start_;
    return false;
}

int SequenceDecoder::finish(uint32_t required_count) {
    if (failed()) {
        return status();
    }
    if (more()) {
        fail(RT_E_SEQOVFL);
    } else if (required_taken_ < required_count) {
        fail(RT_E_SETMISSING);
    }
    return status();
}

int SequenceDecoder::finish_closed(uint32_t required_count) {
    if (finish(required_count) == RT_OK && read_header_ && contents_length_ == RT_INDEFLEN) {
        take_end();
    }
    return status();
}

SetDecoder::SetDecoder(ASN1CTXT* ctxt, ASN1TagType tagging, int length)
    : ElementDecoder(ctxt), contents_length_(length) {
    if (tagging == ASN1EXPL) {
        taken(xd_match1(ctxt, identifier_octet(kSet), &contents_length_));
    }
    start_ = ctxt->buffer.byteIndex;
}

bool SetDecoder::next(ASN1TAG& tag) {
    element_start_ = ctxt_->buffer.byteIndex;
    return !failed() && !contents_end(ctxt_, start_, contents_length_) &&
           taken(xd_tag_len(ctxt_, &tag, &length_, XM_ADVANCE));
}

bool SetDecoder::first(uint32_t index) {
    const uint32_t bit = 1u << index;
    if ((seen_ & bit) != 0) {
        return fail(RT_E_SETDUP);
    }
    seen_ |= bit;
    return true;
}

int SetDecoder::finish(uint32_t required) {
    if (!failed() && (seen_ & required) != required) {
        fail(RT_E_SETMISSING);
    }
    return status();
}

ChoiceDecoder::ChoiceDecoder(ASN1CTXT* ctxt) : ElementDecoder(ctxt) {
    element_start_ = ctxt->buffer.byteIndex;
    if (!taken(xd_tag_len(ctxt, &tag_, &length_, XM_ADVANCE))) {
        tag_ = 0;  // no alternative has it
    }
}

int ChoiceDecoder::unknown() {
    if (!failed()) {
        fail(RT_E_INVOPT);
    }
    return status();
}

int decode_enumerated(ASN1CTXT* ctxt, uint32_t& value, uint32_t bound, ASN1TagType tagging, int length) {
    int32_t number = 0;
    const int status = xd_enum(ctxt, &number, tagging, length);
    if (status != RT_OK) {
        return rtErrSetData(&ctxt->errInfo, status);
    }
    value = static_cast<uint32_t>(number);
    return value < bound ? RT_OK : rtErrSetData(&ctxt->errInfo, RT_E_INVENUM);
}

int decode_open(ASN1CTXT* ctxt, ASN1OpenType& value) {
    value.numocts = 0;
    value.data = nullptr;
    return xd_OpenType(ctxt, &value.data, &value.numocts);
}

int decode_open(ASN1CTXT* ctxt, Asn1Object& value) {
    value.decoded = nullptr;
    return decode_open(ctxt, static_cast<ASN1OpenType&>(value));
}

int keep_unknown(ASN1CTXT* ctxt, const SequenceDecoder& in, ASN1TSeqOfList& list) {
    const ASN1ElementExtent structure = {in.start(), in.contents_length()};
    return xd_OpenTypeExt(ctxt, &structure, 0xFFFFFFFFu, &list);
}

}  // namespace Quillmark::detail
