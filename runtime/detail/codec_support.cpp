#include "runtime/detail/codec_support.h"

#include <algorithm>
#include <cstring>

#include "runtime/big_integer.h"
#include "runtime/character.h"

namespace Quillmark::detail {

namespace {

// X.690 8.1.2.2: of the identifier octet, the bit that tells the form.
constexpr uint8_t kWithoutForm = 0xDF;

bool in_message(const ASN1CTXT* ctxt, const void* block) {
    const auto* octet = static_cast<const uint8_t*>(block);
    return ctxt->buffer.data != nullptr && octet >= ctxt->buffer.data &&
           octet < ctxt->buffer.data + ctxt->buffer.size;
}

void require(bool copied) {
    if (!copied) {
        throw std::bad_alloc();
    }
}

}  // namespace

int constraint_violation(ASN1CTXT* ctxt, uint32_t value, const char* path) {
    rtErrAddStrParm(&ctxt->errInfo, path);
    rtErrAddIntParm(&ctxt->errInfo, static_cast<int>(value));
    return rtErrSetData(&ctxt->errInfo, RT_E_CONSVIO);
}

uint32_t text_length(const char* text) {
    return text == nullptr ? 0 : static_cast<uint32_t>(std::strlen(text));
}

uint32_t utf8_length(const char* text) {
    const int length = text == nullptr ? 0 : rtUTF8Len(text);
    return length < 0 ? UINT32_MAX : static_cast<uint32_t>(length);
}

// Encoding

void ContentEncoder::add(int written) {
    result_ = written < 0 ? rtErrSetData(&ctxt_->errInfo, written) : result_ + written;
}

bool ContentEncoder::check_range(uint32_t value, uint32_t low, uint32_t high, const char* path) {
    const int status = detail::check_range(ctxt_, value, low, high, path);
    result_ = status == RT_OK ? result_ : status;
    return status == RT_OK;
}

bool ContentEncoder::check_minimum(uint32_t value, uint32_t low, const char* path) {
    const int status = detail::check_minimum(ctxt_, value, low, path);
    result_ = status == RT_OK ? result_ : status;
    return status == RT_OK;
}

bool ContentEncoder::given(const void* alternative) {
    if (alternative == nullptr) {
        add(RT_E_BADVALUE);
    }
    return alternative != nullptr;
}

int ContentEncoder::finish(ASN1TAG tag, ASN1TagType tagging) {
    if (good() && tagging == ASN1EXPL) {
        return recorded(ctxt_, xe_tag_len(ctxt_, tag, result_));
    }
    return result_;
}

bool differs(ASN1CTXT* ctxt, const char* number, const char* default_number) {
    return number == nullptr || rtBigIntStrCompare(ctxt, number, default_number) != 0;
}

int encode_enumerated(ASN1CTXT* ctxt, uint32_t value, uint32_t bound, ASN1TagType tagging) {
    if (value >= bound) {
        return rtErrSetData(&ctxt->errInfo, RT_E_INVENUM);
    }
    const auto number = static_cast<int32_t>(value);
    return recorded(ctxt, xe_enum(ctxt, &number, tagging));
}

bool SetOfEncoder::given(const void* element) {
    if (element == nullptr) {
        add(RT_E_BADVALUE);
    }
    return element != nullptr;
}

void SetOfEncoder::add(int written) {
    if (written < 0) {
        status_ = rtErrSetData(&ctxt_->errInfo, written);
        return;
    }
    auto* location = make_record_or_throw<ASN1BufLocDescr>(ctxt_);
    xe_getBufLocDescr(ctxt_, static_cast<uint32_t>(written), location);
    require(rtSListAppend(&locations_, location) != nullptr);
}

int SetOfEncoder::finish(ASN1TAG tag, ASN1TagType tagging) {
    if (!good()) {
        return status_;
    }
    const int length = xe_derCanonicalSort(ctxt_, &locations_);
    return recorded(ctxt_, tagging == ASN1EXPL ? xe_tag_len(ctxt_, tag, length) : length);
}

// Decoding

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

SequenceDecoder::SequenceDecoder(ASN1CTXT* ctxt, ASN1TAG tag, ASN1TagType tagging, int length)
    : ElementDecoder(ctxt), contents_length_(length), read_header_(tagging == ASN1EXPL) {
    if (read_header_) {
        taken(xd_match1(ctxt, identifier_octet(tag), &contents_length_));
    }
    start_ = ctxt->buffer.byteIndex;
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

// Memory and copies

void free_block(ASN1CTXT* ctxt, const void* block) {
    if (block != nullptr && !in_message(ctxt, block) && rtMemHeapCheckPtr(&ctxt->typeHeap, block) != 0) {
        rtMemHeapFreePtr(&ctxt->typeHeap, block);
    }
}

void copy_text(ASN1CTXT* ctxt, const char* src, const char*& dst) {
    dst = nullptr;
    require(src == nullptr || rtCopyCharStr(ctxt, src, &dst) != 0);
}

void copy_value(ASN1CTXT* ctxt, const ASN1TDynOctStr& src, ASN1TDynOctStr& dst) {
    require(rtCopyDynOctStr(ctxt, &src, &dst) != 0);
}

void copy_value(ASN1CTXT* ctxt, const ASN1TDynBitStr& src, ASN1TDynBitStr& dst) {
    require(rtCopyDynBitStr(ctxt, &src, &dst) != 0);
}

void copy_value(ASN1CTXT* ctxt, const ASN1_16BITCHARSTRING& src, ASN1_16BITCHARSTRING& dst) {
    require(rtCopy16BitCharStr(ctxt, &src, &dst) != 0);
}

void copy_value(ASN1CTXT* ctxt, const ASN1_32BITCHARSTRING& src, ASN1_32BITCHARSTRING& dst) {
    require(rtCopy32BitCharStr(ctxt, &src, &dst) != 0);
}

void copy_value(ASN1CTXT* ctxt, const ASN1OpenType& src, ASN1OpenType& dst) {
    require(rtCopyOpenType(ctxt, &src, &dst) != 0);
}

void copy_extensions(ASN1CTXT* ctxt, const ASN1TSeqOfList& src, ASN1TSeqOfList& dst) {
    require(rtCopyOpenTypeExt(ctxt, &src, &dst) != 0);
}

void copy_sized(uint32_t count, const uint8_t* src, uint32_t room, uint8_t* dst) {
    std::copy_n(src, std::min(count, room), dst);
}

// Lists and arrays

void* allocate_node(ASN1CTXT* ctxt, size_t size) {
    void* block = rtMemHeapAlloc(&ctxt->typeHeap, sizeof(_Asn1RTDListNode) + size);
    return block == nullptr ? nullptr : static_cast<_Asn1RTDListNode*>(block) + 1;
}

void append_record(ASN1CTXT* ctxt, ASN1TSeqOfList& list, void* record) {
    require(rtDListAppend(ctxt, &list, record) != nullptr);
}

int count_elements(ASN1CTXT* ctxt, int length, uint32_t& count) {
    int counted = 0;
    const int status = xd_count(ctxt, length, &counted);
    count = static_cast<uint32_t>(counted);
    return recorded(ctxt, status);
}

void* allocate_array(ASN1CTXT* ctxt, uint32_t count, size_t element_size) {
    return count > SIZE_MAX / element_size ? nullptr : rtMemHeapAlloc(&ctxt->typeHeap, count * element_size);
}

// Values carried in open types

int begin_carried(ASN1CTXT* ctxt) {
    return recorded(ctxt, xe_setp(ctxt, nullptr, 0));
}

int end_carried(ASN1CTXT* ctxt, int written, Asn1Object& value) {
    int status = written < 0 ? written : RT_OK;
    if (written > 0) {
        auto* octets = static_cast<uint8_t*>(rtMemHeapAlloc(&ctxt->typeHeap, static_cast<size_t>(written)));
        if (octets != nullptr) {
            std::copy_n(xe_getp(ctxt), written, octets);
            value.numocts = static_cast<uint32_t>(written);
            value.data = octets;
        } else {
            status = RT_E_NOMEM;
        }
    }
    xe_free(ctxt);
    return recorded(ctxt, status);
}

}  // namespace Quillmark::detail
