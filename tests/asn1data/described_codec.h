#pragma once

// The codecs of described types: a record encoded, and one decoded, each on a context of its own.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>

#include "runtime/message_buffer.h"
#include "tests/asn1data/described_value.h"

namespace Quillmark::test {

/// What an encoder returned, and what it wrote.
struct Encoded {
    int result;
    Octets octets;
};

inline Encoded encode(const TypeDescription& type, void* record) {
    ASN1BEREncodeBuffer buffer;
    const int result = type.functions.encode(buffer.getCtxtPtr(), record, ASN1EXPL);
    if (result < 0) {
        return {result, {}};
    }
    return {result, Octets(buffer.getMsgPtr(), buffer.getMsgPtr() + result)};
}

/// How a decoder gets its octets.
enum class Buffer {
    kMessage,  // as a message, whose outermost length is looked at first
    kAsItIs    // as a buffer that ends where the octets end
};

/// A record decoded from octets, on a context of its own.
class Decoded {
  public:
    Decoded(const TypeDescription& type, std::span<const std::uint8_t> octets, Buffer how, void* record)
        : type_(type),
          octets_(new std::uint8_t[octets.size()]),
          buffer_(octets_.get(), static_cast<int>(octets.size())),
          record_(record) {
        std::ranges::copy(octets, octets_.get());
        if (how == Buffer::kMessage) {
            buffer_.init();
        } else {
            rtInitContextBuffer(context(), octets_.get(), static_cast<std::uint32_t>(octets.size()));
        }
        status_ = type.functions.decode(context(), record, ASN1EXPL, 0);
    }

    int status() const { return status_; }
    ASN1CTXT* context() { return buffer_.getCtxtPtr(); }
    void free() { type_.functions.free(context(), record_); }

  private:
    const TypeDescription& type_;
    std::unique_ptr<std::uint8_t[]> octets_;  // of exactly their size, so that a sanitizer sees more
    ASN1BERDecodeBuffer buffer_;
    void* record_;
    int status_;
};

}  // namespace Quillmark::test
