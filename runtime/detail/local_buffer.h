#pragma once

// Message buffers for one call. Their context lies in the object, not on the free store, and a message that
// is short, as nearly all are, is written there too. Nothing that takes a reference on the context may
// outlive the buffer.
//
//     LocalEncodeBuffer buffer;
//     const int length = ASN1C_X(buffer, record).EncodeTo(buffer);    // the message is buffer.getMsgPtr()

#include <cstdint>

#include "runtime/ber_decode.h"
#include "runtime/der_encode.h"
#include "runtime/detail/buffer_room.h"
#include "runtime/message_buffer.h"

namespace Quillmark::detail {

/// What both directions share. Throws `ASN1MessageBuffer::RTLError` when the context cannot be made.
class LocalBuffer : public ASN1MessageBufferIF {
  public:
    LocalBuffer(const LocalBuffer&) = delete;
    LocalBuffer& operator=(const LocalBuffer&) = delete;

    ASN1CtxtPtr getContext() override { return &context_; }
    ASN1Context* getCtxtPtr() override { return &context_; }

  protected:
    LocalBuffer() { context_._ref(); }  // of its own, so that no other release is the last

    ASN1Context context_;
};

/// As an `ASN1BEREncodeBuffer`.
class LocalEncodeBuffer final : public LocalBuffer {
  public:
    LocalEncodeBuffer() {
        xe_setp(&context_, room_, sizeof room_);  // which needs no memory
        context_.buffer.dynamic = kFirstRoom;
    }

    uint8_t* getMsgPtr() override { return xe_getp(&context_); }
    void init() override { context_.buffer.byteIndex = context_.buffer.size - 1; }
    bool isA(Type type) override { return type == BEREncode; }

  private:
    uint8_t room_[4096];  // a response with two certificates
};

/// As an `ASN1BERDecodeBuffer`.
class LocalDecodeBuffer final : public LocalBuffer {
  public:
    /// Reads nothing yet. The message must outlive the buffer.
    LocalDecodeBuffer(const uint8_t* message, int size) : message_(message), size_(size) {}

    /// Intended: the decoder of the value meets what is wrong with the message.
    void init() override {
        if (message_ != nullptr && size_ >= 1) {
            xd_setp(&context_, message_, size_, nullptr, nullptr);
        }
    }
    bool isA(Type type) override { return type == BERDecode; }

  private:
    const uint8_t* message_;
    int size_;
};

}  // namespace Quillmark::detail
