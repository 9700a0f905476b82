#include "tests/asn1data/decoding_primitives.h"

#include <algorithm>
#include <limits>

#include "runtime/status.h"

namespace Quillmark::test {
namespace {

constexpr int kIndefinite = -9999;

}  // namespace

// Headers (X.690 8.1)

int PrimitiveReader::take_length(int& length) {
    length = 0;
    if (at_end()) {
        return RT_E_ENDOFBUF;
    }
    const std::uint8_t first = octets_[position_++];
    if (first < 0x80) {
        length = first;
        return RT_OK;
    }
    const std::size_t count = first & 0x7F;
    if (count == 0) {
        length = kIndefinite;
        met_.not_told = true;
        return RT_OK;
    }
    if (count > 4) {
        return RT_E_INVLEN;
    }
    std::uint64_t assembled = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (at_end()) {
            return RT_E_ENDOFBUF;
        }
        assembled = assembled << 8 | octets_[position_++];
    }
    if (assembled > left()) {
        return RT_E_INVLEN;
    }
    length = static_cast<int>(assembled);
    return RT_OK;
}

/// A tag number in base 128 (X.690 8.1.2.4.2), of nine octets at most and below 2^29.
int PrimitiveReader::take_long_number(std::uint32_t& number) {
    number = 0;
    for (int count = 0; count < 9; ++count) {
        if (at_end()) {
            return RT_E_ENDOFBUF;
        }
        const std::uint8_t octet = octets_[position_++];
        if (number > 0x1FFFFFFFu >> 7) {
            return RT_E_BADTAG;
        }
        number = number << 7 | (octet & 0x7F);
        if (octet < 0x80) {
            return RT_OK;
        }
    }
    return RT_E_BADTAG;
}

int PrimitiveReader::take_header(std::uint32_t& word, int& length) {
    if (at_end()) {
        return RT_E_ENDOFBUF;
    }
    const std::uint8_t first = octets_[position_++];
    constructed_ = (first & 0x20) != 0;
    std::uint32_t number = first & 0x1F;
    int status = number == 0x1F ? take_long_number(number) : RT_OK;
    if (status != RT_OK) {
        return status;
    }
    word = std::uint32_t{first & 0xE0u} << 24 | number;
    status = take_length(length);
    return status == RT_OK && length == kIndefinite && !constructed_ ? RT_E_INVLEN : status;
}

int PrimitiveReader::match_either_form(std::uint8_t identifier, int& length) {
    if (at_end()) {
        return RT_E_ENDOFBUF;
    }
    if ((octets_[position_] & kWithoutForm) != (identifier & kWithoutForm)) {
        return RT_E_IDNOTFOUND;
    }
    constructed_ = (octets_[position_++] & 0x20) != 0;
    const int status = take_length(length);
    return status == RT_OK && length == kIndefinite && !constructed_ ? RT_E_INVLEN : status;
}

/// The numbers and identifiers mind the form.
int PrimitiveReader::match_primitive(std::uint8_t identifier) {
    if (at_end()) {
        return RT_E_ENDOFBUF;
    }
    if (octets_[position_] != identifier) {
        return RT_E_IDNOTFOUND;
    }
    ++position_;
    constructed_ = false;
    return RT_OK;
}

std::uint32_t PrimitiveReader::peek_word() {
    const std::size_t before = position_;
    const bool form = constructed_;
    const Encounters met = met_;
    std::uint32_t word = 0;
    int length = 0;
    const int status = take_header(word, length);
    position_ = before;
    constructed_ = form;
    met_ = met;
    return status == RT_OK ? word : 0;
}

bool PrimitiveReader::more(const Contents& contents) {
    const auto taken = static_cast<std::int64_t>(position_) - static_cast<std::int64_t>(contents.start);
    if (at_end()) {
        met_.ended_early = met_.ended_early || taken < contents.length;
        return false;
    }
    return taken < contents.length;
}

// Primitives

int PrimitiveReader::take_contents(int length, int when_short, Value& value) {
    const auto count = static_cast<std::size_t>(std::max(length, 0));
    if (count > left()) {
        return when_short;
    }
    const auto begin = octets_.begin() + static_cast<std::ptrdiff_t>(position_);
    value.contents.assign(begin, begin + static_cast<std::ptrdiff_t>(count));
    position_ += count;
    return RT_OK;
}

int PrimitiveReader::boolean(Tagging tagging, int length, Value& value) {
    if (tagging == Tagging::kExplicit) {
        const int status = match_primitive(1);
        if (status != RT_OK) {
            return status;
        }
        if (at_end()) {
            return RT_E_ENDOFBUF;
        }
        length = octets_[position_++];
    }
    return length != 1 ? RT_E_INVLEN : take_contents(1, RT_E_ENDOFBUF, value);
}

int PrimitiveReader::number_header(const TypeDescription& type, int& length) {
    const int status = match_primitive(type.kind == Kind::kEnumerated ? 10 : 2);
    if (status != RT_OK || type.kind != Kind::kUnsigned16) {
        return status == RT_OK ? take_length(length) : status;
    }
    // Intended: a length octet as it stands, and at least one behind it
    if (left() < 2) {
        return RT_E_ENDOFBUF;
    }
    length = octets_[position_++];
    return RT_OK;
}

