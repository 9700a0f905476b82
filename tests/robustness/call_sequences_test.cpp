// Calls in any order with any arguments: no sequence of them reads or writes what it must not, and objects
// stay usable. The sequences are drawn at random, the same each time; what is wrong with one is for the
// sanitizers to see.

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "runtime/bit_string.h"
#include "runtime/memory_buffer.h"
#include "runtime/message_buffer.h"
#include "runtime/seq_of_list.h"
#include "runtime/time_class.h"
#include "tests/robustness/time_stamps.h"
#include "tests/support/blob.h"
#include "tests/support/test_keys.h"
#include "values/datetime.h"
#include "values/result.h"

namespace Quillmark::test {
namespace {

using namespace ASN1;
using namespace PKI::TSP;

/// Draws arguments: small ones, ones at the limits of their type, and any.
class Draw {
  public:
    explicit Draw(unsigned seed) : random_(seed) {}

    unsigned below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }

    std::int64_t number() {
        constexpr std::int64_t kLimits[] = {INT16_MIN, INT16_MAX, INT32_MIN,     INT32_MAX,     UINT32_MAX,
                                            -1,        0,         INT32_MIN + 1, INT32_MAX - 1, 0x20000000};
        switch (below(4)) {
            case 0:
                return kLimits[below(std::size(kLimits))];
            case 1:
                return static_cast<std::int64_t>(random_());
            default:
                return static_cast<std::int64_t>(below(100)) - 10;
        }
    }
    int integer() { return static_cast<int>(number()); }
    std::uint32_t index() { return static_cast<std::uint32_t>(number()); }

    template <class Value, std::size_t Count>
    const Value& one_of(const Value (&values)[Count]) {
        return values[below(Count)];
    }

