#include "runtime/detail/element_encoder.h"

#include <cstring>
#include <new>

#include "runtime/big_integer.h"
#include "runtime/character.h"
#include "runtime/detail/record_memory.h"
#include "runtime/detail/set_of_order.h"

namespace Quillmark::detail {

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

int encode_retagged(ASN1CTXT* ctxt, const ASN1OpenType& value, ASN1TAG own, ASN1TAG tag) {
    const int written = xe_OpenType(ctxt, value.data, value.numocts);
    if (written < 0) {
        return written;
    }
    uint8_t* identifier = ctxt->buffer.data + ctxt->buffer.byteIndex;
    if (written == 0 || *identifier != identifier_octet(own)) {
        return RT_E_BADVALUE;
    }
    *identifier = identifier_octet(tag);
    return written;
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

SetOfEncoder::~SetOfEncoder() {
    while (blocks_ != nullptr) {
        Block* block = blocks_;
        blocks_ = block->next;
        rtMemHeapFreePtr(&ctxt_->typeHeap, block);
    }
}

bool SetOfEncoder::given(const void* element) {
    if (element == nullptr) {
        add(RT_E_BADVALUE);
    }
    return element != nullptr;
}

SetOfEncoder::Element& SetOfEncoder::new_element() {
    if (blocks_ == nullptr || blocks_->used == Block::kRoom) {
        auto* block = static_cast<Block*>(rtMemHeapAlloc(&ctxt_->typeHeap, sizeof(Block)));
        require(block != nullptr);
        block->next = blocks_;
        block->used = 0;
        blocks_ = block;
    }
    return blocks_->elements[blocks_->used++];
}

void SetOfEncoder::add(int written) {
    if (written < 0) {
        status_ = rtErrSetData(&ctxt_->errInfo, written);
        return;
    }
    Element& element = new_element();
    xe_getBufLocDescr(ctxt_, static_cast<uint32_t>(written), &element.location);
    element.node = {&element.location, nullptr};
    (elements_.tail == nullptr ? elements_.head : elements_.tail->next) = &element.node;
    elements_.tail = &element.node;
    ++elements_.count;
}

int SetOfEncoder::finish(ASN1TAG tag, ASN1TagType tagging) {
    if (!good()) {
        return status_;
    }
    const int length = order_set_of(ctxt_, &elements_);
    return recorded(ctxt_, tagging == ASN1EXPL ? xe_tag_len(ctxt_, tag, length) : length);
}

}  // namespace Quillmark::detail
