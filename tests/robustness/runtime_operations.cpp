// The rest of the run-time's functions: contexts and heaps, buffers, lists, copies, numbers, texts.

#include <array>
#include <cstring>
#include <string>

#include "runtime/ber_decode.h"
#include "runtime/big_integer.h"
#include "runtime/bits.h"
#include "runtime/character.h"
#include "runtime/copy.h"
#include "runtime/der_encode.h"
#include "runtime/list.h"
#include "runtime/memory_buffer.h"
#include "runtime/object_id.h"
#include "runtime/stream.h"
#include "runtime/time_string.h"
#include "tests/robustness/operations.h"
#include "tests/runtime/codec_context.h"
#include "tests/support/hex.h"

namespace Quillmark::test {

namespace {

const uint8_t kOctets[] = {0x04, 0x02, 0xAA, 0xBB};
constexpr char kText[] = "a text";
constexpr char kLongNumber[] = "123456789012345678901234567890";

/// A row for a function that copies to `dst`, which is empty when it fails.
template <class Value, class Copy>
Operation copies(const char* name, const Value& source, Copy copy) {
    return {name, [source, copy](Trial& trial) {
                CodecContext context;
                Value target{};
                if (!trial.result([&] { return copy(context, &source, &target); })) {
                    EXPECT_EQ(target.data, nullptr);
                }
                EXPECT_EQ(copy(context, &source, &target), 1);
                EXPECT_EQ(target.data[0], source.data[0]);
            }};
}

/// A row for an insertion into a list of two elements, which has one more, or is as it was.
template <class Insert>
Operation inserts(const char* name, Insert insert) {
    return {name, [insert](Trial& trial) {
                CodecContext context;
                int elements[3] = {};
                ASN1TSeqOfList list;
                rtDListInit(&list);
                rtDListAppend(context, &list, &elements[0]);
                rtDListAppend(context, &list, &elements[1]);
                const bool done =
                    trial.result([&] { return insert(context, &list, &elements[2]); }) != nullptr;
                EXPECT_EQ(list.count, done ? 3u : 2u);
                EXPECT_EQ(rtDListFindByData(&list, &elements[2]) != nullptr, done);
            }};
}

ASN1TSeqOfList* open_types() {
    static ASN1OpenType element = {sizeof kOctets, kOctets};
    static _Asn1RTDListNode node = {&element, nullptr, nullptr};
    static ASN1TSeqOfList list = {1, &node, &node};
    return &list;
}

}  // namespace

Operations heap_operations() {
    return {
        {"Context",
         [](Trial& trial) {
             ASN1CTXT ctxt{};
             if (trial.status([&] { return rtInitContext(&ctxt, nullptr); }) != RT_OK) {
                 EXPECT_EQ(rtInitContext(&ctxt, nullptr), RT_OK);
             }
             rtFreeContext(&ctxt);
         }},
        {"ContextBuffer",
         [](Trial& trial) {
             CodecContext context;
             trial.status([&] { return rtInitContextBuffer(context, nullptr, 100); });
             EXPECT_EQ(rtInitContextBuffer(context, nullptr, 100), RT_OK);
         }},
        {"Heap",
         [](Trial& trial) {
             rtMemHeap* heap = nullptr;
             if (trial.status([&] { return rtMemHeapCreate(&heap, nullptr); }) != RT_OK) {
                 EXPECT_EQ(heap, nullptr);
                 EXPECT_EQ(rtMemHeapCreate(&heap, nullptr), RT_OK);
             }
             rtMemHeapRelease(&heap);
         }},
        {"Block",
         [](Trial& trial) {
             CodecContext context;
             trial.result([&] { return rtMemHeapAlloc(&context->typeHeap, 10); });
         }},
        {"BlockOfANewHeap",
         [](Trial& trial) {
             rtMemHeap* heap = nullptr;
             trial.result([&] { return rtMemHeapAlloc(&heap, 10); });
             rtMemHeapRelease(&heap);
         }},
        {"ClearedBlock",
         [](Trial& trial) {
             CodecContext context;
             trial.result([&] { return rtMemHeapAllocZ(&context->typeHeap, 10); });
         }},
        {"GrowingBlock",
         [](Trial& trial) {
             CodecContext context;
             auto* const block = static_cast<char*>(rtMemHeapAlloc(&context->typeHeap, sizeof kText));
             std::memcpy(block, kText, sizeof kText);
             auto* const grown = static_cast<char*>(
                 trial.result([&] { return rtMemHeapRealloc(&context->typeHeap, block, 1000); }));
             EXPECT_STREQ(grown != nullptr ? grown : block, kText);
         }},
        {"DefaultHook",
         [](Trial& trial) {
             rtDefaultFree(nullptr, trial.result([] { return rtDefaultMalloc(nullptr, 10); }));
         }},
        {"DefaultHookOfGrowth",
         [](Trial& trial) {
             rtDefaultFree(nullptr, trial.result([] { return rtDefaultRealloc(nullptr, nullptr, 10); }));
         }},
        {"Allocator", [](Trial& trial) { QM_free(trial.result([] { return QM_malloc(10); })); }},
        {"ClearedAllocator", [](Trial& trial) { QM_free(trial.result([] { return QM_calloc(10, 10); })); }},
        {"GrowthByAllocator",
         [](Trial& trial) {
             void* const block = QM_malloc(10);
             void* const grown = trial.result([&] { return QM_realloc(block, 1000); });
             QM_free(grown != nullptr ? grown : block);
         }},
        {"BufferAppends",
         [](Trial& trial) {
             CodecContext context;
             ASN1MemBuf buffer;
             rtMemBufInit(context, &buffer, 4);
             EXPECT_EQ(rtMemBufAppend(&buffer, kOctets, sizeof kOctets), RT_OK);
             const int status =
                 trial.status([&] { return rtMemBufAppend(&buffer, kOctets, sizeof kOctets); });
             EXPECT_EQ(buffer.usedCount, status == RT_OK ? 8u : 4u);
             EXPECT_EQ(to_hex(rtMemBufGetData(&buffer, nullptr), 4), to_hex(kOctets, 4));
             rtMemBufFree(&buffer);
         }},
        {"BufferMakesRoom",
         [](Trial& trial) {
             CodecContext context;
             ASN1MemBuf buffer;
             rtMemBufInit(context, &buffer, 0);
             const int status = trial.status([&] { return rtMemBufPreAllocate(&buffer, 5); });
             EXPECT_EQ(buffer.bufferSize, status == RT_OK ? 5u : 0u);
         }},
        {"BufferFills",
         [](Trial& trial) {
             CodecContext context;
             ASN1MemBuf buffer;
             rtMemBufInit(context, &buffer, 0);
             const int status = trial.status([&] { return rtMemBufSet(&buffer, 7, 5); });
             EXPECT_EQ(buffer.usedCount, status == RT_OK ? 5u : 0u);
         }},
        {"WritesBytes",
         [](Trial& trial) {
             CodecContext context;
             EXPECT_EQ(rtInitContextBuffer(context, nullptr, 2), RT_OK);
             const int status = trial.status([&] { return rtWriteBytes(context, kOctets, sizeof kOctets); });
             EXPECT_EQ(context->buffer.byteIndex, status == RT_OK ? 4u : 0u);
         }},
        {"MakesRoomToWrite",
         [](Trial& trial) {
             CodecContext context;
             EXPECT_EQ(rtInitContextBuffer(context, nullptr, 2), RT_OK);
             trial.status([&] { return rtCheckBuffer(context, 100); });
             EXPECT_EQ(rtCheckBuffer(context, 100), RT_OK);
         }},
        copies("CopyOfOctets", ASN1TDynOctStr{sizeof kOctets, kOctets}, rtCopyDynOctStr),
        copies("CopyOfBits", ASN1TDynBitStr{32, kOctets}, rtCopyDynBitStr),
        copies("CopyOfOpenType", ASN1OpenType{sizeof kOctets, kOctets}, rtCopyOpenType),
        {"CopyOfBMPString",
         [](Trial& trial) {
             CodecContext context;
             uint16_t characters[] = {'a', 'b'};
             const ASN1_16BITCHARSTRING source = {2, characters};
             ASN1_16BITCHARSTRING target{};
             trial.result([&] { return rtCopy16BitCharStr(context, &source, &target); });
         }},
        {"CopyOfUniversalString",
         [](Trial& trial) {
             CodecContext context;
             uint32_t characters[] = {'a', 'b'};
             const ASN1_32BITCHARSTRING source = {2, characters};
             ASN1_32BITCHARSTRING target{};
             trial.result([&] { return rtCopy32BitCharStr(context, &source, &target); });
         }},
        {"CopyOfText",
         [](Trial& trial) {
             CodecContext context;
             const char* target = nullptr;
             trial.result([&] { return rtCopyCharStr(context, kText, &target); });
         }},
        {"CopyOfOpenTypes",
         [](Trial& trial) {
             CodecContext context;
             ASN1TSeqOfList target;
             rtDListInit(&target);
             trial.result([&] { return rtCopyOpenTypeExt(context, open_types(), &target); });
         }},
        {"DuplicateOfText",
         [](Trial& trial) {
             CodecContext context;
             trial.result([&] { return rtUTF8Strdup(context, kText); });
         }},
        {"TextToUniversalString",
         [](Trial& trial) {
             CodecContext context;
             ASN1_32BITCHARSTRING wide{};
             trial.result([&] { return rtCToUCSString(context, kText, &wide, nullptr); });
         }},
        {"WideTextToUniversalString",
         [](Trial& trial) {
             CodecContext context;
             ASN1_32BITCHARSTRING wide{};
             trial.result([&] { return rtWCSToUCSString(context, L"a text", &wide, nullptr); });
         }},
        {"NumberOfText",
         [](Trial& trial) {
             CodecContext context;
             ASN1BigInt number;
             rtBigIntInit(&number);
             const int status =
                 trial.status([&] { return rtBigIntSetStr(context, &number, kLongNumber, 0); });
             EXPECT_EQ(number.sign, status == RT_OK ? 1 : 0);
             EXPECT_EQ(rtBigIntSetStr(context, &number, kLongNumber, 0), RT_OK);
             rtBigIntFree(context, &number);
         }},
        {"NumberToText",
         [](Trial& trial) {
             CodecContext context;
             ASN1BigInt number;
             rtBigIntInit(&number);
             EXPECT_EQ(rtBigIntSetStr(context, &number, kLongNumber, 0), RT_OK);
             char text[40];
             trial.status([&] { return rtBigIntToString(context, &number, 10, text, sizeof text); });
             EXPECT_EQ(rtBigIntToString(context, &number, 10, text, sizeof text), RT_OK);
             EXPECT_STREQ(text, kLongNumber);
             rtBigIntFree(context, &number);
         }},
        {"ComparisonOfLongNumbers",
         [](Trial& trial) {
             CodecContext context;
             const std::string number = "0x" + std::string(1200, '7');
             // A number that there is no memory for is compared as text.
             trial.call_that_may_do_without([&] {
                 EXPECT_EQ(rtBigIntStrCompare(context, number.c_str(), number.c_str()), 0);
                 EXPECT_NE(rtBigIntStrCompare(context, number.c_str(), "1"), 0);
             });
         }},
        {"TimeText",
         [](Trial& trial) {
             CodecContext context;
             const ASN1TimeRecord record = {2024, 1, 2, 3, 4, 5, 0, 0, "", 1};
             char* text = nullptr;
             trial.status([&] { return rtMakeGeneralizedTime(context, &record, &text, 0); });
             EXPECT_EQ(rtMakeGeneralizedTime(context, &record, &text, 0), RT_OK);
             EXPECT_STREQ(text, "20240102030405Z");
         }},
    };
}

Operations list_operations() {
    return {
        inserts("Append", [](ASN1CTXT* ctxt, ASN1TSeqOfList* list,
                             void* data) { return rtDListAppend(ctxt, list, data); }),
        inserts("Insert", [](ASN1CTXT* ctxt, ASN1TSeqOfList* list,
                             void* data) { return rtDListInsert(ctxt, list, 1, data); }),
        inserts("InsertBefore", [](ASN1CTXT* ctxt, ASN1TSeqOfList* list,
                                   void* data) { return rtDListInsertBefore(ctxt, list, list->head, data); }),
        inserts("InsertAfter", [](ASN1CTXT* ctxt, ASN1TSeqOfList* list,
                                  void* data) { return rtDListInsertAfter(ctxt, list, list->tail, data); }),
        {"ToArray",
         [](Trial& trial) {
             CodecContext context;
             int element = 5;
             ASN1TSeqOfList list;
             rtDListInit(&list);
             rtDListAppend(context, &list, &element);
             void* array = nullptr;
             uint32_t count = 0;
             trial.status([&] { return rtDListToArray(context, &list, &array, &count, sizeof element); });
         }},
        {"AppendArray",
         [](Trial& trial) {
             CodecContext context;
             int elements[3] = {};
             ASN1TSeqOfList list;
             rtDListInit(&list);
             const int status =
                 trial.status([&] { return rtDListAppendArray(context, &list, elements, 3, sizeof(int)); });
             EXPECT_TRUE(status == RT_OK ? list.count == 3 : list.count < 3);
         }},
        {"AppendCopies",
         [](Trial& trial) {
             CodecContext context;
             const int elements[3] = {1, 2, 3};
             ASN1TSeqOfList list;
             rtDListInit(&list);
             const int status = trial.status(
                 [&] { return rtDListAppendArrayCopy(context, &list, elements, 3, sizeof(int)); });
             EXPECT_TRUE(status == RT_OK ? list.count == 3 : list.count < 3);
             rtDListFreeAll(context, &list);
         }},
        {"AppendToSinglyLinkedList",
         [](Trial& trial) {
             CodecContext context;
             rtSList list;
             rtSListInitEx(context, &list);
             const bool done = trial.result([&] { return rtSListAppend(&list, nullptr); }) != nullptr;
             EXPECT_EQ(list.count, done ? 1u : 0u);
             rtSListFree(&list);
         }},
        {"AppendToListWithoutContext",
         [](Trial& trial) {
             rtSList list;
             rtSListInitEx(nullptr, &list);
             const bool done = trial.result([&] { return rtSListAppend(&list, nullptr); }) != nullptr;
             EXPECT_EQ(list.count, done ? 1u : 0u);
             rtSListFree(&list);
         }},
    };
}

Operations runtime_operations_without_memory() {
    return {
        {"Heap",
         [](Trial& trial) {
             CodecContext context;
             CodecContext other;
             void* const block = rtMemHeapAlloc(&context->typeHeap, 10);
             trial.call([&] {
                 EXPECT_EQ(rtMemHeapRealloc(&context->typeHeap, block, 5), block);
                 EXPECT_EQ(rtMemHeapCheckPtr(&context->typeHeap, block), 1);
                 rtMemHeapFreePtr(&context->typeHeap, block);
                 rtMemHeapMarkSaved();
                 rtMemHeap* shared = context->typeHeap;
                 rtMemHeapAddRef(&shared);
                 rtMemHeapRelease(&shared);
                 rtCtxtSetMemHeap(context, other);
                 rtCtxtSetMsgMemHeap(context, other);
                 rtCtxtSetFlag(context, RT_F_FASTCOPY);
                 rtCopyContext(other, context);
             });
         }},
        {"ErrorRecord",
         [](Trial& trial) {
             trial.call([] {
                 ASN1ErrInfo info{};
                 ASN1ErrInfo copy{};
                 EXPECT_EQ(rtErrSetData(&info, RT_E_NOMEM), RT_E_NOMEM);
                 EXPECT_EQ(rtErrCopyData(&info, &copy), RT_E_NOMEM);
                 EXPECT_EQ(rtErrAddIntParm(&info, 1), 1);
                 EXPECT_EQ(rtErrAddStrParm(&info, kText), 1);
                 EXPECT_STREQ(rtErrGetText(&info), "");
                 rtErrPrint(&info);
                 EXPECT_EQ(rtErrReset(&info), RT_OK);
             });
         }},
        {"MemoryBuffer",
         [](Trial& trial) {
             CodecContext context;
             ASN1MemBuf buffer;
             trial.call([&] { rtMemBufInit(context, &buffer, 16); });
             EXPECT_EQ(rtMemBufAppend(&buffer, kOctets, sizeof kOctets), RT_OK);
             trial.call([&] {
                 EXPECT_EQ(rtMemBufAppend(&buffer, kOctets, sizeof kOctets), RT_OK);
                 uint32_t length = 0;
                 EXPECT_NE(rtMemBufGetData(&buffer, &length), nullptr);
                 rtMemBufReset(&buffer);
                 rtMemBufFree(&buffer);
             });
         }},
        {"Stream",
         [](Trial& trial) {
             CodecContext context;
             auto* const stream =
                 static_cast<rtStream*>(rtMemHeapAllocZ(&context->msgHeap, sizeof(rtStream)));
             stream->write = [](rtStream*, const uint8_t*, uint32_t count) {
                 return static_cast<int>(count);
             };
             stream->mode = RT_STREAM_OUTPUT | RT_STREAM_BUFFERED_OUTPUT;
             context->stream = stream;
             uint8_t buffer[8];
             EXPECT_EQ(rtInitContextBuffer(context, buffer, sizeof buffer), RT_OK);
             trial.call([&] {
                 EXPECT_EQ(rtStreamWrite(context, kOctets, 4), RT_OK);
                 EXPECT_EQ(rtStreamBufWrite(context, kOctets, 4), RT_OK);
                 EXPECT_EQ(rtStreamBufFlush(context), RT_OK);
                 EXPECT_EQ(rtStreamFlush(context), RT_OK);
                 rtStreamRelease(context);
             });
         }},
        {"Lists",
         [](Trial& trial) {
             CodecContext context;
             int element = 0;
             ASN1TSeqOfList list;
             rtDListInit(&list);
             rtDListAppend(context, &list, &element);
             void* const combined =
                 rtMemHeapAllocZ(&context->typeHeap, sizeof(_Asn1RTDListNode) + sizeof(ASN1OpenType));
             trial.call([&] {
                 EXPECT_EQ(rtDListFindByIndex(&list, 0)->data, &element);
                 EXPECT_EQ(rtDListFindIndexByData(&list, &element), 0);
                 rtDListRemove(&list, rtDListFindByData(&list, &element));
                 EXPECT_NE(rtDListAppendNode(context, &list, static_cast<_Asn1RTDListNode*>(combined) + 1),
                           nullptr);
                 rtMemFreeOpenSeqExt(context, &list);
                 rtDListFreeNodes(context, &list);
                 rtDListFreeAll(context, &list);
             });
             rtSList single;
             trial.call([&] {
                 rtSListInitEx(context, &single);
                 rtSListFree(&single);
             });
         }},
        {"CopiesIntoTheCallersPlace",
         [](Trial& trial) {
             CodecContext context;
             trial.call([&] {
                 uint8_t octets[4];
                 uint32_t count = 0;
                 EXPECT_EQ(rtCopyOctStr(context, 4, kOctets, &count, octets), 1);
                 EXPECT_EQ(rtCopyBitStr(context, 32, kOctets, &count, octets), 1);
                 const ASN1OBJID oid = {3, {1, 2, 3}};
                 ASN1OBJID copy;
                 EXPECT_EQ(rtCopyOID(context, &oid, &copy), 1);
             });
         }},
        {"Bits",
         [](Trial& trial) {
             trial.call([] {
                 uint8_t bits[1] = {};
                 EXPECT_EQ(rtSetBit(bits, 8, 7), 0);
                 EXPECT_EQ(rtTestBit(bits, 8, 7), 1);
                 EXPECT_EQ(rtClearBit(bits, 8, 7), 1);
                 EXPECT_EQ(rtOctetBitLen(0x80), 1);
             });
         }},
        {"Characters",
         [](Trial& trial) {
             CodecContext context;
             trial.call([&] {
                 EXPECT_EQ(rtUTF8Len("aé"), 2);
                 EXPECT_EQ(rtUTF8LenBytes("aé"), 3u);
                 EXPECT_EQ(rtUTF8CharSize(0x416), 2);
                 char octets[8];
                 EXPECT_EQ(rtUTF8EncodeChar(0x416, octets, sizeof octets), 2);
                 std::size_t size = 2;
                 EXPECT_EQ(rtUTF8DecodeChar(context, octets, &size), 0x416);
                 wchar_t wide[8];
                 EXPECT_EQ(rtUTF8ToWCS(context, "ab", wide, 8), 2);
                 EXPECT_EQ(rtWCSToUTF8(context, wide, 2, octets, sizeof octets), 2);
                 uint32_t characters[] = {'a'};
                 const ASN1_32BITCHARSTRING universal = {1, characters};
                 EXPECT_EQ(rtUCSToWCSString(&universal, wide, 8), wide);
             });
         }},
        {"Numbers",
         [](Trial& trial) {
             CodecContext context;
             uint8_t magnitude[16];
             trial.call([&] {
                 ASN1BigInt number;
                 rtBigIntInit(&number);
                 number.mag = magnitude;
                 number.allocated = sizeof magnitude;
                 EXPECT_EQ(rtBigIntSetStr(context, &number, "-129", 0), RT_OK);
                 EXPECT_EQ(rtBigIntGetDataLen(&number), 2);
                 uint8_t octets[2];
                 EXPECT_EQ(rtBigIntGetData(context, &number, octets, 2), 2);
                 EXPECT_EQ(rtBigIntDigitsNum(&number, 2), 9);
                 EXPECT_LT(rtBigIntStrCompare(context, "5", "6"), 0);
                 rtBigIntFree(context, &number);
             });
         }},
        {"ObjectIdentifiers",
         [](Trial& trial) {
             trial.call([] {
                 ASN1OBJID oid;
                 EXPECT_EQ(rtStrToOid("1.2.3", &oid), 1);
                 char text[16];
                 EXPECT_EQ(rtOidToStr(&oid, text, sizeof text - 1), 1);
                 EXPECT_EQ(rtOidToStrLen(&oid), 5);
                 int result = 0;
                 EXPECT_EQ(rtCmpOID(kText, &oid, &oid, &result), 1);
                 EXPECT_EQ(rtCmpOIDValue(kText, &oid, &oid, &result), 1);
                 ASN1OBJID copy;
                 rtSetOID(&copy, &oid);
                 EXPECT_TRUE(copy == oid);
                 const unsigned int arcs[] = {1, 2, 3};
                 ASN1TObjId object(3, arcs);
                 ASN1TObjId same(oid);
                 ASN1TObjId third(same);
                 third = oid;
                 third = object;
                 const long long long_arcs[] = {1, 2, 3};
                 ASN1TObjId64 wide(3, long_arcs);
                 const ASN1OID64& record = wide;
                 ASN1TObjId64 wide_copy(wide);
                 ASN1TObjId64 wide_of_record(record);
                 wide_copy = record;
                 wide_copy = wide_of_record;
                 EXPECT_TRUE(third == oid);
             });
         }},
        {"TimeTexts",
         [](Trial& trial) {
             CodecContext context;
             trial.call([&] {
                 ASN1TimeRecord record;
                 EXPECT_EQ(rtParseUTCTime(context, "240102030405Z", &record), RT_OK);
                 EXPECT_EQ(rtParseGeneralizedTime(context, "20240102030405.5Z", &record), RT_OK);
                 char text[40];
                 char* place = text;
                 EXPECT_EQ(rtMakeGeneralizedTime(context, &record, &place, sizeof text), RT_OK);
             });
         }},
        {"Encoding",
         [](Trial& trial) {
             CodecContext context;
             EXPECT_EQ(xe_setp(context, nullptr, 0), RT_OK);
             trial.call([&] {
                 EXPECT_EQ(xe_memcpy(context, kOctets, sizeof kOctets), 4);
                 EXPECT_EQ(xe_getp(context)[0], 0x04);
                 ASN1BufLocDescr place;
                 xe_getBufLocDescr(context, 4, &place);
                 xe_free(context);
             });
         }},
        {"DecodingHeaders",
         [](Trial& trial) {
             CodecContext context;
             const auto message = from_hex("30 80 04 01 aa 04 01 bb 00 00 ");
             const int size = static_cast<int>(message.size());
             trial.call([&] {
                 ASN1TAG tag = 0;
                 int length = 0;
                 EXPECT_EQ(xd_indeflen_ex(message.data(), size), 10);
                 EXPECT_EQ(xd_setp(context, message.data(), size, &tag, &length), RT_OK);
                 EXPECT_EQ(xd_match(context, tag, &length, XM_ADVANCE), RT_OK);
                 ASN1BUFSAVE state;
                 xu_SaveBufferState(context, &state);
                 int count = 0;
                 EXPECT_EQ(xd_count(context, RT_INDEFLEN, &count), RT_OK);
                 EXPECT_EQ(xd_NextElement(context), RT_OK);
                 EXPECT_EQ(xd_MovePastEOC(context), RT_OK);
                 xu_RestoreBufferState(context, &state);
                 EXPECT_EQ(xd_match1(context, 0x04, &length), RT_OK);
                 uint8_t octet = 0;
                 EXPECT_EQ(xd_memcpy(context, &octet, 1), RT_OK);
                 EXPECT_EQ(xd_tag_len(context, &tag, &length, 0), RT_OK);
                 EXPECT_EQ(xd_tag(context, &tag), RT_OK);
                 EXPECT_EQ(xd_len(context, &length), RT_OK);
                 xu_RestoreBufferState(context, &state);
                 EXPECT_EQ(xd_Tag1AndLen(context, &length), RT_OK);
                 xu_RestoreBufferState(context, &state);
                 uint32_t octets = 0;
                 uint32_t total = 0;
                 EXPECT_EQ(xd_consStrIndefLenAndSize(context, 4, &octets, &total), RT_OK);
                 EXPECT_EQ(octets, 2u);
             });
         }},
        {"DecodingValues",
         [](Trial& trial) {
             CodecContext context;
             const auto message = from_hex(
                 "30 1b 01 01 ff 02 01 05 02 01 05 02 01 05 0a 01 05 05 00 06 01 2a"
                 " 04 01 aa 03 02 00 aa");
             trial.call([&] {
                 EXPECT_EQ(
                     xd_setp(context, message.data(), static_cast<int>(message.size()), nullptr, nullptr),
                     RT_OK);
                 int length = 0;
                 EXPECT_EQ(xd_match1(context, 0x30, &length), RT_OK);
                 uint8_t flag = 0;
                 int32_t number = 0;
                 uint32_t magnitude = 0;
                 uint16_t small = 0;
                 EXPECT_EQ(xd_boolean(context, &flag, ASN1EXPL, 0), RT_OK);
                 EXPECT_EQ(xd_integer(context, &number, ASN1EXPL, 0), RT_OK);
                 EXPECT_EQ(xd_unsigned(context, &magnitude, ASN1EXPL, 0), RT_OK);
                 EXPECT_EQ(xd_uint16(context, &small, ASN1EXPL, 0), RT_OK);
                 EXPECT_EQ(xd_enum(context, &number, ASN1EXPL, 0), RT_OK);
                 EXPECT_EQ(xd_null(context, ASN1EXPL), RT_OK);
                 ASN1OBJID oid;
                 EXPECT_EQ(xd_objid(context, &oid, ASN1EXPL, 0), RT_OK);
                 uint8_t octets[4];
                 uint32_t count = sizeof octets;
                 EXPECT_EQ(xd_octstr_s(context, octets, &count, ASN1EXPL, 0), RT_OK);
                 count = 32;
                 EXPECT_EQ(xd_bitstr_s(context, octets, &count, ASN1EXPL, 0), RT_OK);
             });
         }},
    };
}

}  // namespace Quillmark::test