int PrimitiveReader::number(const TypeDescription& type, Tagging tagging, int length, Value& value) {
    if (tagging == Tagging::kExplicit) {
        const int status = number_header(type, length);
        if (status != RT_OK) {
            return status;
        }
    }
    if (type.kind == Kind::kBigInteger || type.kind == Kind::kBigMagnitude) {
        return take_contents(length, RT_E_ENDOFBUF, value);
    }
    const bool short_number = type.kind == Kind::kUnsigned16;
    const int most = short_number ? 3 : type.kind == Kind::kUnsigned ? 5 : 4;
    if (length > most) {
        return RT_E_TOOBIG;
    }
    if (length == 0) {
        if (type.kind == Kind::kUnsigned) {
            value.contents = {0};
            return RT_OK;
        }
        if (!short_number) {
            return RT_E_INVLEN;
        }
        length = 1;  // Intended: one octet is taken for none as well
    }
    const int status = take_contents(length, RT_E_ENDOFBUF, value);
    if (status != RT_OK) {
        return status;
    }
    const bool padded = type.kind == Kind::kUnsigned || short_number;
    return padded && length == most && value.contents.front() != 0 ? RT_E_TOOBIG : RT_OK;
}

int PrimitiveReader::null(Tagging tagging) {
    if (tagging == Tagging::kImplicit) {
        return RT_OK;
    }
    const int status = match_primitive(5);
    if (status != RT_OK) {
        return status;
    }
    if (at_end()) {
        return RT_E_ENDOFBUF;
    }
    return octets_[position_++] == 0 ? RT_OK : RT_E_INVLEN;
}

int PrimitiveReader::identifier(Tagging tagging, int length, Value& value) {
    if (tagging == Tagging::kExplicit) {
        int status = match_primitive(6);
        status = status == RT_OK ? take_length(length) : status;
        if (status != RT_OK) {
            return status;
        }
    }
    return length < 1 ? RT_E_INVLEN : take_contents(length, RT_E_ENDOFBUF, value);
}

/// The segments of a string in the constructed form (X.690 8.7.3), joined.
int PrimitiveReader::segments(int length, std::size_t room, Value& value) {
    const Contents contents{position_, length};
    while (more(contents)) {
        int part = 0;
        int status = match_either_form(4, part);
        if (status == RT_OK && static_cast<std::size_t>(part) > room - value.contents.size()) {
            status = RT_E_STROVFL;
        }
        if (status == RT_OK && constructed_) {
            status = segments(part, room, value);
        } else if (status == RT_OK) {
            Value segment;
            status = take_contents(part, RT_E_ENDOFBUF, segment);
            value.contents.insert(value.contents.end(), segment.contents.begin(), segment.contents.end());
        }
        if (status != RT_OK) {
            return status;
        }
    }
    return static_cast<int>(position_ - contents.start) == length ? RT_OK : RT_E_INVLEN;
}

int PrimitiveReader::string(const TypeDescription& type, Tagging tagging, int length, Value& value) {
    if (tagging == Tagging::kExplicit) {
        const int status = match_either_form(static_cast<std::uint8_t>(type.universal), length);
        if (status != RT_OK) {
            return status;
        }
    }
    const std::size_t room =
        type.kind == Kind::kSizedOctets ? type.room : std::numeric_limits<std::size_t>::max();
    if (static_cast<std::size_t>(length) > room) {
        return RT_E_STROVFL;
    }
    return constructed_ ? segments(length, room, value) : take_contents(length, RT_E_ENDOFBUF, value);
}

/// Segments of a string of bits are not told here: contents that begin with none are refused, and no contents
/// are no bits.
int PrimitiveReader::no_segments(int length, Value& value) {
    constexpr std::uint8_t kSegment = 3;
    value.contents = {0};
    const Contents contents{position_, length};
    if (!more(contents)) {
        return length == 0 ? RT_OK : RT_E_INVLEN;
    }
    met_.not_told = met_.not_told || (octets_[position_] & kWithoutForm) == kSegment;
    return RT_E_IDNOTFOUND;
}

int PrimitiveReader::bits(const TypeDescription& type, Tagging tagging, int length, Value& value) {
    if (tagging == Tagging::kExplicit) {
        const int status = match_either_form(3, length);
        if (status != RT_OK) {
            return status;
        }
    }
    const bool sized = type.kind == Kind::kSizedBits;
    const bool lone_octet = !sized && length == 1;  // read as it stands in either form
    if (constructed_ && !lone_octet) {
        return no_segments(length, value);
    }
    if (!sized && static_cast<std::size_t>(length) > left()) {
        return RT_E_ENDOFBUF;
    }
    if (length == 0) {
        value.contents = {0};
        return RT_OK;
    }
    if (at_end()) {
        return RT_E_ENDOFBUF;
    }
    const std::uint8_t unused = octets_[position_];
    if (length == 1 && unused != 0) {
        return RT_E_INVLEN;
    }
    if (unused > 7) {
        return RT_E_BADVALUE;
    }
    if (sized && length - 1 > static_cast<int>(type.room)) {
        return RT_E_STROVFL;
    }
    return take_contents(length, RT_E_ENDOFBUF, value);
}

int PrimitiveReader::open(Value& value) {
    const std::size_t start = position_;
    std::uint32_t word = 0;
    int length = 0;
    const int status = take_header(word, length);
    if (status == RT_E_ENDOFBUF) {
        met_.open_at_end = true;  // Intended: no element
        return RT_OK;
    }
    if (status != RT_OK) {
        return status;
    }
    met_.any_type = true;
    if ((word == 0 && length == 0) || static_cast<std::size_t>(length) > left()) {
        return RT_E_BADVALUE;
    }
    const int whole = static_cast<int>(position_ - start) + length;
    position_ = start;
    return take_contents(whole, RT_E_BADVALUE, value);
}

}  // namespace Quillmark::test
