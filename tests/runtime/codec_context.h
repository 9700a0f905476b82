#pragma once

// A codec context for one test, and the two things that tests do with it: look at what was encoded, and
// decode octets of which not one more may be read.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/ber_decode.h"
#include "runtime/context.h"
#include "runtime/der_encode.h"
#include "tests/support/hex.h"

namespace Quillmark::test {

class CodecContext {
  public:
    CodecContext() { rtInitContext(&ctxt_, nullptr); }
    ~CodecContext() { rtFreeContext(&ctxt_); }
    CodecContext(const CodecContext&) = delete;
    CodecContext& operator=(const CodecContext&) = delete;

    operator ASN1CTXT*() { return &ctxt_; }
    ASN1CTXT* operator->() { return &ctxt_; }
    ASN1CTXT& operator*() { return ctxt_; }

    /// Starts a message in a buffer that grows.
    CodecContext& encode() {
        xe_setp(&ctxt_, nullptr, 0);
        return *this;
    }

    /// What has been encoded so far.
    std::string written() { return to_hex(xe_getp(&ctxt_), ctxt_.buffer.size - 1 - ctxt_.buffer.byteIndex); }

    /// Bounds the buffer by the octets of `hex` and by nothing else: no header is read. They lie in a block
    /// of their exact size, so that a sanitizer sees the first octet that is read too many.
    CodecContext& read(std::string_view hex) { return read(from_hex(hex)); }
    CodecContext& read(const std::vector<std::uint8_t>& octets) {
        message_ = octets;
        message_.shrink_to_fit();
        rtInitContextBuffer(&ctxt_, message_.data(), static_cast<std::uint32_t>(message_.size()));
        if (message_.empty()) {
            ctxt_.buffer = ASN1BUFFER{};
        }
        return *this;
    }

    std::uint32_t position() const { return ctxt_.buffer.byteIndex; }
    int recorded() const { return ctxt_.errInfo.status; }

  private:
    ASN1CTXT ctxt_;
    std::vector<std::uint8_t> message_;
};

}  // namespace Quillmark::test
