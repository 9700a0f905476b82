#include "platform/detail/der_writer.h"

#include <algorithm>
#include <cstring>

namespace Quillmark::platform {

namespace {

// The shorter encoding is padded with 0 octets for the comparison, but of two elements neither begins with
// the other, so padding never decides.
bool comes_before(Octets left, Octets right) {
    const int order = std::memcmp(left.data(), right.data(), std::min(left.size(), right.size()));
    return order != 0 ? order < 0 : left.size() < right.size();
}

}  // namespace

void sort_set(std::vector<Octets>& elements) {
    std::ranges::sort(elements, comes_before);
}

bool is_sorted_set(const std::vector<Octets>& elements) {
    return std::ranges::is_sorted(elements, comes_before);
}

DerWriter::DerWriter(std::size_t room)
    : buffer_(std::make_unique_for_overwrite<std::uint8_t[]>(room)), room_(room), begin_(room) {}

std::uint8_t* DerWriter::extend(std::size_t size) {
    if (size > begin_) {
        const std::size_t room = std::max(2 * room_, this->size() + size);
        auto buffer = std::make_unique_for_overwrite<std::uint8_t[]>(room);
        std::copy_n(buffer_.get() + begin_, this->size(), buffer.get() + (room - this->size()));
        begin_ = room - this->size();
        buffer_ = std::move(buffer);
        room_ = room;
    }
    begin_ -= size;
    return buffer_.get() + begin_;
}

void DerWriter::octets(Octets value) {
    std::copy(value.begin(), value.end(), extend(value.size()));
}

void DerWriter::element(std::uint8_t tag, Octets content) {
    const std::size_t mark = size();
    octets(content);
    wrap(tag, mark);
}

void DerWriter::wrap(std::uint8_t tag, std::size_t mark) {
    std::size_t length = size() - mark;
    if (length > 0xFFFFFFFFu) {
        throw Failure{CRYPT_E_ASN1_LARGE};
    }
    if (length < 0x80) {
        *extend(1) = static_cast<std::uint8_t>(length);
    } else {
        std::uint8_t octet_count = 0;
        for (; length > 0; length >>= 8, ++octet_count) {
            *extend(1) = static_cast<std::uint8_t>(length);
        }
        *extend(1) = 0x80 | octet_count;
    }
    *extend(1) = tag;
}

void DerWriter::set_of(std::uint8_t tag, std::vector<Octets> elements) {
    sort_set(elements);
    const std::size_t mark = size();
    std::for_each(elements.rbegin(), elements.rend(), [this](Octets element) { octets(element); });
    wrap(tag, mark);
}

}  // namespace Quillmark::platform
