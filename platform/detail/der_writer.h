#pragma once

// Writes DER from the end of a buffer towards its beginning, so that the length of a container is known when
// its header is written. What is written last stands first:
//
//     DerWriter writer(room);
//     const std::size_t sequence = writer.size();
//     writer.element(kOctetString, value);    // the second element
//     writer.element(kObjectId, type);        // the first
//     writer.wrap(kSequence, sequence);

#include <memory>

#include "platform/detail/der_walker.h"

namespace Quillmark::platform {

class DerWriter {
  public:
    /// `room` is a guess; the buffer grows when it is too small.
    explicit DerWriter(std::size_t room);

    std::size_t size() const { return room_ - begin_; }
    /// All that is written. Valid until the next write.
    Octets written() const { return {buffer_.get() + begin_, size()}; }
    Bytes copy() const { return {written().begin(), written().end()}; }

    void octets(Octets value);
    /// One element with primitive or ready content.
    void element(std::uint8_t tag, Octets content);
    /// A header for all that was written since the size was `mark`. More than four octets of length are
    /// refused with `CRYPT_E_ASN1_LARGE`.
    void wrap(std::uint8_t tag, std::size_t mark);
    /// A SET OF these elements in the order of DER (X.690 11.6).
    void set_of(std::uint8_t tag, std::vector<Octets> elements);

  private:
    std::uint8_t* extend(std::size_t size);

    std::unique_ptr<std::uint8_t[]> buffer_;
    std::size_t room_;
    std::size_t begin_;  // the octets before it are free
};

/// Sorts encodings as X.690 11.6 orders the elements of a SET OF.
void sort_set(std::vector<Octets>& elements);
bool is_sorted_set(const std::vector<Octets>& elements);

}  // namespace Quillmark::platform
