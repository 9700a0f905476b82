// What no decoder may do to its caller, whatever the octets are: every message here is cut at each octet and
// spoiled at each octet. The octets lie in blocks of their exact size, so that a sanitizer sees the first
// read outside them.

#include <gtest/gtest.h>

#include <string>

#include "runtime/ber_decode.h"
#include "runtime/list.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/case_name.h"
#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

// Reads one value and returns the status; `size` receives the octets that the value takes.
using Decoder = int (*)(ASN1CTXT* ctxt, std::size_t& size);

int read_boolean(ASN1CTXT* ctxt, std::size_t&) {
    uint8_t value;
    return xd_boolean(ctxt, &value, ASN1EXPL, 0);
}

int read_integer(ASN1CTXT* ctxt, std::size_t&) {
    int32_t value;
    return xd_integer(ctxt, &value, ASN1EXPL, 0);
}

int read_unsigned(ASN1CTXT* ctxt, std::size_t&) {
    uint32_t value;
    return xd_unsigned(ctxt, &value, ASN1EXPL, 0);
}

int read_uint16(ASN1CTXT* ctxt, std::size_t&) {
    uint16_t value;
    return xd_uint16(ctxt, &value, ASN1EXPL, 0);
}

int read_enum(ASN1CTXT* ctxt, std::size_t&) {
    int32_t value;
    return xd_enum(ctxt, &value, ASN1EXPL, 0);
}

int read_null(ASN1CTXT* ctxt, std::size_t&) {
    return xd_null(ctxt, ASN1EXPL);
}

int read_objid(ASN1CTXT* ctxt, std::size_t& size) {
    ASN1OBJID oid;
    const int status = xd_objid(ctxt, &oid, ASN1EXPL, 0);
    size = status == RT_OK ? oid.numids - 1 : 0;
    return status;
}

int read_bigint(ASN1CTXT* ctxt, std::size_t& size) {
    char* text = nullptr;
    const int status = xd_bigint(ctxt, &text, ASN1EXPL, 0);
    size = status == RT_OK ? (std::string(text).size() - 2) / 2 : 0;
    return status;
}

int read_octet_string(ASN1CTXT* ctxt, std::size_t& size) {
    const uint8_t* data = nullptr;
    uint32_t count = 0;
    const int status = xd_octstr(ctxt, &data, &count, ASN1EXPL, 0);
    size = status == RT_OK ? std::string(reinterpret_cast<const char*>(data), count).size() : 0;
    return status;
}

int read_octets_into_array(ASN1CTXT* ctxt, std::size_t& size) {
    uint8_t array[4];
    uint32_t count = sizeof array;
    const int status = xd_octstr_s(ctxt, array, &count, ASN1EXPL, 0);
    size = status == RT_OK ? count : 0;
    return status;
}

int read_bit_string(ASN1CTXT* ctxt, std::size_t& size) {
    const uint8_t* data = nullptr;
    uint32_t count = 0;
    const int status = xd_bitstr(ctxt, &data, &count, ASN1EXPL, 0);
    const std::size_t octets = (std::size_t{count} + 7) / 8;
    size = status == RT_OK ? std::string(reinterpret_cast<const char*>(data), octets).size() : 0;
    return status;
}

int read_bits_into_array(ASN1CTXT* ctxt, std::size_t& size) {
    uint8_t array[4];
    uint32_t count = 32;
    const int status = xd_bitstr_s(ctxt, array, &count, ASN1EXPL, 0);
    size = status == RT_OK ? (count + 7) / 8 : 0;
    return status;
}

int read_text(ASN1CTXT* ctxt, std::size_t& size) {
    char* text = nullptr;
    const int status = xd_charstr(ctxt, &text, ASN1EXPL, 12, 0);
    size = status == RT_OK ? std::string(text).size() : 0;
    return status;
}

int read_narrow(ASN1CTXT* ctxt, std::size_t& size) {
    ASN1_16BITCHARSTRING text{};
    const int status = xd_16BitCharStr(ctxt, &text, ASN1EXPL, 30, 0);
    size = status == RT_OK ? text.nchars * 2 : 0;
    return status;
}

int read_wide(ASN1CTXT* ctxt, std::size_t& size) {
    ASN1_32BITCHARSTRING text{};
    const int status = xd_32BitCharStr(ctxt, &text, ASN1EXPL, 28, 0);
    size = status == RT_OK ? text.nchars * 4 : 0;
    return status;
}

int step_over_element(ASN1CTXT* ctxt, std::size_t&) {
    return xd_NextElement(ctxt);
}

struct Victim {
    const char* name;
    Decoder read;
    const char* ber;
};