  private:
    std::mt19937_64 random_;
};

class Sequence : public testing::TestWithParam<unsigned> {
  protected:
    Draw draw{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Seeds, Sequence, testing::Range(1u, 9u));

// Times

constexpr const char* kTimeTexts[] = {
    "",
    "20240102030405Z",
    "240102030405Z",
    "20240229235959.999999999999999999999999Z",
    "2024010203+1200",
    "99991231235959.9-1200",
    "000101000000Z",
    "0000010100",
    "20241301000000Z",
    "2024010203040",
    "+024-1-1-1-1",
    "99999999999999999999999999999999999999999999999999999999999999999999999"};

void change(Draw& draw, ASN1CTime& time) {
    switch (draw.below(14)) {
        case 0:
            time.setYear(draw.integer());
            break;
        case 1:
            time.setMonth(draw.integer());
            break;
        case 2:
            time.setDay(draw.integer());
            break;
        case 3:
            time.setHour(draw.integer());
            break;
        case 4:
            time.setMinute(draw.integer());
            break;
        case 5:
            time.setSecond(draw.integer());
            break;
        case 6:
            time.setFraction(draw.integer());
            break;
        case 7:
            time.setDiffHour(draw.integer());
            break;
        case 8:
            time.setDiff(draw.integer(), draw.integer());
            break;
        case 9:
            time.setDiff(draw.integer());
            break;
        case 10:
            time.setTime(draw.number(), draw.below(2) != 0);
            break;
        case 11:
            time.parseString(draw.one_of(kTimeTexts));
            break;
        case 12:
            time.setUTC(draw.integer());
            break;
        default:
            time.clear();
    }
}

void look_at(const ASN1CTime& time, const ASN1CTime& other) {
    (void)(time.getYear() + time.getMonth() + time.getDay() + time.getHour());
    (void)(time.getMinute() + time.getSecond() + time.getUTC());
    (void)time.getFraction();
    (void)(time.getDiff() + time.getDiffHour() + time.getDiffMinute());
    (void)time.getTime();
    (void)time.equals(other);
    (void)(time == other || time < other || time > other);
    char text[64];
    if (time.getTimeString(text, sizeof text) != nullptr) {
        EXPECT_EQ(std::strlen(text), static_cast<std::size_t>(time.getTimeStringLen()));
    }
}

TEST_P(Sequence, OfChangesToTimes) {
    ASN1BEREncodeBuffer buffer;
    for (int round = 0; round < 40; ++round) {
        // Rooms of the caller's that end where their allocation does.
        const auto size = static_cast<int>(draw.below(70)) + 1;
        const auto room = std::make_unique<char[]>(static_cast<std::size_t>(size));
        char* place = room.get();
        const char* text = draw.one_of(kTimeTexts);
        const auto utc = static_cast<unsigned char>(draw.below(2));
        ASN1CGeneralizedTime written(buffer, place, size, utc);
        ASN1CUTCTime short_form(buffer, text, utc);
        for (int step = 0; step < 40; ++step) {
            change(draw, written);
            change(draw, short_form);
            written.setCentury(draw.integer());
            (void)written.getCentury();
            look_at(written, short_form);
            look_at(short_form, written);
        }
    }
}

struct CalendarTime {
    std::int16_t year, month, day, hour, minute, second;
    std::int32_t fraction;
};

void move(Draw& draw, CalendarTime& time) {
    ASN1CTime::addDays(draw.integer(), time.year, time.month, time.day);
    ASN1CTime::addMilliseconds(draw.number(), time.year, time.month, time.day, time.hour, time.minute,
                               time.second, time.fraction);
}

TEST_P(Sequence, OfStepsInTheCalendar) {
    const auto field = [this] { return static_cast<std::int16_t>(draw.number()); };
    CalendarTime good = {2024, 2, 29, 23, 59, 59, 9};
    for (int step = 0; step < 5000; ++step) {
        CalendarTime any = {field(), field(), field(), field(), field(), field(), draw.integer()};
        move(draw, any);
        move(draw, good);
        ASSERT_EQ(ASN1CTime::checkDate(good.day, good.month, good.year), 1);
        ASSERT_TRUE(good.year >= 0 && good.hour >= 0 && good.hour < 24 && good.second < 60);
        (void)ASN1CTime::checkDate(draw.integer(), draw.integer(), draw.integer());
    }
}

TEST_P(Sequence, OfDates) {
    // Seconds from 1970 to the ends of the platform's calendar, 1601 and 30827: beyond them a text is the
    // caller's mistake.
    constexpr std::int64_t kFirst = -11'644'473'600;
    constexpr std::int64_t kLast = 910'670'515'199;
    for (int step = 0; step < 2000; ++step) {
        try {
            const std::int64_t seconds = kFirst + (draw.number() & INT64_MAX) % (kLast - kFirst);
            const CDateTime time(static_cast<long long>(seconds), draw.below(1'000'000));
            (void)time.getGeneralizedTime();
            (void)time.tostring();
            (void)time.towstring();
            (void)toXsdDateTimeString(time);
            (void)(time.getTime() + time.year() + time.month() + time.day());
            const char unit[] = {draw.one_of("snhdwmy?"), '\0'};
            (void)(DateAddA(unit, draw.integer(), time) - time).getGeneralizedTime();
            (void)CDateTime(draw.index(), draw.index(), draw.index(), draw.index(), draw.index(),
                            draw.index(), draw.index(), draw.index());
        } catch (const CAtlException& failure) {
            EXPECT_NE(static_cast<HRESULT>(failure), S_OK);
        }
    }
}

// Bit strings and buffers

void change(Draw& draw, ASN1CBitStr& bits) {
    constexpr std::uint8_t kOther[] = {0x55, 0xFF, 0x00, 0x80, 0x01};
    // Not so many that a string would take all memory, but for refused ones.
    const auto index = [&] { return draw.below(8) == 0 ? draw.index() | 0x7FFFFFFFu : draw.below(300); };
    const std::uint32_t first = index();
    const std::uint32_t last = index();
    switch (draw.below(13)) {
        case 0:
            bits.set(first);
            break;
        case 1:
            bits.set(first, last);
            break;
        case 2:
            bits.clear(first);
            break;
        case 3:
            bits.clear(first, last);
            break;
        case 4:
            bits.invert(first, last);
            break;
        case 5:
            bits.clear();
            break;
        case 6:
            bits.doAnd(kOther, draw.below(41));
            break;
        case 7:
            bits.doOr(kOther, draw.below(41));
            break;
        case 8:
            bits.doXor(kOther, draw.below(41));
            break;
        case 9:
            bits.doAndNot(draw.below(4) == 0 ? nullptr : kOther, draw.below(41));
            break;
        case 10:
            bits.shiftLeft(index());
            break;
        case 11:
            bits.shiftRight(draw.below(300));
            break;
        default:
            bits.doOr(bits.getBytes(), static_cast<std::uint32_t>(bits.size()));
    }
}

void look_at(Draw& draw, const ASN1CBitStr& bits) {
    EXPECT_LE(bits.cardinality(), bits.length());
    EXPECT_LE(bits.length(), bits.size());
    (void)bits.get(draw.index());
    std::uint8_t out[8];
    bits.get(draw.index(), draw.index(), out, sizeof out);
    bits.get(draw.below(80), draw.below(80), out, sizeof out);
    (void)bits.unusedBitsInLastUnit();
}

TEST_P(Sequence, OfChangesToBitStrings) {
    for (int round = 0; round < 60; ++round) {
        ASN1BEREncodeBuffer buffer;
        // An array that ends where its allocation does, with a count that may be a lie.
        const std::uint32_t octets = draw.below(5);
        const auto array = std::make_unique<std::uint8_t[]>(octets);
        std::uint32_t count = draw.below(octets * 8 + 1);
        ASN1CBitStr in_array(buffer, array.get(), count, static_cast<int>(octets * 8));
        ASN1TDynBitStr record = {draw.below(octets * 8 + 1), array.get()};
        ASN1CBitStr in_record(buffer, record);
        ASN1CBitStr own(buffer, draw.integer() % 1000);
        for (int step = 0; step < 60; ++step) {
            for (ASN1CBitStr* const bits : {&in_array, &in_record, &own}) {
                change(draw, *bits);
                look_at(draw, *bits);
            }
        }
    }
}

TEST_P(Sequence, OfChangesToMemoryBuffers) {
    ASN1BEREncodeBuffer buffer;
    const std::vector<std::uint8_t> octets(1000, 0xAA);
    for (int round = 0; round < 50; ++round) {
        ASN1MemBuf memory;
        rtMemBufInit(buffer.getCtxtPtr(), &memory,
                     draw.below(3) == 0 ? draw.index() | 0x80000000u : draw.below(100));
        std::uint32_t expected = 0;
        for (int step = 0; step < 30; ++step) {
            const std::uint32_t count = draw.below(1001);
            switch (draw.below(4)) {
                case 0:
                    expected += rtMemBufAppend(&memory, octets.data(), count) == RT_OK ? count : 0;
                    break;
                case 1:
                    expected += rtMemBufSet(&memory, 0xAA, count) == RT_OK ? count : 0;
                    break;
                case 2:
                    rtMemBufPreAllocate(&memory, draw.below(50) == 0 ? UINT32_MAX - draw.below(50) : count);
                    break;
                default:
                    rtMemBufReset(&memory);
                    expected = 0;
            }
            std::uint32_t length = 0;
            const std::uint8_t* const data = rtMemBufGetData(&memory, &length);
            ASSERT_EQ(length, expected);
            EXPECT_TRUE(length == 0 ||
                        std::memcmp(data, octets.data(), std::min<std::size_t>(length, 1000)) == 0);
        }
        rtMemBufFree(&memory);
    }
}

// Lists

void change(Draw& draw, ASN1CSeqOfList& list, std::array<int, 8>& elements) {
    int* const element = &elements[draw.below(8)];
    switch (draw.below(9)) {
        case 0:
            list.append(element);
            break;
        case 1:
            list.insert(draw.integer(), element);
            break;
        case 2:
            list.remove(draw.integer());
            break;
        case 3:
            list.remove(static_cast<void*>(element));
            break;
        case 4:
            list.set(draw.integer(), element);
            break;
        case 5:
            list.appendArray(elements.data(), static_cast<int>(draw.below(3)), sizeof(int));
            break;
        case 6:
            list.insertBefore(nullptr, element);
            break;
        case 7:
            (void)(list.get(draw.integer()) == list.getLast());
            break;
        default:
            if (draw.below(10) == 0) {
                list.clear();
            }
    }
}

TEST_P(Sequence, OfChangesToListsAndTheirIterators) {
    ASN1BEREncodeBuffer buffer;
    std::array<int, 8> elements{};
    ASN1CSeqOfList list(buffer);
    std::vector<ASN1CSeqOfListIterator> iterators;
    for (int step = 0; step < 5000; ++step) {
        if (draw.below(3) == 0) {
            change(draw, list, elements);
        }
        if (iterators.size() < 4) {
            iterators.push_back(draw.below(2) == 0 ? list.iterator() : list.iteratorFromLast());
            iterators.push_back(list.iteratorFrom(&elements[draw.below(8)]));
        }
        // Those of the list as it was before refuse everything.
        ASN1CSeqOfListIterator& position = iterators[draw.below(static_cast<unsigned>(iterators.size()))];
        switch (draw.below(6)) {
            case 0:
                position.remove();
                break;
            case 1:
                position.insert(&elements[draw.below(8)]);
                break;
            case 2:
                position.set(&elements[draw.below(8)]);
                break;
            case 3:
                position.prev();
                break;
            case 4:
                position.next();
                break;
            default:
                std::swap(position, iterators.back());
                iterators.pop_back();
        }
        std::array<void*, 4> some{};
        list.toArray(some.data(), sizeof(int), draw.integer() % 3);
        int count = 0;
        for (ASN1CSeqOfListIterator each = list.iterator(); each.next() != nullptr;) {
            ++count;
        }
        ASSERT_EQ(count, list.size());
    }
}

// Time stamps

/// Octets that an object is asked to read: its own kind, other kinds, and spoilt ones.
CBlob octets_to_read(Draw& draw, const std::vector<CBlob>& messages) {
    CBlob octets = messages[draw.below(static_cast<unsigned>(messages.size()))];
    if (draw.below(3) == 0 && octets.cbData() != 0) {
        octets.pbData()[draw.below(static_cast<unsigned>(octets.cbData()))] ^=
            static_cast<unsigned char>(1 + draw.below(255));
    }
    if (draw.below(6) == 0) {
        octets.resize_to(draw.below(static_cast<unsigned>(octets.cbData()) + 1));
    }
    return octets;
}

HCRYPTPROV stale_provider() {
    const TestKey key("tsa_p256");
    return key.provider();
}

class TimeStampSequence : public Sequence {
  protected:
    const std::vector<CBlob> messages{full_request().encode(),
                                      signed_token().encode(),
                                      full_response().encode(),
                                      authenticode_request().encode(),
                                      signed_stamp().encode(),
                                      certificate("tsa_p256"),
                                      CBlob(),
                                      blob("30 80 00 00")};
    const TestKey key{"tsa_p256"};
    const HCRYPTPROV stale = stale_provider();

