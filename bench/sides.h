#pragma once

// The operations of the two sides. Each makes and frees everything but keys (and, on OpenSSL's side, the
// parsed certificates of the authority, as a server would keep them), and throws when a step fails.

#include <cstddef>

#include "bench/work.h"

namespace Quillmark::bench {

namespace ours {

std::size_t request_decode();
std::size_t request_build_encode();
std::size_t response_decode();
std::size_t authority_step(KeyKind kind);
void client_step(KeyKind kind);

/// A decoded response, to be encoded again and again.
class ResponseEncoder {
  public:
    ResponseEncoder();
    ~ResponseEncoder();
    std::size_t encode() const;

  private:
    struct State;
    State* state_;
};

/// The message service alone: a message like that of a stamp, opened, signed and closed again and again.
class SignedMessage {
  public:
    explicit SignedMessage(KeyKind kind);
    ~SignedMessage();
    void build() const;

  private:
    struct State;
    State* state_;
};

}  // namespace ours

namespace openssl {

std::size_t request_decode();
std::size_t request_build_encode();
std::size_t response_decode();
std::size_t authority_step(KeyKind kind);
void client_step(KeyKind kind);

class ResponseEncoder {
  public:
    ResponseEncoder();
    ~ResponseEncoder();
    std::size_t encode() const;

  private:
    struct State;
    State* state_;
};

/// The raw signature over 100 octets, as large as signed attributes are, with a fresh digest context.
void sign(KeyKind kind);
/// The raw verification of it.
void verify(KeyKind kind);

/// Answers `request` with the authority of `kind`; the DER of the response.
Bytes answer(KeyKind kind, const Bytes& request);
/// DER of a full request.
Bytes make_request();

}  // namespace openssl

}  // namespace Quillmark::bench
