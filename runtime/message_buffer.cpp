#include "runtime/message_buffer.h"

#include <cstring>

#include "runtime/ber_decode.h"
#include "runtime/der_encode.h"
#include "runtime/memory_buffer.h"

namespace {

void throw_unless_ok(int status) {
    if (status != RT_OK) {
        throw ASN1MessageBuffer::RTLError(status);
    }
}

}  // namespace

ASN1MessageBufferIF::~ASN1MessageBufferIF() = default;
ASN1CtxtPtr ASN1MessageBufferIF::getContext() {
    return {};
}
ASN1Context* ASN1MessageBufferIF::getCtxtPtr() {
    return nullptr;
}
uint8_t* ASN1MessageBufferIF::getMsgCopy() {
    return nullptr;
}
uint8_t* ASN1MessageBufferIF::getMsgPtr() {
    return nullptr;
}
void ASN1MessageBufferIF::init() {}
int ASN1MessageBufferIF::initBuffer(ASN1MemBuf&) {
    return RT_E_NOTSUPP;
}
int ASN1MessageBufferIF::initBuffer(unsigned short*) {
    return RT_E_NOTSUPP;
}
int ASN1MessageBufferIF::initBuffer(char*) {
    return RT_E_NOTSUPP;
}

ASN1MessageBuffer::RTLError::~RTLError() = default;

ASN1MessageBuffer::ASN1MessageBuffer(Type type) : mpContext(new ASN1Context), mBufferType(type) {}

ASN1MessageBuffer::~ASN1MessageBuffer() = default;

ASN1CtxtPtr ASN1MessageBuffer::getContext() {
    return mpContext;
}

ASN1Context* ASN1MessageBuffer::getCtxtPtr() {
    return mpContext;
}

uint8_t* ASN1MessageBuffer::getMsgPtr() {
    return mpContext->buffer.data;
}

int ASN1MessageBuffer::initBuffer(ASN1MemBuf& memBuf) {
    uint32_t length;
    const uint8_t* contents = rtMemBufGetData(&memBuf, &length);
    // A null buffer would stand for one yet to be filled, not for an empty one.
    return contents == nullptr ? RT_E_INVPARAM : rtInitContextBuffer(mpContext, contents, length);
}

int ASN1MessageBuffer::initBuffer(unsigned short*) {
    return RT_E_NOTSUPP;
}

int ASN1MessageBuffer::initBuffer(char*) {
    return RT_E_NOTSUPP;
}

ASN1BERMessageBuffer::~ASN1BERMessageBuffer() = default;

ASN1BEREncodeBuffer::ASN1BEREncodeBuffer() : ASN1BERMessageBuffer(BEREncode) {
    throw_unless_ok(xe_setp(mpContext, nullptr, 0));
}

ASN1BEREncodeBuffer::ASN1BEREncodeBuffer(unsigned char* buffer, int size) : ASN1BERMessageBuffer(BEREncode) {
    throw_unless_ok(xe_setp(mpContext, buffer, size));
}

ASN1BEREncodeBuffer::~ASN1BEREncodeBuffer() = default;

uint8_t* ASN1BEREncodeBuffer::getMsgCopy() {
    const ASN1BUFFER& buffer = mpContext->buffer;
    if (buffer.data == nullptr) {
        return nullptr;
    }
    const size_t size = buffer.size - buffer.byteIndex;
    uint8_t* copy = new uint8_t[size];
    std::memcpy(copy, xe_getp(mpContext), size);
    return copy;
}

uint8_t* ASN1BEREncodeBuffer::getMsgPtr() {
    return xe_getp(mpContext);
}

void ASN1BEREncodeBuffer::init() {
    ASN1BUFFER& buffer = mpContext->buffer;
    if (buffer.data != nullptr) {
        buffer.byteIndex = buffer.size - 1;
    }
}

