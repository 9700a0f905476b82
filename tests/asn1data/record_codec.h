#pragma once

// A record decoded from octets, and octets encoded from a record, each through a control class on a buffer of
// its own. What a record points at lives as long as the buffer.

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "asn1data/control_classes.h"
#include "runtime/message_buffer.h"

namespace Quillmark::test {

template <typename Record, typename Control>
class Decoded {
  public:
    explicit Decoded(std::span<const std::uint8_t> octets)
        : octets_(octets.begin(), octets.end()),
          buffer_(octets_.data(), static_cast<int>(octets_.size())),
          status_(Control(buffer_, record_).Decode()) {}

    int status() const { return status_; }
    int first_status() { return context()->errInfo.status; }
    Record& record() { return record_; }
    ASN1CTXT* context() { return buffer_.getCtxtPtr(); }

  private:
    std::vector<std::uint8_t> octets_;  // of exactly its size, so that a sanitizer sees a read behind it
    ASN1BERDecodeBuffer buffer_;
    Record record_{};
    int status_;
};

struct Encoded {
    int result;
    std::vector<std::uint8_t> octets;
};

template <typename Control, typename Record>
Encoded encode(Record& record) {
    ASN1BEREncodeBuffer buffer;
    const int result = Control(buffer, record).Encode();
    if (result < 0) {
        return {result, {}};
    }
    return {result, std::vector<std::uint8_t>(buffer.getMsgPtr(), buffer.getMsgPtr() + result)};
}

}  // namespace Quillmark::test
