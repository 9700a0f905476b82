// The run-time's own readers and writers under hostile shapes.

#include <gtest/gtest.h>

#include <vector>

#include "runtime/ber_decode.h"
#include "runtime/big_integer.h"
#include "runtime/character.h"
#include "runtime/context.h"
#include "runtime/der_encode.h"
#include "runtime/list.h"
#include "tests/robustness/growth_law.h"
#include "tests/robustness/shapes_octets.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

constexpr std::size_t kHundredThousand = 100'000;
constexpr std::size_t kMillion = 1'000'000;
constexpr std::size_t kHundredMillion = 100'000'000;

class Context {
  public:
    Context() { rtInitContext(&ctxt_, nullptr); }
    explicit Context(const CBlob& input) : Context() {
        xd_setp(&ctxt_, input.pbData(), static_cast<int>(input.cbData()), nullptr, nullptr);
    }
    ~Context() { rtFreeContext(&ctxt_); }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    operator ASN1CTXT*() { return &ctxt_; }

  private:
    ASN1CTXT ctxt_{};
};

Outcome read_octets(const CBlob& input) {
    Context ctxt(input);
    const uint8_t* data;
    uint32_t count;
    return xd_octstr(ctxt, &data, &count, ASN1EXPL, 0);
}

Outcome read_octets_into_array(const CBlob& input) {
    Context ctxt(input);
    uint8_t array[64];
    uint32_t count = sizeof array;
    return xd_octstr_s(ctxt, array, &count, ASN1EXPL, 0);
}

Outcome read_bits(const CBlob& input) {
    Context ctxt(input);
    const uint8_t* data;
    uint32_t count;
    return xd_bitstr(ctxt, &data, &count, ASN1EXPL, 0);
}

Outcome read_bits_into_array(const CBlob& input) {
    Context ctxt(input);
    uint8_t array[64];
    uint32_t count = 8 * sizeof array;
    return xd_bitstr_s(ctxt, array, &count, ASN1EXPL, 0);
}

Outcome read_text(const CBlob& input) {
    Context ctxt(input);
    char* text;
    return xd_charstr(ctxt, &text, ASN1EXPL, 12, 0);
}

Outcome read_narrow_text(const CBlob& input) {
    Context ctxt(input);
    ASN1_16BITCHARSTRING text{};
    return xd_16BitCharStr(ctxt, &text, ASN1EXPL, 30, 0);
}

Outcome read_wide_text(const CBlob& input) {
    Context ctxt(input);
    ASN1_32BITCHARSTRING text{};
    return xd_32BitCharStr(ctxt, &text, ASN1EXPL, 28, 0);
}

Outcome read_number(const CBlob& input) {
    Context ctxt(input);
    char* text;
    return xd_bigint(ctxt, &text, ASN1EXPL, 0);
}

/// Two numbers as texts, as defaults are told apart.
Outcome compare_numbers(const CBlob& input) {
    Context ctxt(input);
    char* text;
    const int status = xd_bigint(ctxt, &text, ASN1EXPL, 0);
    return status != RT_OK || rtBigIntStrCompare(ctxt, text, text) == 0 ? status : RT_E_BADVALUE;
}

/// And writes it for people to read.
Outcome show_number(const CBlob& input) {
    Context ctxt(input);
    char* text;
    int status = xd_bigint(ctxt, &text, ASN1EXPL, 0);
    if (status != RT_OK) {
        return status;
    }
    ASN1BigInt number;
    rtBigIntInit(&number);
    status = rtBigIntSetStr(ctxt, &number, text, 0);
    std::vector<char> shown(static_cast<std::size_t>(rtBigIntDigitsNum(&number, 16)) + 2);
    status = status == RT_OK
                 ? rtBigIntToString(ctxt, &number, 16, shown.data(), static_cast<int>(shown.size()))
                 : status;
    rtBigIntFree(ctxt, &number);
    return status;
}