    HCRYPTPROV provider() { return draw.below(3) == 0 ? stale : key.provider(); }
    CBlob some_certificate() {
        return draw.below(4) == 0 ? octets_to_read(draw, messages) : certificate("tsa_p256");
    }
    CAlgorithmIdentifierEx algorithm() {
        return CAlgorithmIdentifierEx(draw.below(4) == 0 ? "1.2.3" : kSha256Text);
    }

    /// Runs a step that may fail in the way of its layer.
    template <class Step>
    void attempt(Step&& step) {
        try {
            step();
        } catch (const CAtlException& failure) {
            EXPECT_NE(static_cast<HRESULT>(failure), S_OK);
        } catch (const std::bad_alloc&) {
            // Intended: a response that cannot be encoded.
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Seeds, TimeStampSequence, testing::Range(1u, 9u));

TEST_P(TimeStampSequence, OfCallsOnTokensAndResponses) {
    CToken tokens[] = {signed_token(), small_token(), CToken()};
    CResponse responses[] = {full_response(), CResponse()};
    for (int step = 0; step < 150; ++step) {
        CToken& token = tokens[draw.below(3)];
        CToken& other = tokens[draw.below(3)];
        CResponse& response = responses[draw.below(2)];
        attempt([&] {
            switch (draw.below(15)) {
                case 0:
                    token.sign(provider(), AT_SIGNATURE, some_certificate(), algorithm());
                    break;
                case 1:
                    token.decode(octets_to_read(draw, messages));
                    break;
                case 2:
                    token.decode(token.get_hashedMessage());
                    break;
                case 3:
                    token = other;
                    break;
                case 4:
                    token = CToken(other);
                    break;
                case 5:
                    (void)token.verify(some_certificate());
                    break;
                case 6:
                    (void)token.encode();
                    break;
                case 7:
                    token.put_certificates(draw.below(2) == 0 ? nullptr : other.get_certificates());
                    break;
                case 8:
                    token.put_signedAttributes(draw.below(2) == 0 ? nullptr : other.get_unsignedAttributes());
                    break;
                case 9:
                    token.put_nonce(draw.below(2) == 0 ? nullptr : &other.get_serialNumber());
                    break;
                case 10:
                    response.put_timeStampToken(draw.below(4) == 0 ? nullptr : &token);
                    break;
                case 11:
                    response.decode(octets_to_read(draw, messages));
                    break;
                case 12:
                    if (response.get_timeStampToken() != nullptr) {
                        token = *response.get_timeStampToken();
                    }
                    break;
                case 13:
                    responses[0] = responses[draw.below(2)];
                    break;
                default:
                    (void)response.encode();
            }
        });
    }
    for (CToken& token : tokens) {
        token.decode(messages[1]);
        EXPECT_TRUE(token.verify(certificate("tsa_p256")));
    }
    for (CResponse& response : responses) {
        response.decode(messages[2]);
        EXPECT_EQ(response.encode(), messages[2]);
    }
}

TEST_P(TimeStampSequence, OfCallsOnStampsAndTheirRequests) {
    CMSStamp stamps[] = {signed_stamp(), small_stamp(), CMSStamp()};
    CMSRequest requests[] = {authenticode_request(), CMSRequest()};
    for (int step = 0; step < 150; ++step) {
        CMSStamp& stamp = stamps[draw.below(3)];
        CMSStamp& other = stamps[draw.below(3)];
        CMSRequest& request = requests[draw.below(2)];
        attempt([&] {
            switch (draw.below(13)) {
                case 0:
                    stamp.sign(provider(), AT_SIGNATURE, some_certificate(), algorithm());
                    break;
                case 1:
                    stamp.decode(octets_to_read(draw, messages));
                    break;
                case 2:
                    stamp.decode(stamp.get_content());
                    break;
                case 3:
                    stamp = other;
                    break;
                case 4:
                    stamp = CMSStamp(other);
                    break;
                case 5:
                    (void)stamp.verify(some_certificate());
                    break;
                case 6:
                    (void)stamp.encode();
                    break;
                case 7:
                    stamp.put_content(draw.below(2) == 0 ? request.get_contentInfo().get_content()
                                                         : other.get_content());
                    break;
                case 8:
                    stamp.put_certificates(draw.below(2) == 0 ? nullptr : other.get_certificates());
                    break;
                case 9:
                    (void)stamp.get_signerInfo();
                    break;
                case 10:
                    request.decode(octets_to_read(draw, messages));
                    break;
                case 11:
                    request.put_contentInfo(CContentInfo("1.2.3", stamp.get_content()));
                    break;
                default:
                    (void)requests[draw.below(2)].encode();
            }
        });
    }
    for (CMSStamp& stamp : stamps) {
        stamp.decode(messages[4]);
        EXPECT_TRUE(stamp.verify(certificate("tsa_p256")));
    }
    for (CMSRequest& request : requests) {
        request.decode(messages[3]);
        EXPECT_EQ(request.encode(), messages[3]);
    }
}

}  // namespace
}  // namespace Quillmark::test
