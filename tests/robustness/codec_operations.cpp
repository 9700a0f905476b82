// The encoders and decoders of the run-time.

#include <array>
#include <cstring>
#include <string>

#include "runtime/ber_decode.h"
#include "runtime/der_encode.h"
#include "runtime/list.h"
#include "tests/robustness/operations.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/hex.h"

namespace Quillmark::test {

namespace {

/// A row for an encoder that finds its buffer full, so that the buffer has to grow. After a failure the
/// message can be started anew, and a success is what a buffer with room gets.
template <class Encode>
Operation encoder(const char* name, Encode encode) {
    return {name, [encode](Trial& trial) {
                CodecContext roomy;
                xe_setp(roomy, nullptr, 0);
                const int length = encode(roomy);
                const std::string expected = to_hex(xe_getp(roomy), static_cast<std::size_t>(length));

                CodecContext context;
                xe_setp(context, nullptr, 1);
                const int status = trial.status([&] { return encode(context); });
                if (status < 0) {
                    rtErrReset(&context->errInfo);
                    xe_setp(context, nullptr, 0);
                    EXPECT_EQ(encode(context), length);
                }
                EXPECT_EQ(to_hex(xe_getp(context), static_cast<std::size_t>(length)), expected);
            }};
}

/// The same for an encoder that has room enough.
template <class Encode>
Operation encoder_with_room(const char* name, Encode encode) {
    return {name, [encode](Trial& trial) {
                CodecContext context;
                xe_setp(context, nullptr, 0);
                trial.status([&] { return encode(context); });
            }};
}

/// A row for a decoder of a message, which can be read again after a failure.
template <class Decode>
Operation decoder(const char* name, const char* message, Decode decode) {
    return {name, [octets = from_hex(message), decode](Trial& trial) {
                CodecContext context;
                const auto start = [&] {
                    EXPECT_EQ(
                        xd_setp(context, octets.data(), static_cast<int>(octets.size()), nullptr, nullptr),
                        RT_OK);
                };
                start();
                trial.status([&] { return decode(context); });
                rtErrReset(&context->errInfo);
                start();
                EXPECT_EQ(decode(context), RT_OK);
            }};
}

constexpr ASN1TAG kUtf8 = 12;
constexpr ASN1TAG kUniversal = 28;
constexpr ASN1TAG kBmp = 30;

uint8_t yes = 0xFF;
const int32_t kNumber = -129;
const uint32_t kMagnitude = 0x80000000;
const uint16_t kSmallMagnitude = 0x8000;
const uint8_t kOctets[] = {0x04, 0x02, 0xAA, 0xBB};
const ASN1OBJID kOid = {4, {1, 2, 840, 113549}};
uint16_t narrow_characters[] = {'a', 'b'};
uint32_t wide_characters[] = {'a', 'b'};
const ASN1_16BITCHARSTRING kNarrow = {2, narrow_characters};
const ASN1_32BITCHARSTRING kWide = {2, wide_characters};
ASN1OpenType open_type = {sizeof kOctets, kOctets};
_Asn1RTDListNode open_type_node = {&open_type, nullptr, nullptr};
const _Asn1RTDList kOpenTypes = {1, &open_type_node, &open_type_node};

std::string long_number() {
    return "0x" + std::string(1200, '7');
}

/// Writes two elements of a SET OF and puts them into order.
int sorted_elements(ASN1CTXT* ctxt) {
    rtSList elements;
    rtSListInitEx(ctxt, &elements);
    for (const uint8_t value : std::initializer_list<uint8_t>{0, 1}) {
        auto* const place =
            static_cast<ASN1BufLocDescr*>(rtMemHeapAlloc(&ctxt->typeHeap, sizeof(ASN1BufLocDescr)));
        if (place == nullptr) {
            return RT_E_NOMEM;
        }
        const int length = xe_boolean(ctxt, &value, ASN1EXPL);
        xe_getBufLocDescr(ctxt, static_cast<uint32_t>(length), place);
        if (rtSListAppend(&elements, place) == nullptr) {
            return RT_E_NOMEM;
        }
    }
    return xe_derCanonicalSort(ctxt, &elements);
}

}  // namespace

Operations encode_operations() {
    return {
        {"StartMessage",
         [](Trial& trial) {
             CodecContext context;
             trial.status([&] { return xe_setp(context, nullptr, 0); });
             EXPECT_EQ(xe_setp(context, nullptr, 0), RT_OK);
             xe_free(context);
         }},
        encoder("Octets", [](ASN1CTXT* ctxt) { return xe_memcpy(ctxt, kOctets, sizeof kOctets); }),
        encoder("Room", [](ASN1CTXT* ctxt) { return xe_expandBuffer(ctxt, 1); }),
        encoder("Identifier", [](ASN1CTXT* ctxt) { return xe_tag(ctxt, 0x3F | 0xA0000000); }),
        encoder("Length", [](ASN1CTXT* ctxt) { return xe_len(ctxt, 300); }),
        encoder("Header", [](ASN1CTXT* ctxt) { return xe_tag_len(ctxt, 0x30000000, 0); }),
        encoder("Subidentifier", [](ASN1CTXT* ctxt) { return xe_identifier(ctxt, 840); }),
        encoder("Boolean", [](ASN1CTXT* ctxt) { return xe_boolean(ctxt, &yes, ASN1EXPL); }),
        encoder("Integer", [](ASN1CTXT* ctxt) { return xe_integer(ctxt, &kNumber, ASN1EXPL); }),
        encoder("Unsigned", [](ASN1CTXT* ctxt) { return xe_unsigned(ctxt, &kMagnitude, ASN1EXPL); }),
        encoder("SmallUnsigned", [](ASN1CTXT* ctxt) { return xe_uint16(ctxt, &kSmallMagnitude, ASN1EXPL); }),
        encoder("Enumerated", [](ASN1CTXT* ctxt) { return xe_enum(ctxt, &kNumber, ASN1EXPL); }),
        encoder("Null", [](ASN1CTXT* ctxt) { return xe_null(ctxt, ASN1EXPL); }),
        encoder("OctetString", [](ASN1CTXT* ctxt) { return xe_octstr(ctxt, kOctets, 4, ASN1EXPL); }),
        encoder("ObjectIdentifier", [](ASN1CTXT* ctxt) { return xe_objid(ctxt, &kOid, ASN1EXPL); }),
        encoder("CharacterString", [](ASN1CTXT* ctxt) { return xe_charstr(ctxt, "text", ASN1EXPL, kUtf8); }),
        encoder("BMPString", [](ASN1CTXT* ctxt) { return xe_16BitCharStr(ctxt, &kNarrow, ASN1EXPL, kBmp); }),
        encoder("UniversalString",
                [](ASN1CTXT* ctxt) { return xe_32BitCharStr(ctxt, &kWide, ASN1EXPL, kUniversal); }),
        encoder("BitString", [](ASN1CTXT* ctxt) { return xe_bitstr(ctxt, kOctets, 28, ASN1EXPL); }),
        encoder("OpenType", [](ASN1CTXT* ctxt) { return xe_OpenType(ctxt, kOctets, sizeof kOctets); }),
        encoder("OpenTypeList", [](ASN1CTXT* ctxt) { return xe_OpenTypeExt(ctxt, &kOpenTypes); }),
        encoder("BigInteger",
                [](ASN1CTXT* ctxt) { return xe_bigint(ctxt, "-12345678901234567890", ASN1EXPL); }),
        encoder("BigIntegerInHexadecimal",
                [](ASN1CTXT* ctxt) { return xe_bigint(ctxt, "0x123456789abcdef0", ASN1EXPL); }),
        encoder("LongBigInteger",
                [text = long_number()](ASN1CTXT* ctxt) { return xe_bigint(ctxt, text.c_str(), ASN1EXPL); }),
        encoder("BigMagnitude",
                [](ASN1CTXT* ctxt) { return xe_biguint(ctxt, "0x8123456789abcdef01", ASN1EXPL); }),
        encoder_with_room("SetOf", sorted_elements),
    };
}

Operations decode_operations() {
    return {
        decoder("CharacterString", "0c 04 74 65 78 74",
                [](ASN1CTXT* ctxt) {
                    char* text = nullptr;
                    return xd_charstr(ctxt, &text, ASN1EXPL, kUtf8, 0);
                }),
        decoder("CharacterStringOfParts", "2c 80 04 02 74 65 04 02 78 74 00 00",
                [](ASN1CTXT* ctxt) {
                    char* text = nullptr;
                    return xd_charstr(ctxt, &text, ASN1EXPL, kUtf8, 0);
                }),
        decoder("BMPString", "1e 04 00 41 00 42",
                [](ASN1CTXT* ctxt) {
                    ASN1_16BITCHARSTRING text{};
                    return xd_16BitCharStr(ctxt, &text, ASN1EXPL, kBmp, 0);
                }),
        decoder("UniversalString", "1c 04 00 00 00 41",
                [](ASN1CTXT* ctxt) {
                    ASN1_32BITCHARSTRING text{};
                    return xd_32BitCharStr(ctxt, &text, ASN1EXPL, kUniversal, 0);
                }),
        decoder("OctetString", "04 02 aa bb",
                [](ASN1CTXT* ctxt) {
                    const uint8_t* data = nullptr;
                    uint32_t count = 0;
                    return xd_octstr(ctxt, &data, &count, ASN1EXPL, 0);
                }),
        decoder("OctetStringOfParts", "24 80 04 01 aa 04 01 bb 00 00",
                [](ASN1CTXT* ctxt) {
                    const uint8_t* data = nullptr;
                    uint32_t count = 0;
                    return xd_octstr(ctxt, &data, &count, ASN1EXPL, 0);
                }),
        decoder("BitString", "03 02 04 a0",
                [](ASN1CTXT* ctxt) {
                    const uint8_t* data = nullptr;
                    uint32_t count = 0;
                    return xd_bitstr(ctxt, &data, &count, ASN1EXPL, 0);
                }),
        decoder("OpenType", "04 02 aa bb",
                [](ASN1CTXT* ctxt) {
                    const uint8_t* data = nullptr;
                    uint32_t count = 0;
                    return xd_OpenType(ctxt, &data, &count);
                }),
        decoder("OpenTypeInAList", "04 02 aa bb",
                [](ASN1CTXT* ctxt) {
                    ASN1TSeqOfList list;
                    rtDListInit(&list);
                    return xd_OpenTypeAppend(ctxt, &list);
                }),
        decoder("OpenTypesToTheEnd", "30 06 04 01 aa 04 01 bb",
                [](ASN1CTXT* ctxt) {
                    ASN1TSeqOfList list;
                    rtDListInit(&list);
                    ASN1TAG tag = 0;
                    int length = 0;
                    if (const int status = xd_tag_len(ctxt, &tag, &length, XM_ADVANCE); status != RT_OK) {
                        return status;
                    }
                    const ASN1ElementExtent extent = {ctxt->buffer.byteIndex, length};
                    return xd_OpenTypeExt(ctxt, &extent, 0xFFFFFFFF, &list);
                }),
        decoder("BigInteger", "02 09 00 ff ff ff ff ff ff ff ff",
                [](ASN1CTXT* ctxt) {
                    char* text = nullptr;
                    return xd_bigint(ctxt, &text, ASN1EXPL, 0);
                }),
    };
}

}  // namespace Quillmark::test