Outcome read_identifier(const CBlob& input) {
    Context ctxt(input);
    ASN1OBJID oid;
    return xd_objid(ctxt, &oid, ASN1EXPL, 0);
}

Outcome read_open_type(const CBlob& input) {
    Context ctxt(input);
    const uint8_t* data;
    uint32_t count;
    return xd_OpenType(ctxt, &data, &count);
}

uint32_t position(const ASN1CTXT* ctxt) {
    return ctxt->buffer.byteIndex;
}

Outcome enter(ASN1CTXT* ctxt, int& length) {
    ASN1TAG tag;
    return xd_tag_len(ctxt, &tag, &length, XM_ADVANCE);
}

Outcome count_elements(const CBlob& input) {
    Context ctxt(input);
    int length;
    int count;
    const int status = enter(ctxt, length);
    return status == RT_OK ? xd_count(ctxt, length, &count) : status;
}

/// What is left behind the last element that a type knows is kept element by element.
Outcome collect_elements(const CBlob& input) {
    Context ctxt(input);
    int length;
    const int status = enter(ctxt, length);
    if (status != RT_OK) {
        return status;
    }
    const ASN1ElementExtent extent = {position(ctxt), length};
    _Asn1RTDList list;
    rtDListInit(&list);
    const int collected = xd_OpenTypeExt(ctxt, &extent, 0xFFFFFFFF, &list);
    if (collected != RT_OK) {
        return collected;
    }
    void* array = nullptr;
    uint32_t count = 0;
    const int copied = rtDListToArray(ctxt, &list, &array, &count, sizeof(ASN1OpenType));
    rtMemFreeOpenSeqExt(ctxt, &list);
    return copied < 0 ? copied : kTaken;
}

/// Writes the element at the position of `in` to `out` and notes where it lies.
int pass_on(ASN1CTXT* in, ASN1CTXT* out, rtSList& locations) {
    const uint8_t* data;
    uint32_t count;
    const int status = xd_OpenType(in, &data, &count);
    const int written = status == RT_OK ? xe_OpenType(out, data, count) : status;
    void* block = rtMemHeapAlloc(&out->typeHeap, sizeof(ASN1BufLocDescr));
    xe_getBufLocDescr(out, static_cast<uint32_t>(written), static_cast<ASN1BufLocDescr*>(block));
    rtSListAppend(&locations, block);
    return written < 0 ? written : RT_OK;
}

/// The elements of a SET OF in the order of DER (X.690 11.6), from whatever order they are in.
Outcome sort_set(const CBlob& input) {
    Context context_in(input);
    Context context_out;
    ASN1CTXT* in = context_in;
    ASN1CTXT* out = context_out;
    int length;
    int status = enter(in, length);
    rtSList locations;
    rtSListInitEx(out, &locations);
    xe_setp(out, nullptr, 0);
    while (status == RT_OK && in->buffer.byteIndex < in->buffer.size) {
        status = pass_on(in, out, locations);
    }
    const int total = status == RT_OK ? xe_derCanonicalSort(out, &locations) : status;
    return total < 0 ? total : kTaken;
}

class RuntimeShape : public testing::TestWithParam<Shape> {};

TEST_P(RuntimeShape, GrowsInProportion) {
    expect_growth(GetParam());
}

/// Elements whose contents go down.
Octets descending_set(std::size_t count) {
    Octets all;
    all.reserve(6 * count);
    for (std::size_t i = count; i-- != 0;) {
        all.insert(all.end(), {0x04, 0x03, static_cast<std::uint8_t>(i >> 16),
                               static_cast<std::uint8_t>(i >> 8), static_cast<std::uint8_t>(i)});
    }
    return wrap(0x31, all);
}

