// The classes of the run-time: contexts and message buffers, lists, bit strings, times.

#include <array>
#include <memory>

#include "asn1data/control_classes.h"
#include "asn1data/records.h"
#include "runtime/bit_string.h"
#include "runtime/context.h"
#include "runtime/der_encode.h"
#include "runtime/list.h"
#include "runtime/memory_buffer.h"
#include "runtime/message_buffer.h"
#include "runtime/seq_of_list.h"
#include "runtime/time_class.h"
#include "tests/robustness/operations.h"
#include "tests/support/hex.h"

namespace Quillmark::test {

namespace {

const uint8_t kMessage[] = {0x30, 0x03, 0x02, 0x01, 0x05};

/// A control class of the test's own, with a context of its own.
class OwnContext : public ASN1CType {
  public:
    OwnContext() = default;
};

/// A buffer with nothing but what the interface gives.
class BareBuffer : public ASN1MessageBufferIF {
  public:
    bool isA(Type /*type*/) override { return false; }
};

/// A buffer with nothing but what the base class gives.
class PlainBuffer : public ASN1MessageBuffer {
  public:
    PlainBuffer() : ASN1MessageBuffer(BEREncode) {}
    bool isA(Type /*type*/) override { return false; }
};

/// A time with what is protected in reach.
class OpenTime : public ASN1CGeneralizedTime {
  public:
    using ASN1CGeneralizedTime::ASN1CGeneralizedTime;
    using ASN1CTime::getDaysNum;
    using ASN1CTime::getMillisNum;
};

/// A row for something that is made and goes.
template <class Make>
std::function<void(Trial&)> makes(Make make) {
    return [make](Trial& trial) { trial.call([&] { make(); }); };
}

/// A row for an insertion into a list of one element, which has one more, or is as it was.
template <class Insert>
Operation inserts(const char* name, Insert insert) {
    return {name, [insert](Trial& trial) {
                ASN1BEREncodeBuffer buffer;
                ASN1CSeqOfList list(buffer);
                int elements[2] = {};
                EXPECT_EQ(list.append(&elements[0]), RT_OK);
                const int status = trial.status([&] { return insert(list, &elements[1]); });
                EXPECT_EQ(list.size(), status == RT_OK ? 2 : 1);
                EXPECT_EQ(list.indexOf(&elements[0]) >= 0, true);
                EXPECT_EQ(insert(list, &elements[1]), RT_OK);
            }};
}

/// A row for a change of a bit string that has to grow: it is done, or the bits are as they were.
template <class Change>
Operation grows(const char* name, Change change) {
    return {name, [change](Trial& trial) {
                ASN1BEREncodeBuffer buffer;
                ASN1TDynBitStr record = {9, kMessage};
                ASN1CBitStr bits(buffer, record);
                const int before = bits.cardinality();
                const int status = trial.status([&] { return change(bits); });
                if (status != RT_OK) {
                    EXPECT_EQ(bits.cardinality(), before);
                    EXPECT_EQ(bits.size(), 9);
                    EXPECT_EQ(change(bits), RT_OK);
                }
            }};
}

}  // namespace

Operations class_operations() {
    return {
        {"Context", makes([] {
             ASN1Context* const context = new ASN1Context;
             context->_ref();
             context->_unref();
         })},
        {"EncodeBuffer", makes([] { ASN1BEREncodeBuffer buffer; })},
        {"EncodeBufferOfTheCaller", makes([] {
             unsigned char octets[16];
             ASN1BEREncodeBuffer buffer(octets, sizeof octets);
         })},
        {"EncodeBufferStartsAnew",
         [](Trial& trial) {
             unsigned char octets[16];
             ASN1BEREncodeBuffer buffer(octets, sizeof octets);
             trial.status([&] { return buffer.setBuffer(nullptr, 0); });
             EXPECT_EQ(buffer.setBuffer(nullptr, 0), RT_OK);
         }},
        {"EncodeBufferCopiesItsMessage",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             xe_memcpy(buffer.getCtxtPtr(), kMessage, sizeof kMessage);
             trial.call(
                 [&] { const std::unique_ptr<uint8_t[]> copy(buffer.ASN1BEREncodeBuffer::getMsgCopy()); });
         }},
        {"EncodeBufferTakesAValue",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             EXPECT_EQ(buffer.setBuffer(nullptr, 1), RT_OK);
             asn1data::ASN1T_Accuracy record;
             record.m.secondsPresent = 1;
             asn1data::ASN1C_Accuracy control(buffer, record);
             // Intended: a success leaves as an exception too, with its length.
             trial.status([&]() -> int {
                 try {
                     buffer << control;
                     return RT_OK;
                 } catch (const ASN1RTLException& outcome) {
                     return outcome.getStatus();
                 }
             });
         }},
        {"DecodeBuffer", makes([] { ASN1BERDecodeBuffer buffer; })},
        {"DecodeBufferOfAMessage", makes([] { ASN1BERDecodeBuffer buffer(kMessage, sizeof kMessage); })},
        {"BufferOfTheBaseClass", makes([] { PlainBuffer buffer; })},
        {"ControlClassWithAContext", makes([] { OwnContext control; })},
        {"GeneralizedTimeWithAContext", makes([] {
             char octets[40] = "20240102030405Z";
             char* place = octets;
             const char* text = octets;
             ASN1CGeneralizedTime time(place, static_cast<int>(sizeof octets), 0);
             ASN1CGeneralizedTime reader(text);
         })},
        {"UTCTimeWithAContext", makes([] {
             char octets[40] = "240102030405Z";
             char* place = octets;
             const char* text = octets;
             ASN1CUTCTime time(place, static_cast<int>(sizeof octets), 0);
             ASN1CUTCTime reader(text);
         })},
        {"ListOfItsOwn",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             int element = 0;
             trial.status([&] {
                 ASN1CSeqOfList list(buffer);
                 const int status = list.append(&element);
                 EXPECT_EQ(list.size(), status == RT_OK ? 1 : 0);
                 return status;
             });
         }},
        {"ListOfItsOwnInAContext",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             int element = 0;
             trial.status([&] {
                 ASN1CSeqOfList list(*buffer.getCtxtPtr());
                 return list.append(&element);
             });
         }},
        inserts("ListAppends", [](ASN1CSeqOfList& list, void* data) { return list.append(data); }),
        inserts("ListInserts", [](ASN1CSeqOfList& list, void* data) { return list.insert(0, data); }),
        {"ListInsertsBeside",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             _Asn1RTDList record;
             ASN1CSeqOfList list(buffer, record, 1);
             int elements[3] = {};
             EXPECT_EQ(list.append(&elements[0]), RT_OK);
             if (trial.status([&] { return list.insertBefore(record.head, &elements[1]); }) == RT_OK) {
                 trial.status([&] { return list.insertAfter(record.tail, &elements[2]); });
             }
             EXPECT_NE(list.indexOf(&elements[0]), -1);
         }},
        {"ListAppendsArray",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             ASN1CSeqOfList list(buffer);
             const int elements[3] = {};
             const int status = trial.status([&] { return list.appendArray(elements, 3, sizeof(int)); });
             EXPECT_TRUE(status == RT_OK ? list.size() == 3 : list.size() < 3);
         }},
        {"ListAppendsCopies",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             ASN1CSeqOfList list(buffer);
             const int elements[3] = {};
             const int status = trial.status([&] { return list.appendArrayCopy(elements, 3, sizeof(int)); });
             EXPECT_TRUE(status == RT_OK ? list.size() == 3 : list.size() < 3);
             list.freeAll();
         }},
        {"ListToArray",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             ASN1CSeqOfList list(buffer);
             int element = 0;
             EXPECT_EQ(list.append(&element), RT_OK);
             trial.result([&] { return list.toArray(sizeof element); });
         }},
        {"IteratorInserts",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             ASN1CSeqOfList list(buffer);
             int elements[2] = {};
             EXPECT_EQ(list.append(&elements[0]), RT_OK);
             ASN1CSeqOfListIterator position = list.iterator();
             const int status = trial.status([&] { return position.insert(&elements[1]); });
             EXPECT_EQ(list.size(), status == RT_OK ? 2 : 1);
         }},
        {"BitStringWithRoom",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             // Without the room at first, the first change asks for it again.
             trial.call_that_may_do_without([&] {
                 ASN1CBitStr bits(buffer, 100);
                 EXPECT_EQ(bits.set(99), RT_OK);
             });
         }},
        {"BitStringWithRoomInAContext",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             // Without the room at first, the first change asks for it again.
             trial.call_that_may_do_without([&] {
                 ASN1CBitStr bits(*buffer.getCtxtPtr(), 100);
                 EXPECT_EQ(bits.set(99), RT_OK);
             });
         }},
        grows("BitStringSetsBit", [](ASN1CBitStr& bits) { return bits.set(40); }),
        grows("BitStringSetsBits", [](ASN1CBitStr& bits) { return bits.set(3, 40); }),
        grows("BitStringClearsBit", [](ASN1CBitStr& bits) { return bits.clear(2); }),
        grows("BitStringClearsBits", [](ASN1CBitStr& bits) { return bits.clear(2, 3); }),
        grows("BitStringInvertsBit", [](ASN1CBitStr& bits) { return bits.invert(40); }),
        grows("BitStringInvertsBits", [](ASN1CBitStr& bits) { return bits.invert(3, 40); }),
        grows("BitStringAnd", [](ASN1CBitStr& bits) { return bits.doAnd(kMessage, 16); }),
        grows("BitStringOr", [](ASN1CBitStr& bits) { return bits.doOr(kMessage, 24); }),
        grows("BitStringXor", [](ASN1CBitStr& bits) { return bits.doXor(kMessage, 24); }),
        grows("BitStringAndNot", [](ASN1CBitStr& bits) { return bits.doAndNot(kMessage, 16); }),
        grows("BitStringShiftsLeft", [](ASN1CBitStr& bits) { return bits.shiftLeft(1); }),
        grows("BitStringShiftsRight", [](ASN1CBitStr& bits) { return bits.shiftRight(20); }),
        {"BitStringAsRecord",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             ASN1CBitStr bits(buffer, 8);
             EXPECT_EQ(bits.set(0), RT_OK);
             trial.result([&] { return static_cast<ASN1TDynBitStr*>(bits); });
         }},
    };
}