int ASN1BEREncodeBuffer::setBuffer(unsigned char* buffer, int size) {
    return xe_setp(mpContext, buffer, size);
}

ASN1BEREncodeBuffer& ASN1BEREncodeBuffer::operator<<(ASN1CType& value) {
    const int result = value.EncodeTo(*this);
    if (result != RT_OK) {
        throw ASN1RTLException(result);  // Intended: also for the length of a message
    }
    return *this;
}

bool ASN1BEREncodeBuffer::isA(Type type) {
    return type == BEREncode;
}

ASN1BERDecodeBuffer::ASN1BERDecodeBuffer() : ASN1BERDecodeBuffer(nullptr, 0) {}

ASN1BERDecodeBuffer::ASN1BERDecodeBuffer(const unsigned char* msg, int size)
    : ASN1BERMessageBuffer(BERDecode), msgPtr(msg), msgSize(size), bufferReady(0) {}

ASN1BERDecodeBuffer::~ASN1BERDecodeBuffer() = default;

bool ASN1BERDecodeBuffer::has_message() const {
    return msgPtr != nullptr && msgSize >= 1;
}

int ASN1BERDecodeBuffer::start() {
    bufferReady = 1;
    return xd_setp(mpContext, msgPtr, msgSize, nullptr, nullptr);
}

void ASN1BERDecodeBuffer::init() {
    if (bufferReady == 0 && has_message()) {
        start();  // Intended: the decoder of the value meets what is wrong with the message
    }
}

void ASN1BERDecodeBuffer::setBuffer(const unsigned char* msg, int size, unsigned char keep) {
    if (keep != 0 && bufferReady != 0 && msg == msgPtr && size == msgSize) {
        return;
    }
    msgPtr = msg;
    msgSize = size;
    bufferReady = 0;
    if (has_message()) {
        start();
    } else {
        mpContext->buffer = ASN1BUFFER{};  // the old message need not live on
    }
}

const unsigned char* ASN1BERDecodeBuffer::findElement(unsigned int tag, int& length, int first) {
    if (first != 0 && (!has_message() || start() != RT_OK)) {
        return nullptr;
    }
    const int mode = first != 0 ? XM_SEEK : XM_SEEK | XM_SKIP;
    if (xd_match(mpContext, tag, &length, mode) != RT_OK) {
        return nullptr;
    }
    return mpContext->buffer.data + mpContext->buffer.byteIndex;
}

ASN1BERDecodeBuffer& ASN1BERDecodeBuffer::operator>>(ASN1CType& value) {
    const int status = value.DecodeFrom(*this);
    if (status != RT_OK) {
        throw ASN1RTLException(status);
    }
    return *this;
}

bool ASN1BERDecodeBuffer::isA(Type type) {
    return type == BERDecode;
}

ASN1CType::ASN1CType() : mpContext(new ASN1Context), mpMsgBuf(nullptr) {}

ASN1CType::ASN1CType(ASN1Context& context) : mpContext(&context), mpMsgBuf(nullptr) {}

ASN1CType::ASN1CType(ASN1MessageBufferIF& buffer) : mpContext(buffer.getContext()), mpMsgBuf(&buffer) {}

ASN1CType::~ASN1CType() = default;

int ASN1CType::Encode() {
    return mpMsgBuf == nullptr ? RT_E_INVPARAM : EncodeTo(*mpMsgBuf);
}

int ASN1CType::Decode() {
    return mpMsgBuf == nullptr ? RT_E_INVPARAM : DecodeFrom(*mpMsgBuf);
}

int ASN1CType::EncodeTo(ASN1MessageBufferIF&) {
    return RT_OK;
}

int ASN1CType::DecodeFrom(ASN1MessageBufferIF&) {
    return RT_OK;
}

void ASN1CType::setMsgBuf(ASN1MessageBufferIF& buffer) {
    mpMsgBuf = &buffer;
    rtCtxtSetMemHeap(mpContext, buffer.getCtxtPtr());
}
