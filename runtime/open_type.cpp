#include <cstring>

#include "runtime/ber_decode.h"
#include "runtime/der_encode.h"
#include "runtime/detail/decode_position.h"
#include "runtime/detail/element.h"

using Quillmark::detail::contents_end;
using Quillmark::detail::element_size;
using Quillmark::detail::octets_left;

namespace {

constexpr ASN1TAG kNoNextElement = 0xFFFFFFFF;

// Steps over contents, which must end in the buffer.
int pass_contents(ASN1CTXT* ctxt, ASN1TAG tag, int length) {
    if (length == RT_INDEFLEN) {
        return xd_MovePastEOC(ctxt);
    }
    const bool end_of_contents = tag == 0 && length == 0;
    const uint32_t count = static_cast<uint32_t>(length);  // a negative length is beyond every buffer
    if (end_of_contents || count > octets_left(ctxt)) {
        return RT_E_BADVALUE;
    }
    ctxt->buffer.byteIndex += count;
    return RT_OK;
}

int hand_out(ASN1CTXT* ctxt, uint32_t start, const uint8_t** data, uint32_t* numocts) {
    const uint8_t* element = ctxt->buffer.data + start;
    const uint32_t count = ctxt->buffer.byteIndex - start;
    if ((ctxt->flags & RT_F_FASTCOPY) == 0) {
        void* block = rtMemHeapAlloc(&ctxt->typeHeap, count);
        if (block == nullptr) {
            return RT_E_NOMEM;
        }
        element = static_cast<const uint8_t*>(std::memcpy(block, element, count));
    }
    *data = element;
    *numocts = count;
    return RT_OK;
}

int collect_to_end(ASN1CTXT* ctxt, const ASN1ElementExtent* ccb, _Asn1RTDList* list) {
    while (!contents_end(ctxt, ccb->start, ccb->length)) {
        const int status = xd_OpenTypeAppend(ctxt, list);
        if (status != RT_OK) {
            return status;
        }
    }
    return RT_OK;
}

int collect_to_tag(ASN1CTXT* ctxt, const ASN1ElementExtent* ccb, ASN1TAG tag, _Asn1RTDList* list) {
    for (;;) {
        int status = xd_match(ctxt, tag, nullptr, 0);
        if (status != RT_E_IDNOTFOUND) {
            return status;
        }
        if (contents_end(ctxt, ccb->start, ccb->length)) {
            return RT_E_ENDOFBUF;
        }
        status = xd_OpenTypeAppend(ctxt, list);
        if (status != RT_OK) {
            return status;
        }
    }
}

}  // namespace

extern "C" {

int xe_OpenType(ASN1CTXT* ctxt, const uint8_t* data, uint32_t numocts) {
    if (numocts == 0) {
        return 0;
    }
    if (data == nullptr) {
        return RT_E_BADVALUE;
    }
    const int size = element_size(data, numocts);
    if (size < 0 || data == xe_getp(ctxt)) {
        return size;
    }
    return xe_memcpy(ctxt, data, static_cast<size_t>(size));
}

int xe_OpenTypeExt(ASN1CTXT* ctxt, const _Asn1RTDList* list) {
    if (list == nullptr) {
        return 0;
    }
    int total = 0;
    for (const _Asn1RTDListNode* node = list->tail; node != nullptr; node = node->prev) {
        const ASN1OpenType* element = static_cast<const ASN1OpenType*>(node->data);
        const int written =
            element == nullptr ? RT_E_BADVALUE : xe_OpenType(ctxt, element->data, element->numocts);
        if (written < 0) {
            return rtErrSetData(&ctxt->errInfo, written);
        }
        total += written;  // all of it lies in one buffer, so the sum fits
    }
    return total;
}

int xd_OpenType(ASN1CTXT* ctxt, const uint8_t** data, uint32_t* numocts) {
    const uint32_t start = ctxt->buffer.byteIndex;
    ASN1TAG tag;
    int length;
    int status = xd_tag_len(ctxt, &tag, &length, XM_ADVANCE);
    if (status == RT_E_ENDOFBUF) {
        // Intended: success, so that an unknown trailing element may be missing or end the message.
        *data = nullptr;
        *numocts = 0;
        return RT_OK;
    }
    if (status == RT_OK) {
        status = pass_contents(ctxt, tag, length);
    }
    return status == RT_OK ? hand_out(ctxt, start, data, numocts) : status;
}

int xd_OpenTypeExt(ASN1CTXT* ctxt, const ASN1ElementExtent* ccb, ASN1TAG tag, _Asn1RTDList* list) {
    const int status =
        tag == kNoNextElement ? collect_to_end(ctxt, ccb, list) : collect_to_tag(ctxt, ccb, tag, list);
    return status == RT_OK ? RT_OK : rtErrSetData(&ctxt->errInfo, status);
}

int xd_OpenTypeAppend(ASN1CTXT* ctxt, _Asn1RTDList* list) {
    if (list == nullptr) {
        return xd_NextElement(ctxt);
    }
    // Node and record in one block, which `rtDListAppendNode` counts on.
    void* block = rtMemHeapAllocZ(&ctxt->typeHeap, sizeof(_Asn1RTDListNode) + sizeof(ASN1OpenType));
    if (block == nullptr) {
        return RT_E_NOMEM;
    }
    ASN1OpenType* element = reinterpret_cast<ASN1OpenType*>(static_cast<_Asn1RTDListNode*>(block) + 1);
    const int status = xd_OpenType(ctxt, &element->data, &element->numocts);
    if (status != RT_OK) {
        rtMemHeapFreePtr(&ctxt->typeHeap, block);
        return status;
    }
    rtDListAppendNode(ctxt, list, element);
    return RT_OK;
}

}  // extern "C"