constexpr Victim kVictims[] = {
    {.name = "Boolean", .read = read_boolean, .ber = "01 01 ff"},
    {.name = "Integer", .read = read_integer, .ber = "02 84 00 00 00 02 01 05"},
    {.name = "Unsigned", .read = read_unsigned, .ber = "02 05 00 ff ff ff ff"},
    {.name = "SixteenBits", .read = read_uint16, .ber = "02 03 00 ff ff"},
    {.name = "Enumerated", .read = read_enum, .ber = "0a 81 01 05"},
    {.name = "Null", .read = read_null, .ber = "05 00"},
    {.name = "ObjectIdentifier", .read = read_objid, .ber = "06 09 2a 86 48 86 f7 0d 01 07 02"},
    {.name = "BigInteger", .read = read_bigint, .ber = "02 82 00 05 00 ff 01 02 03"},
    {.name = "OctetString", .read = read_octet_string, .ber = "04 04 01 02 03 04"},
    {.name = "OctetStringInSegments",
     .read = read_octet_string,
     .ber = "24 80 04 02 01 02 04 81 02 03 04 00 00"},
    {.name = "OctetStringNested", .read = read_octet_string, .ber = "24 08 24 06 04 01 01 04 01 02"},
    {.name = "OctetStringIntoArray", .read = read_octets_into_array, .ber = "24 04 04 02 01 02"},
    {.name = "BitString", .read = read_bit_string, .ber = "03 04 03 01 02 08"},
    {.name = "BitStringInSegments", .read = read_bit_string, .ber = "23 80 03 02 00 aa 03 02 04 b0 00 00"},
    {.name = "BitStringIntoArray", .read = read_bits_into_array, .ber = "23 09 23 07 03 05 00 aa bb cc dd"},
    {.name = "Text", .read = read_text, .ber = "0c 03 61 62 63"},
    {.name = "TextInSegments", .read = read_text, .ber = "2c 80 04 01 61 04 02 62 63 00 00"},
    {.name = "NarrowText", .read = read_narrow, .ber = "3e 80 04 03 00 41 20 04 01 ac 00 00"},
    {.name = "WideText", .read = read_wide, .ber = "1c 08 00 00 00 41 00 01 f6 00"},
    {.name = "LongTag", .read = step_over_element, .ber = "bf 81 00 80 02 01 05 00 00"},
    {.name = "NestedIndefinite", .read = step_over_element, .ber = "30 80 30 80 02 01 05 00 00 04 00 00 00"},
};

constexpr uint16_t kFlags[] = {0, RT_F_INDEFLEN, RT_F_FASTCOPY, RT_F_INDEFLEN | RT_F_FASTCOPY};

class Hostile : public testing::TestWithParam<Victim> {
  protected:
    struct Outcome {
        int status;
        std::size_t size;
        uint32_t depth;
    };

    static Outcome read(const std::vector<uint8_t>& octets, uint16_t flags) {
        CodecContext ctxt;
        rtCtxtSetFlag(ctxt.read(octets), flags);
        std::size_t size = 0;
        const int status = GetParam().read(ctxt, size);
        return {status, size, ctxt->nestingDepth};
    }

    std::vector<uint8_t> whole_ = from_hex(GetParam().ber);
};

TEST_P(Hostile, IsReadWhenWhole) {
    for (const uint16_t flags : kFlags) {
        EXPECT_EQ(read(whole_, flags).status, RT_OK);
    }
}

TEST_P(Hostile, FailsWhenCutAtAnyOctet) {
    for (const uint16_t flags : kFlags) {
        for (std::size_t size = 0; size < whole_.size(); ++size) {
            const std::vector<uint8_t> cut(whole_.begin(),
                                           whole_.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_LT(read(cut, flags).status, 0) << to_hex(cut);
        }
    }
}

TEST_P(Hostile, GivesNoMoreThanWasThereWhenSpoiledAtAnyOctet) {
    for (const uint16_t flags : kFlags) {
        for (std::size_t place = 0; place < whole_.size(); ++place) {
            std::vector<uint8_t> spoiled = whole_;
            for (int value = 0; value < 256; ++value) {
                spoiled[place] = static_cast<uint8_t>(value);
                const Outcome outcome = read(spoiled, flags);
                EXPECT_LE(outcome.status, 0) << to_hex(spoiled);
                EXPECT_LE(outcome.size, spoiled.size()) << to_hex(spoiled);
                EXPECT_EQ(outcome.depth, 0u) << to_hex(spoiled);
            }
        }
    }
}

TEST_P(Hostile, FailsBehindTheEndOfTheBuffer) {
    for (const uint16_t flags : kFlags) {
        CodecContext ctxt;
        rtCtxtSetFlag(ctxt.read(whole_), flags);
        ctxt->buffer.byteIndex = static_cast<uint32_t>(whole_.size()) + 127;
        std::size_t size = 0;
        EXPECT_LT(GetParam().read(ctxt, size), 0);
    }
}

TEST_P(Hostile, LosesNothingWhenAnAllocationFails) {
    CodecHeap heap;
    for (std::size_t n = 0;; ++n) {
        bool failed = false;
        {
            CodecContext ctxt;
            heap.fail_after(n);
            std::size_t size = 0;
            const int status = GetParam().read(ctxt.read(whole_), size);
            failed = heap.failed();
            EXPECT_EQ(status, failed ? RT_E_NOMEM : RT_OK);
        }
        EXPECT_EQ(heap.live_blocks(), 0u);
        if (!failed) {
            break;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Decoders, Hostile, testing::ValuesIn(kVictims), case_name);

}  // namespace
}  // namespace Quillmark::test
