#pragma once

// One walk forward through encoded ASN.1 (X.690). BER is taken: indefinite and non-minimal lengths. All
// input is hostile: every length is tested against its container before it is used, nesting is limited, and
// no step costs more than the octets it passes (`kMaxNesting` times where elements lie in each other).

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/detail/error_code.h"

namespace Quillmark::platform {

using Octets = std::span<const std::uint8_t>;
using Bytes = std::vector<std::uint8_t>;

bool equal(Octets left, Octets right);

inline constexpr int kMaxNesting = 32;

// Identifier octets as the structures here use them.
inline constexpr std::uint8_t kBoolean = 0x01;
inline constexpr std::uint8_t kInteger = 0x02;
inline constexpr std::uint8_t kBitString = 0x03;
inline constexpr std::uint8_t kOctetString = 0x04;
inline constexpr std::uint8_t kNull = 0x05;
inline constexpr std::uint8_t kObjectId = 0x06;
inline constexpr std::uint8_t kUtcTime = 0x17;
inline constexpr std::uint8_t kGeneralizedTime = 0x18;
inline constexpr std::uint8_t kConstructedOctetString = 0x24;
inline constexpr std::uint8_t kSequence = 0x30;
inline constexpr std::uint8_t kSet = 0x31;
inline constexpr std::uint8_t context(unsigned number) {
    return static_cast<std::uint8_t>(0x80 | number);
}
inline constexpr std::uint8_t constructed_context(unsigned number) {
    return static_cast<std::uint8_t>(0xA0 | number);
}

struct Element {
    std::uint8_t tag = 0;  // first identifier octet; 0x1F in its low bits stands for all high tag numbers
    Octets whole;          // with header and, in the indefinite form, the end-of-contents octets
    Octets content;        // without either
};

/// Reads the element that `from` begins with. `overrun` is the code for running out of octets: input that
/// is truncated and an inner length that passes its container are different failures.
ErrorCode read_element(Octets from, ErrorCode overrun, Element& element) noexcept;

/// Whether `octets` are one element from end to end.
bool is_one_element(Octets octets) noexcept;

/// The elements of one container in their order. A failure is thrown as `Failure`.
class DerWalker {
  public:
    /// Walks a whole input: running out of it is `CRYPT_E_ASN1_EOD`.
    explicit DerWalker(Octets input) : left_(input), overrun_(CRYPT_E_ASN1_EOD) {}
    /// Walks the content of an element: running out of it is `CRYPT_E_ASN1_CORRUPT`.
    explicit DerWalker(const Element& container) : left_(container.content), overrun_(CRYPT_E_ASN1_CORRUPT) {}

    bool at_end() const { return left_.empty(); }
    bool next_is(std::uint8_t tag) const { return !left_.empty() && left_.front() == tag; }

    /// The next element, whatever its tag.
    Element next();
    /// The next element, which must have this tag, else `CRYPT_E_ASN1_BADTAG`.
    Element next(std::uint8_t tag);
    /// The next element if it has this tag.
    std::optional<Element> next_if(std::uint8_t tag);
    /// `CRYPT_E_ASN1_CORRUPT` when elements are left.
    void expect_end() const;

  private:
    Octets left_;
    ErrorCode overrun_;
};

/// The value of an OCTET STRING in the primitive or the constructed form (X.690 8.7.3), the segments of the
/// latter appended to `joined`, at any nesting up to `kMaxNesting`.
void append_octet_string(const Element& string, Bytes& joined);

}  // namespace Quillmark::platform