const Shape kShapes[] = {
    {"OctetsOfManySegments", read_octets,
     [](std::size_t n) { return wrap_indefinite(0x24, repeated("04 01 aa", n)); }, kMillion, kTaken, 1},
    {"OctetsOfEmptySegments", read_octets,
     [](std::size_t n) { return wrap_indefinite(0x24, repeated("04 00", n)); }, kMillion, kTaken, 1},
    {"OctetsIntoAnArrayOfEmptySegments", read_octets_into_array,
     [](std::size_t n) { return wrap_indefinite(0x24, repeated("04 00", n)); }, kMillion, RT_E_INVLEN, 1},
    {"BitsOfManySegments", read_bits,
     [](std::size_t n) { return wrap_indefinite(0x23, repeated("03 02 00 aa", n)); }, kMillion, kTaken, 1},
    {"BitsOfEmptySegments", read_bits,
     [](std::size_t n) { return wrap_indefinite(0x23, repeated("03 01 00", n)); }, kMillion, kTaken, 1},
    {"BitsIntoAnArrayOfEmptySegments", read_bits_into_array,
     [](std::size_t n) { return wrap_indefinite(0x23, repeated("03 01 00", n)); }, kMillion, kTaken, 1},
    {"Bits", read_bits, [](std::size_t n) { return wrap(0x03, Octets(n, 0x00)); }, kHundredMillion, kTaken,
     2},
    {"Text", read_text, [](std::size_t n) { return filled(0x0c, n); }, kHundredMillion, kTaken, 2},
    {"NarrowText", read_narrow_text, [](std::size_t n) { return filled(0x1e, n); }, kHundredMillion, kTaken,
     2},
    {"WideText", read_wide_text, [](std::size_t n) { return filled(0x1c, n); }, kHundredMillion, kTaken, 2},
    {"Number", read_number, [](std::size_t n) { return filled(0x02, n); }, kHundredMillion, kTaken, 3},
    {"NumberCompared", compare_numbers, [](std::size_t n) { return filled(0x02, n); }, kMillion, kTaken, 5},
    {"NumberShown", show_number, [](std::size_t n) { return filled(0x02, n); }, kMillion, kTaken, 8},
    {"IdentifierOfManyArcs", read_identifier, [](std::size_t n) { return long_object_id(n); }, kMillion,
     RT_E_INVOBJID, 1},
    // Intended: an arc is gathered in 32 bits, and what does not fit is lost.
    {"IdentifierOfOneLongArc", read_identifier,
     [](std::size_t n) {
         Octets contents(n, 0xff);
         contents.back() = 0x7f;
         return wrap(0x06, contents);
     },
     kMillion, kTaken, 1},
    {"OpenTypeOfManyOctets", read_open_type, [](std::size_t n) { return filled(0x04, n); }, kHundredMillion,
     kTaken, 2},
    {"OpenTypeOfManyLevels", read_open_type,
     [](std::size_t n) {
         return join({nested_headers(0x30, n), Octets(2 * n, 0x00)});
     },
     kMillion, kTaken, 2},
    {"OpenTypeWithoutEnd", read_open_type, [](std::size_t n) { return nested_headers(0x30, n); }, kMillion,
     RT_E_ENDOFBUF, 1},
    {"ElementsCounted", count_elements, [](std::size_t n) { return wrap(0x30, repeated("05 00", n)); },
     kMillion, kTaken, 1},
    {"ElementsCollected", collect_elements, [](std::size_t n) { return wrap(0x30, repeated("05 00", n)); },
     kMillion, kTaken, 70},
    {"SetPutInOrder", sort_set, descending_set, kHundredThousand, kTaken, 60},
    {"SetOfEqualElements", sort_set, [](std::size_t n) { return wrap(0x31, repeated("04 01 aa", n)); },
     kHundredThousand, kTaken, 60},
};

INSTANTIATE_TEST_SUITE_P(Codec, RuntimeShape, testing::ValuesIn(kShapes), case_name);

}  // namespace
}  // namespace Quillmark::test