Operations class_operations_without_memory() {
    return {
        {"EncodeBuffer",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             trial.call([&] {
                 buffer.ASN1BEREncodeBuffer::init();
                 EXPECT_EQ(xe_memcpy(buffer.getCtxtPtr(), kMessage, sizeof kMessage), 5);
                 EXPECT_EQ(buffer.ASN1BEREncodeBuffer::getMsgPtr()[0], 0x30);
                 EXPECT_TRUE(buffer.ASN1BEREncodeBuffer::isA(ASN1MessageBufferIF::BEREncode));
             });
         }},
        {"DecodeBuffer",
         [](Trial& trial) {
             ASN1BERDecodeBuffer buffer(kMessage, sizeof kMessage);
             asn1data::ASN1T_Accuracy record;
             asn1data::ASN1C_Accuracy control(buffer, record);
             trial.call([&] {
                 buffer.ASN1BERDecodeBuffer::init();
                 int length = 0;
                 EXPECT_NE(buffer.findElement(2, length, 1), nullptr);
                 buffer.setBuffer(kMessage, sizeof kMessage, 0);
                 buffer >> control;
                 EXPECT_EQ(record.seconds, 5);
                 EXPECT_TRUE(buffer.ASN1BERDecodeBuffer::isA(ASN1MessageBufferIF::BERDecode));
             });
         }},
        {"BufferOfTheBaseClass",
         [](Trial& trial) {
             PlainBuffer buffer;
             ASN1MemBuf contents;
             rtMemBufInit(buffer.getCtxtPtr(), &contents, 0);
             trial.call([&] {
                 EXPECT_FALSE(buffer.ASN1MessageBuffer::getContext().isNull());
                 EXPECT_NE(buffer.ASN1MessageBuffer::getCtxtPtr(), nullptr);
                 (void)buffer.ASN1MessageBuffer::getMsgPtr();
                 EXPECT_EQ(buffer.ASN1MessageBuffer::initBuffer(contents), RT_E_INVPARAM);
                 unsigned short wide[1] = {};
                 char narrow[1] = {};
                 EXPECT_EQ(buffer.ASN1MessageBuffer::initBuffer(wide), RT_E_NOTSUPP);
                 EXPECT_EQ(buffer.ASN1MessageBuffer::initBuffer(narrow), RT_E_NOTSUPP);
                 buffer.getCtxtPtr()->PrintErrorInfo();
             });
         }},
        {"BufferOfTheInterface",
         [](Trial& trial) {
             trial.call([] {
                 BareBuffer buffer;
                 ASN1MemBuf contents{};
                 EXPECT_TRUE(buffer.ASN1MessageBufferIF::getContext().isNull());
                 EXPECT_EQ(buffer.ASN1MessageBufferIF::getCtxtPtr(), nullptr);
                 EXPECT_EQ(buffer.ASN1MessageBufferIF::getMsgPtr(), nullptr);
                 EXPECT_EQ(buffer.ASN1MessageBufferIF::getMsgCopy(), nullptr);
                 buffer.ASN1MessageBufferIF::init();
                 unsigned short wide[1] = {};
                 char narrow[1] = {};
                 (void)buffer.ASN1MessageBufferIF::initBuffer(contents);
                 (void)buffer.ASN1MessageBufferIF::initBuffer(wide);
                 (void)buffer.ASN1MessageBufferIF::initBuffer(narrow);
             });
         }},
        {"ControlClass",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             ASN1BEREncodeBuffer other;
             trial.call([&] {
                 ASN1CType control(buffer);
                 EXPECT_EQ(control.ASN1CType::Encode(), RT_OK);
                 EXPECT_EQ(control.ASN1CType::Decode(), RT_OK);
                 EXPECT_EQ(control.ASN1CType::EncodeTo(buffer), RT_OK);
                 EXPECT_EQ(control.ASN1CType::DecodeFrom(buffer), RT_OK);
                 control.setMsgBuf(other);
             });
         }},
        {"List",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             ASN1TPDUSeqOfList record;
             int elements[3] = {};
             trial.call([&] {
                 ASN1CSeqOfList of_buffer(buffer, static_cast<_Asn1RTDList&>(record), 1);
                 ASN1CSeqOfList of_record(buffer, record);
                 ASN1CSeqOfList of_context(*buffer.getCtxtPtr(), static_cast<_Asn1RTDList&>(record));
                 ASN1CSeqOfList of_record_in_context(*buffer.getCtxtPtr(), record);
                 EXPECT_EQ(of_record_in_context.size(), 0);
             });
             ASN1CSeqOfList list(buffer, record);
             for (int& element : elements) {
                 EXPECT_EQ(list.append(&element), RT_OK);
             }
             trial.call([&] {
                 EXPECT_EQ(list.get(0), &elements[0]);
                 EXPECT_EQ(list.getFirst(), &elements[0]);
                 EXPECT_EQ(list.getLast(), &elements[2]);
                 EXPECT_EQ(list.indexOf(&elements[1]), 1);
                 EXPECT_EQ(list.set(0, &elements[0]), RT_OK);
                 int array[3];
                 EXPECT_EQ(list.toArray(array, sizeof(int), 3), array);
                 ASN1CSeqOfListIterator position = list.iterator();
                 EXPECT_EQ(position.next(), &elements[0]);
                 EXPECT_EQ(position.set(&elements[0]), RT_OK);
                 EXPECT_EQ(position.remove(), RT_OK);
                 EXPECT_EQ(list.iteratorFromLast().prev(), &elements[2]);
                 EXPECT_EQ(list.iteratorFrom(&elements[1]).next(), &elements[1]);
                 EXPECT_EQ(list.remove(0), RT_OK);
                 EXPECT_EQ(list.remove(&elements[2]), RT_OK);
                 EXPECT_EQ(list.remove(static_cast<_Asn1RTDListNode*>(nullptr)), RT_E_INVPARAM);
                 list.clear();
                 list.freeAll();
             });
         }},
        {"BitString",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             uint8_t octets[2] = {0x80, 0};
             uint32_t count = 16;
             ASN1TDynBitStr record = {9, kMessage};
             trial.call([&] {
                 ASN1CBitStr of_record(*buffer.getCtxtPtr(), record);
                 ASN1CBitStr in_context(*buffer.getCtxtPtr(), octets, count, 16);
                 ASN1CBitStr bits(buffer, octets, count, 16);
                 EXPECT_EQ(bits.set(3), RT_OK);
                 EXPECT_TRUE(bits.get(3));
                 uint8_t part[1];
                 EXPECT_EQ(bits.get(0, 3, part, 1), RT_OK);
                 EXPECT_EQ(bits.length(), 4);
                 EXPECT_GE(bits.size(), 4);
                 EXPECT_EQ(bits.cardinality(), 2);
                 EXPECT_EQ(bits.getBytes(), octets);
                 EXPECT_LE(bits.unusedBitsInLastUnit(), 7);
                 EXPECT_EQ(static_cast<ASN1TDynBitStr>(bits).data, octets);
                 bits.clear();
             });
         }},
        {"GeneralizedTime",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             char octets[40] = "20240102030405.5Z";
             char* place = octets;
             const char* text = octets;
             OpenTime time(place, static_cast<int>(sizeof octets), 0);
             ASN1CGeneralizedTime reader(text);
             trial.call([&] {
                 ASN1CGeneralizedTime in_buffer(buffer, place, static_cast<int>(sizeof octets), 0);
                 ASN1CGeneralizedTime read_in_buffer(buffer, text);
                 ASN1CGeneralizedTime in_context(*buffer.getCtxtPtr(), place, static_cast<int>(sizeof octets),
                                                 0);
                 ASN1CGeneralizedTime read_in_context(*buffer.getCtxtPtr(), text);
                 EXPECT_EQ(time.ASN1CTime::getYear(), 2024);
                 EXPECT_EQ(time.ASN1CTime::getMonth(), 1);
                 EXPECT_EQ(time.ASN1CTime::getDay(), 2);
                 EXPECT_EQ(time.ASN1CTime::getHour(), 3);
                 EXPECT_EQ(time.ASN1CTime::getMinute(), 4);
                 EXPECT_EQ(time.ASN1CTime::getSecond(), 5);
                 EXPECT_EQ(time.ASN1CTime::getFraction(), 5);
                 EXPECT_EQ(time.ASN1CTime::getDiffHour(), 0);
                 EXPECT_EQ(time.ASN1CTime::getDiffMinute(), 0);
                 EXPECT_EQ(time.ASN1CTime::getDiff(), 0);
                 EXPECT_EQ(time.ASN1CTime::getUTC(), 1);
                 EXPECT_EQ(time.ASN1CTime::getTime(), 1704164645);
                 EXPECT_EQ(time.getCentury(), 20);
                 EXPECT_GT(time.getDaysNum(), 0);
                 EXPECT_GT(time.getMillisNum(), 0);
                 EXPECT_EQ(time.ASN1CTime::equals(reader), 0);
                 EXPECT_TRUE(time.ASN1CTime::operator==(reader));
                 EXPECT_FALSE(time.ASN1CTime::operator!=(reader));
                 EXPECT_FALSE(time.ASN1CTime::operator<(reader));
                 EXPECT_FALSE(time.ASN1CTime::operator>(reader));
                 EXPECT_TRUE(time.ASN1CTime::operator<=(reader));
                 EXPECT_TRUE(time.ASN1CTime::operator>=(reader));
                 EXPECT_EQ(time.ASN1CTime::setYear(2025), RT_OK);
                 EXPECT_EQ(time.ASN1CTime::setMonth(2), RT_OK);
                 EXPECT_EQ(time.ASN1CTime::setDay(3), RT_OK);
                 EXPECT_EQ(time.ASN1CTime::setHour(4), RT_OK);
                 EXPECT_EQ(time.ASN1CTime::setMinute(5), RT_OK);
                 EXPECT_EQ(time.ASN1CTime::setSecond(6), RT_OK);
                 EXPECT_EQ(time.ASN1CTime::setFraction(7), RT_OK);
                 EXPECT_EQ(time.ASN1CTime::setUTC(0), RT_OK);
                 EXPECT_EQ(time.ASN1CTime::setDiffHour(3), RT_OK);
                 EXPECT_EQ(time.ASN1CTime::setDiff(3, 30), RT_OK);
                 EXPECT_EQ(time.ASN1CTime::setDiff(30), RT_OK);
                 EXPECT_EQ(time.setCentury(20), RT_OK);
                 EXPECT_EQ(time.ASN1CGeneralizedTime::compileString(), RT_OK);
                 EXPECT_EQ(time.ASN1CGeneralizedTime::parseString("20240102030405Z"), RT_OK);
                 EXPECT_EQ(time.ASN1CGeneralizedTime::setTime(1704164645, 0), RT_OK);
                 EXPECT_GT(time.getTimeStringLen(), 0);
                 char copy[40];
                 EXPECT_EQ(time.getTimeString(copy, sizeof copy), copy);
                 time.ASN1CTime::clear();
                 EXPECT_EQ(ASN1CTime::checkDate(29, 2, 2024), 1);
                 int16_t year = 2024, month = 1, day = 1, hour = 0, minute = 0, second = 0;
                 int32_t fraction = 0;
                 ASN1CTime::addDays(1, year, month, day);
                 ASN1CTime::addMilliseconds(1, year, month, day, hour, minute, second, fraction);
             });
         }},
        {"UTCTime",
         [](Trial& trial) {
             ASN1BEREncodeBuffer buffer;
             char octets[40] = "240102030405Z";
             char* place = octets;
             const char* text = octets;
             ASN1CUTCTime time(place, static_cast<int>(sizeof octets), 0);
             trial.call([&] {
                 ASN1CUTCTime in_buffer(buffer, place, static_cast<int>(sizeof octets), 0);
                 ASN1CUTCTime read_in_buffer(buffer, text);
                 ASN1CUTCTime in_context(*buffer.getCtxtPtr(), place, static_cast<int>(sizeof octets), 0);
                 ASN1CUTCTime read_in_context(*buffer.getCtxtPtr(), text);
                 EXPECT_EQ(time.ASN1CUTCTime::getFraction(), 0);
                 EXPECT_EQ(time.ASN1CUTCTime::setFraction(1), RT_E_NOTSUPP);
                 EXPECT_EQ(time.ASN1CUTCTime::setYear(25), RT_OK);
                 EXPECT_EQ(time.ASN1CUTCTime::setUTC(1), RT_OK);
                 EXPECT_EQ(time.ASN1CUTCTime::compileString(), RT_OK);
                 EXPECT_EQ(time.ASN1CUTCTime::parseString("240102030405Z"), RT_OK);
                 EXPECT_EQ(time.ASN1CUTCTime::setTime(1704164645, 0), RT_OK);
                 time.ASN1CUTCTime::clear();
             });
         }},
    };
}

}  // namespace Quillmark::test
