#include <gtest/gtest.h>

#include <string>

#include "runtime/ber_decode.h"
#include "runtime/der_encode.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/case_name.h"
#include "tests/support/codec_heap.h"

namespace Quillmark::test {
namespace {

struct ReadCase {
    const char* name;
    const char* ber;
    int status = RT_OK;
    const char* element = "";
};

constexpr ReadCase kReads[] = {
    {.name = "Primitive", .ber = "02 01 05 aa", .element = "02 01 05"},
    {.name = "Constructed", .ber = "30 03 02 01 05 aa", .element = "30 03 02 01 05"},
    {.name = "Empty", .ber = "05 00", .element = "05 00"},
    {.name = "IndefiniteWhole", .ber = "30 80 02 01 05 00 00 aa", .element = "30 80 02 01 05 00 00"},
    {.name = "IndefiniteNested", .ber = "30 80 30 80 00 00 00 00", .element = "30 80 30 80 00 00 00 00"},
    {.name = "LongTag", .ber = "bf 81 00 01 aa", .element = "bf 81 00 01 aa"},
    // Intended: nothing left, or the beginnings of a header, is no element and no failure.
    {.name = "Nothing", .ber = ""},
    {.name = "TagAlone", .ber = "30"},
    {.name = "EndOfContentsOctets", .ber = "00 00", .status = RT_E_BADVALUE},
    {.name = "ContentsBeyondTheBuffer", .ber = "04 02 aa", .status = RT_E_BADVALUE},
    {.name = "LongLengthBeyondTheBuffer", .ber = "04 81 02 aa", .status = RT_E_INVLEN},
    {.name = "LengthOf4GiB", .ber = "04 84 ff ff ff ff", .status = RT_E_INVLEN},
    {.name = "IndefiniteOnPrimitive", .ber = "04 80 00 00", .status = RT_E_INVLEN},
    {.name = "IndefiniteWithoutEnd", .ber = "30 80 02 01 05", .status = RT_E_ENDOFBUF},
    {.name = "BadTag", .ber = "9f ff ff ff ff ff 01 00", .status = RT_E_BADTAG},
};

class XdOpenType : public testing::TestWithParam<ReadCase> {};

TEST_P(XdOpenType, TakesOneWholeElement) {
    const ReadCase& row = GetParam();
    CodecContext ctxt;
    const uint8_t* data = nullptr;
    uint32_t count = 0;
    EXPECT_EQ(xd_OpenType(ctxt.read(row.ber), &data, &count), row.status);
    if (row.status == RT_OK) {
        EXPECT_EQ(to_hex(data, count), row.element);
    }
}

TEST_P(XdOpenType, TakesTheSameWithoutCopying) {
    const ReadCase& row = GetParam();
    CodecContext ctxt;
    const uint8_t* data = nullptr;
    uint32_t count = 0;
    rtCtxtSetFlag(ctxt.read(row.ber), RT_F_FASTCOPY | RT_F_INDEFLEN);
    EXPECT_EQ(xd_OpenType(ctxt, &data, &count), row.status);
    if (count != 0) {
        EXPECT_EQ(to_hex(data, count), row.element);
        EXPECT_EQ(data, ctxt->buffer.data);
    }
}

INSTANTIATE_TEST_SUITE_P(X690, XdOpenType, testing::ValuesIn(kReads), case_name);

TEST(XdOpenTypeMemory, IsReported) {
    CodecHeap heap;
    CodecContext ctxt;
    const uint8_t* data = nullptr;
    uint32_t count = 0;
    heap.fail_after(0);
    EXPECT_EQ(xd_OpenType(ctxt.read("02 01 05"), &data, &count), RT_E_NOMEM);
    _Asn1RTDList list{};
    heap.fail_after(0);
    EXPECT_EQ(xd_OpenTypeAppend(ctxt.read("02 01 05"), &list), RT_E_NOMEM);
    heap.fail_after(1);
    EXPECT_EQ(xd_OpenTypeAppend(ctxt.read("02 01 05"), &list), RT_E_NOMEM);
    EXPECT_EQ(list.count, 0u);
}

struct WriteCase {
    const char* name;
    const char* element;
    int result;
    const char* written = "";
};

constexpr WriteCase kWrites[] = {
    {.name = "Definite", .element = "02 01 05", .result = 3, .written = "02 01 05"},
    // Intended: octets behind the element are dropped, and end-of-contents octets pass.
    {.name = "OctetsBehind", .element = "02 01 05 aa bb", .result = 3, .written = "02 01 05"},
    {.name = "OneLengthOctet", .element = "04 81 02 aa bb cc", .result = 5, .written = "04 81 02 aa bb"},
    {.name = "OneLengthOctetNoContents", .element = "04 81 00", .result = 3, .written = "04 81 00"},
    {.name = "TwoLengthOctets", .element = "04 82 00 01 aa bb", .result = 5, .written = "04 82 00 01 aa"},
    {.name = "ThreeLengthOctets",
     .element = "04 83 00 00 01 aa bb",
     .result = 6,
     .written = "04 83 00 00 01 aa"},
    {.name = "TagOfThreeOctets", .element = "9f 81 00 01 aa bb", .result = 5, .written = "9f 81 00 01 aa"},
    {.name = "OneLengthOctetBeyondTheOctets", .element = "04 81 03 aa bb", .result = RT_E_INVLEN},
    {.name = "TwoLengthOctetsBeyondTheOctets", .element = "04 82 00 03 aa bb", .result = RT_E_INVLEN},
    {.name = "EndOfContentsOctets", .element = "00 00", .result = 2, .written = "00 00"},
    {.name = "Indefinite", .element = "30 80 02 01 05 00 00", .result = 7, .written = "30 80 02 01 05 00 00"},
    {.name = "IndefiniteWithOctetsBehind",
     .element = "30 80 00 00 aa",
     .result = 4,
     .written = "30 80 00 00"},
    {.name = "IndefiniteOfFourOctets", .element = "30 80 00 00", .result = 4, .written = "30 80 00 00"},
    {.name = "IndefiniteWithoutEnd", .element = "30 80 02 01 05", .result = RT_E_ENDOFBUF},
    {.name = "IndefiniteElementBeyondTheOctets", .element = "30 80 04 7f 00 00", .result = RT_E_ENDOFBUF},
    {.name = "ContentsBeyondTheOctets", .element = "30 05 02 01 05", .result = RT_E_INVLEN},
    {.name = "LengthOf4GiB", .element = "04 84 ff ff ff ff", .result = RT_E_INVLEN},
    {.name = "TagAlone", .element = "30", .result = RT_E_ENDOFBUF},
};

class XeOpenType : public testing::TestWithParam<WriteCase> {};

TEST_P(XeOpenType, WritesOneWholeElement) {
    const std::vector<uint8_t> element = from_hex(GetParam().element);
    CodecContext ctxt;
    EXPECT_EQ(xe_OpenType(ctxt.encode(), element.data(), static_cast<uint32_t>(element.size())),
              GetParam().result);
    EXPECT_EQ(ctxt.written(), GetParam().written);
}

INSTANTIATE_TEST_SUITE_P(X690, XeOpenType, testing::ValuesIn(kWrites), case_name);

TEST(XeOpenTypeArguments, MayBeNothing) {
    CodecContext ctxt;
    const uint8_t octet = 0;
    EXPECT_EQ(xe_OpenType(ctxt.encode(), &octet, 0), 0);
    EXPECT_EQ(xe_OpenType(ctxt, nullptr, 0), 0);
    EXPECT_EQ(xe_OpenType(ctxt, nullptr, 1), RT_E_BADVALUE);
    EXPECT_EQ(xe_OpenType(ctxt, &octet, 0x80000000), RT_E_INVLEN) << "more than a message can have";
}

TEST(XeOpenTypeInPlace, IsNotCopied) {
    CodecContext ctxt;
    const int32_t number = 5;
    ASSERT_EQ(xe_integer(ctxt.encode(), &number, ASN1EXPL), 3);
    EXPECT_EQ(xe_OpenType(ctxt, xe_getp(ctxt), 3), 3);
    EXPECT_EQ(ctxt.written(), "02 01 05");
}

TEST(XeOpenTypeExt, WritesAListInItsOrder) {
    CodecContext ctxt;
    const std::vector<uint8_t> octets = from_hex("02 01 05 05 00");
    ASN1OpenType number = {.numocts = 3, .data = octets.data()};
    ASN1OpenType null = {.numocts = 2, .data = octets.data() + 3};
    _Asn1RTDList list;
    rtDListInit(&list);
    EXPECT_EQ(xe_OpenTypeExt(ctxt.encode(), nullptr), 0);
    EXPECT_EQ(xe_OpenTypeExt(ctxt, &list), 0);
    rtDListAppend(ctxt, &list, &number);
    rtDListAppend(ctxt, &list, &null);
    EXPECT_EQ(xe_OpenTypeExt(ctxt, &list), 5);
    EXPECT_EQ(ctxt.written(), "02 01 05 05 00");
}

TEST(XeOpenTypeExt, RecordsAFailure) {
    CodecContext ctxt;
    ASN1OpenType broken = {.numocts = 3, .data = nullptr};
    _Asn1RTDList list;
    rtDListInit(&list);
    rtDListAppend(ctxt, &list, &broken);
    EXPECT_EQ(xe_OpenTypeExt(ctxt.encode(), &list), RT_E_BADVALUE);
    EXPECT_EQ(ctxt.recorded(), RT_E_BADVALUE);
}

std::string joined(const _Asn1RTDList& list) {
    std::string text;
    for (const _Asn1RTDListNode* node = list.head; node != nullptr; node = node->next) {
        const auto* element = static_cast<const ASN1OpenType*>(node->data);
        text += text.empty() ? "" : " | ";
        text += to_hex(element->data, element->numocts);
    }
    return text;
}

struct ExtensionCase {
    const char* name;
    const char* ber;
    int length;
    ASN1TAG tag;
    int status = RT_OK;
    const char* elements = "";
    uint32_t position = 0;
};

constexpr ASN1TAG kNoNext = 0xFFFFFFFF;

constexpr ExtensionCase kExtensions[] = {
    {.name = "ToTheEndOfTheElement",
     .ber = "02 01 05 05 00 aa 00",
     .length = 5,
     .tag = kNoNext,
     .elements = "02 01 05 | 05 00",
     .position = 5},
    {.name = "ToTheEndOfContentsOctets",
     .ber = "02 01 05 05 00 00 00",
     .length = RT_INDEFLEN,
     .tag = kNoNext,
     .elements = "02 01 05 | 05 00",
     .position = 5},
    {.name = "NothingThere", .ber = "aa 00", .length = 0, .tag = kNoNext},
    {.name = "ToTheNextElement",
     .ber = "02 01 05 04 00 05 00",
     .length = 7,
     .tag = 4,
     .elements = "02 01 05",
     .position = 3},
    {.name = "NextElementAtOnce", .ber = "04 00 05 00", .length = 4, .tag = 4},
    {.name = "NextElementMissing",
     .ber = "02 01 05 05 00",
     .length = 5,
     .tag = 4,
     .status = RT_E_ENDOFBUF,
     .elements = "02 01 05 | 05 00",
     .position = 5},
    {.name = "NextElementMissingInTheIndefiniteForm",
     .ber = "02 01 05 00 00",
     .length = RT_INDEFLEN,
     .tag = 4,
     .status = RT_E_ENDOFBUF,
     .elements = "02 01 05",
     .position = 3},
    {.name = "MalformedElementBeforeTheNext",
     .ber = "02 01 05 05 81 07 04 00",
     .length = 8,
     .tag = 4,
     .status = RT_E_INVLEN,
     .elements = "02 01 05",
     .position = 3},
    {.name = "MalformedElement",
     .ber = "02 01 05 05 81 07",
     .length = 6,
     .tag = kNoNext,
     .status = RT_E_INVLEN,
     .elements = "02 01 05",
     .position = 6},
};

class XdOpenTypeExt : public testing::TestWithParam<ExtensionCase> {};

TEST_P(XdOpenTypeExt, CollectsElements) {
    const ExtensionCase& row = GetParam();
    CodecContext ctxt;
    const ASN1ElementExtent enclosing = {.start = 0, .length = row.length};
    _Asn1RTDList list;
    rtDListInit(&list);
    EXPECT_EQ(xd_OpenTypeExt(ctxt.read(row.ber), &enclosing, row.tag, &list), row.status);
    EXPECT_EQ(ctxt.recorded(), row.status);
    EXPECT_EQ(joined(list), row.elements);
    EXPECT_EQ(ctxt.position(), row.position);
}

TEST_P(XdOpenTypeExt, StepsOverThemWithoutAList) {
    const ExtensionCase& row = GetParam();
    CodecContext ctxt;
    const ASN1ElementExtent enclosing = {.start = 0, .length = row.length};
    EXPECT_EQ(xd_OpenTypeExt(ctxt.read(row.ber), &enclosing, row.tag, nullptr), row.status);
    EXPECT_EQ(ctxt.position(), row.position);
}

INSTANTIATE_TEST_SUITE_P(X690, XdOpenTypeExt, testing::ValuesIn(kExtensions), case_name);

TEST(XdOpenTypeExtOverrun, IsNoElementToKeep) {
    CodecContext ctxt;
    const ASN1ElementExtent enclosing = {.start = 0, .length = 7};
    _Asn1RTDList list;
    rtDListInit(&list);
    EXPECT_EQ(xd_OpenTypeExt(ctxt.read("02 01 05 05 07 04 00"), &enclosing, 4, &list), RT_E_BADVALUE);
    EXPECT_EQ(joined(list), "02 01 05");
}

TEST(XdOpenTypeExtStrayOctet, IsAnEmptyElementThatEndsTheSearch) {
    CodecContext ctxt;
    const ASN1ElementExtent enclosing = {.start = 0, .length = 4};
    _Asn1RTDList list;
    rtDListInit(&list);
    EXPECT_EQ(xd_OpenTypeExt(ctxt.read("02 01 05 30"), &enclosing, kNoNext, &list), RT_OK);
    EXPECT_EQ(joined(list), "02 01 05 | ");
}

TEST(XdOpenTypeExtStrayOctet, IsNoElementToStepOver) {
    CodecContext ctxt;
    const ASN1ElementExtent enclosing = {.start = 0, .length = 4};
    EXPECT_EQ(xd_OpenTypeExt(ctxt.read("02 01 05 30"), &enclosing, kNoNext, nullptr), RT_E_ENDOFBUF);
}

}  // namespace
}  // namespace Quillmark::test
