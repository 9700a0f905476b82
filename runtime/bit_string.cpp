#include "runtime/bit_string.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "runtime/bits.h"

namespace {

// How much more than needed is taken, so that setting bits one by one does not copy each time.
constexpr uint32_t kSpareUnits = 1024;

// Octet `unit` of a string, the bits past its end being 0.
uint8_t masked_octet(const uint8_t* octets, uint32_t bitCount, uint32_t unit) {
    const uint64_t end = (uint64_t{unit} + 1) * 8;
    const uint8_t octet = octets[unit];
    return end <= bitCount ? octet : static_cast<uint8_t>(octet & 0xFF << (end - bitCount));
}

uint32_t units_of(uint32_t bitCount) {
    return bitCount / 8 + (bitCount % 8 != 0 ? 1 : 0);
}

// Position of the last set bit plus 1.
uint32_t set_length(const uint8_t* octets, uint32_t bitCount) {
    for (uint32_t unit = units_of(bitCount); unit-- != 0;) {
        if (const uint8_t octet = masked_octet(octets, bitCount, unit); octet != 0) {
            return unit * 8 + static_cast<uint32_t>(rtOctetBitLen(octet));
        }
    }
    return 0;
}

// Calls `change` with each octet that a range touches and the mask of its bits there.
template <typename Change>
void for_each_octet(uint8_t* octets, uint32_t first, uint32_t last, Change change) {
    for (uint32_t unit = first / 8; unit <= last / 8; ++unit) {
        unsigned mask = 0xFF;
        if (unit == first / 8) {
            mask &= 0xFFu >> (first % 8);
        }
        if (unit == last / 8) {
            mask &= 0xFFu << (7 - last % 8);
        }
        change(octets[unit], static_cast<uint8_t>(mask));
    }
}

}  // namespace

ASN1CBitStr::ASN1CBitStr(ASN1MessageBufferIF& buffer, uint8_t* bits, uint32_t& bitCount, int limit)
    : ASN1CType(buffer) {
    adopt_array(bits, bitCount, limit);
}

ASN1CBitStr::ASN1CBitStr(ASN1Context& context, uint8_t* bits, uint32_t& bitCount, int limit)
    : ASN1CType(context) {
    adopt_array(bits, bitCount, limit);
}

ASN1CBitStr::ASN1CBitStr(ASN1MessageBufferIF& buffer, ASN1TDynBitStr& callersRecord) : ASN1CType(buffer) {
    adopt_record(callersRecord);
}

ASN1CBitStr::ASN1CBitStr(ASN1Context& context, ASN1TDynBitStr& callersRecord) : ASN1CType(context) {
    adopt_record(callersRecord);
}

ASN1CBitStr::ASN1CBitStr(ASN1MessageBufferIF& buffer, int bitRoom) : ASN1CType(buffer) {
    start_empty(bitRoom);
}

ASN1CBitStr::ASN1CBitStr(ASN1Context& context, int bitRoom) : ASN1CType(context) {
    start_empty(bitRoom);
}

ASN1CBitStr::~ASN1CBitStr() {
    // What hangs on a caller's record lives on with the record.
    if (dynamicAlloc != 0 && bytes == &ownBytes) {
        rtMemHeapFreePtr(&mpContext->typeHeap, ownBytes);
    }
}

void ASN1CBitStr::adopt_array(uint8_t* bits, uint32_t& bitCount, int limit) {
    ownBytes = bits;
    ownNumbits = 0;
    bytes = &ownBytes;
    numbits = &bitCount;
    maxNumBits = std::max(limit, -1);
    dynamicAlloc = 0;
    const uint32_t room = bits == nullptr ? 0 : units_of(limit < 0 ? bitCount : static_cast<uint32_t>(limit));
    unitsAllocated = static_cast<int32_t>(room);
    bitCount = static_cast<uint32_t>(std::min<uint64_t>(bitCount, uint64_t{room} * 8));
    if (const uint32_t end = units(); end != 0) {
        bits[end - 1] = octet_at(end - 1);
    }
    std::fill(bits + units(), bits + room, uint8_t{0});
    drop_zero_units();
}

void ASN1CBitStr::adopt_record(ASN1TDynBitStr& callersRecord) {
    if (callersRecord.data == nullptr) {
        callersRecord.numbits = 0;
    }
    ownBytes = nullptr;
    ownNumbits = 0;
    bytes = &callersRecord.data;
    numbits = &callersRecord.numbits;
    maxNumBits = -1;
    unitsAllocated = 0;  // the octets may be constant or lie in a message
    dynamicAlloc = 0;
    drop_zero_units();
}

void ASN1CBitStr::start_empty(int bitRoom) {
    ownBytes = nullptr;
    ownNumbits = 0;
    bytes = &ownBytes;
    numbits = &ownNumbits;
    maxNumBits = -1;
    unitsUsed = 0;
    unitsAllocated = 0;
    dynamicAlloc = 0;
    if (bitRoom > 0) {
        // Without the room now, the first change asks again.
        checkCapacity(units_of(static_cast<uint32_t>(bitRoom)));
    }
}

int ASN1CBitStr::record(int status) const {
    return rtErrSetData(&mpContext->errInfo, status);
}

uint8_t ASN1CBitStr::octet_at(uint32_t unit) const {
    return masked_octet(*bytes, *numbits, unit);
}

void ASN1CBitStr::drop_zero_units() {
    unitsUsed = static_cast<int32_t>(units_of(set_length(*bytes, *numbits)));
}

// Named bits: zero bits at the end are no part of the value (X.680 22.7).
void ASN1CBitStr::recalculate() {
    *numbits = set_length(*bytes, *numbits);
    unitsUsed = static_cast<int32_t>(units());
}

int ASN1CBitStr::check_range(uint32_t first, uint32_t last) const {
    if (first > last) {
        return record(RT_E_RANGE);
    }
    // Counts are handed out as int.
    if (last >= INT32_MAX || (maxNumBits >= 0 && last > static_cast<uint32_t>(maxNumBits))) {
        return record(RT_E_OUTOFBND);
    }
    return RT_OK;
}

int ASN1CBitStr::checkCapacity(uint32_t wantedUnits) {
    const uint32_t allocated = static_cast<uint32_t>(unitsAllocated);
    if (wantedUnits <= allocated) {
        return RT_OK;
    }
    if (maxNumBits >= 0) {
        return record(RT_E_INVLEN);
    }
    const uint32_t present = units();
    const uint32_t room = std::max(wantedUnits, present) + kSpareUnits;
    void* block = rtMemHeapAllocZ(&mpContext->typeHeap, room);
    if (block == nullptr) {
        return record(RT_E_NOMEM);
    }
    auto* fresh = static_cast<uint8_t*>(block);
    for (uint32_t unit = 0; unit < present; ++unit) {
        fresh[unit] = octet_at(unit);
    }
    if (dynamicAlloc != 0) {
        rtMemHeapFreePtr(&mpContext->typeHeap, *bytes);
    } else if (bytes == &ownBytes && numbits != &ownNumbits) {
        // The caller's array keeps the count that describes it.
        ownNumbits = *numbits;
        numbits = &ownNumbits;
    }
    *bytes = fresh;
    unitsAllocated = static_cast<int32_t>(room);
    dynamicAlloc = 1;
    return RT_OK;
}

int ASN1CBitStr::set(uint32_t index) {
    return set(index, index);
}

int ASN1CBitStr::set(uint32_t first, uint32_t last) {
    if (const int status = check_range(first, last); status != RT_OK) {
        return status;
    }
    if (const int status = checkCapacity(last / 8 + 1); status != RT_OK) {
        return status;
    }
    for_each_octet(octets(), first, last, [](uint8_t& octet, uint8_t mask) { octet |= mask; });
    *numbits = std::max(*numbits, last + 1);
    unitsUsed = std::max(unitsUsed, static_cast<int32_t>(last / 8 + 1));
    return RT_OK;
}

int ASN1CBitStr::clear(uint32_t index) {
    return clear(index, index);
}

int ASN1CBitStr::clear(uint32_t first, uint32_t last) {
    if (const int status = check_range(first, last); status != RT_OK) {
        return status;
    }
    const uint32_t used = static_cast<uint32_t>(unitsUsed);
    if (first / 8 >= used) {
        return RT_OK;
    }
    if (const int status = make_writable(); status != RT_OK) {
        return status;
    }
    for_each_octet(octets(), first, std::min(last, used * 8 - 1),
                   [](uint8_t& octet, uint8_t mask) { octet &= static_cast<uint8_t>(~mask); });
    recalculate();
    return RT_OK;
}

void ASN1CBitStr::clear() {
    if (unitsAllocated != 0) {
        std::fill_n(octets(), units(), uint8_t{0});
    }
    *numbits = 0;
    unitsUsed = 0;
}

int ASN1CBitStr::invert(uint32_t index) {
    return invert(index, index);
}

int ASN1CBitStr::invert(uint32_t first, uint32_t last) {
    if (const int status = check_range(first, last); status != RT_OK) {
        return status;
    }
    if (const int status = checkCapacity(std::max(last / 8 + 1, units())); status != RT_OK) {
        return status;
    }
    unsigned cleared = 0;
    for_each_octet(octets(), first, last, [&cleared](uint8_t& octet, uint8_t mask) {
        cleared |= octet & mask;
        octet ^= mask;
    });
    *numbits = std::max(*numbits, last + 1);
    if (cleared != 0) {
        recalculate();
    } else {
        drop_zero_units();
    }
    return RT_OK;
}

bool ASN1CBitStr::get(uint32_t index) const {
    return rtTestBit(*bytes, *numbits, index) != 0;
}

int ASN1CBitStr::get(uint32_t first, uint32_t last, uint8_t* out, uint32_t size) const {
    if (first > last || last >= *numbits) {
        return record(RT_E_RANGE);
    }
    const uint32_t count = last - first + 1;
    if (units_of(count) > size) {
        return record(RT_E_STROVFL);
    }
    std::fill_n(out, units_of(count), uint8_t{0});
    for (uint32_t i = 0; i < count; ++i) {
        if (get(first + i)) {
            rtSetBit(out, count, i);
        }
    }
    return RT_OK;
}

int ASN1CBitStr::length() const {
    return static_cast<int>(set_length(*bytes, *numbits));
}

int ASN1CBitStr::size() const {
    return static_cast<int>(*numbits);
}

int ASN1CBitStr::cardinality() const {
    int count = 0;
    for (uint32_t unit = 0; unit < static_cast<uint32_t>(unitsUsed); ++unit) {
        count += std::popcount(octet_at(unit));
    }
    return count;
}

const uint8_t* ASN1CBitStr::getBytes() const {
    return *bytes;
}

// Both strings are taken to the length of the longer; `operation` gets an octet of each.
template <typename Operation>
int ASN1CBitStr::combine(const uint8_t* bits, uint32_t bitCount, Operation operation) {
    if (bits == nullptr) {
        bitCount = 0;
    }
    const uint32_t otherLength = set_length(bits, bitCount);
    // Only an operation that keeps bits of the other string alone needs room for them.
    const bool grows = operation(uint8_t{0}, uint8_t{0xFF}) != 0 && otherLength > *numbits;
    if (grows) {
        if (const int status = check_range(0, otherLength - 1); status != RT_OK) {
            return status;
        }
    }
    const uint32_t total = grows ? otherLength : *numbits;
    if (const int status = checkCapacity(units_of(total)); status != RT_OK) {
        return status;
    }
    const uint32_t otherUnits = units_of(otherLength);
    for (uint32_t unit = 0; unit < units_of(total); ++unit) {
        const uint8_t other = unit < otherUnits ? masked_octet(bits, bitCount, unit) : uint8_t{0};
        octets()[unit] = static_cast<uint8_t>(operation(octets()[unit], other));
    }
    *numbits = total;
    recalculate();
    return RT_OK;
}

int ASN1CBitStr::doAnd(const uint8_t* bits, uint32_t bitCount) {
    return combine(bits, bitCount, [](uint8_t own, uint8_t other) { return own & other; });
}

int ASN1CBitStr::doOr(const uint8_t* bits, uint32_t bitCount) {
    return combine(bits, bitCount, [](uint8_t own, uint8_t other) { return own | other; });
}

int ASN1CBitStr::doXor(const uint8_t* bits, uint32_t bitCount) {
    return combine(bits, bitCount, [](uint8_t own, uint8_t other) { return own ^ other; });
}

int ASN1CBitStr::doAndNot(const uint8_t* bits, uint32_t bitCount) {
    return combine(bits, bitCount, [](uint8_t own, uint8_t other) { return own & ~other; });
}

int ASN1CBitStr::shiftLeft(uint32_t distance) {
    const uint32_t used = static_cast<uint32_t>(unitsUsed);
    const uint32_t whole = distance / 8;
    if (distance == 0 || used == 0) {
        return RT_OK;
    }
    if (const int status = make_writable(); status != RT_OK) {
        return status;
    }
    if (whole >= used) {
        clear();
        return RT_OK;
    }
    uint8_t* data = octets();
    std::copy(data + whole, data + used, data);
    std::fill_n(data + used - whole, whole, uint8_t{0});
    if (const uint32_t rest = distance % 8; rest != 0) {
        for (uint32_t unit = 0; unit < used; ++unit) {
            const unsigned following = unit + 1 < used ? data[unit + 1] : 0u;
            data[unit] = static_cast<uint8_t>(data[unit] << rest | following >> (8 - rest));
        }
    }
    recalculate();
    return RT_OK;
}

int ASN1CBitStr::shiftRight(uint32_t distance) {
    const uint32_t used = static_cast<uint32_t>(unitsUsed);
    if (distance == 0 || used == 0) {
        return RT_OK;
    }
    const uint32_t oldLength = static_cast<uint32_t>(length());
    const uint32_t last = distance > INT32_MAX - oldLength ? INT32_MAX : oldLength + distance - 1;
    if (const int status = check_range(0, last); status != RT_OK) {
        return status;
    }
    const uint32_t total = last / 8 + 1;
    if (const int status = checkCapacity(std::max(total, units())); status != RT_OK) {
        return status;
    }
    uint8_t* data = octets();
    const uint32_t whole = distance / 8;
    std::copy_backward(data, data + used, data + used + whole);
    std::fill_n(data, whole, uint8_t{0});
    if (const uint32_t rest = distance % 8; rest != 0) {
        for (uint32_t unit = total; unit-- != whole;) {
            const unsigned preceding = unit != whole ? data[unit - 1] : 0u;
            data[unit] = static_cast<uint8_t>(data[unit] >> rest | preceding << (8 - rest));
        }
    }
    *numbits = std::max(*numbits, last + 1);
    recalculate();
    return RT_OK;
}

int ASN1CBitStr::unusedBitsInLastUnit() const {
    return static_cast<int>((8 - *numbits % 8) % 8);
}

ASN1CBitStr::operator ASN1TDynBitStr() const {
    return {*numbits, *bytes};
}

ASN1CBitStr::operator ASN1TDynBitStr*() const {
    auto* copy = static_cast<ASN1TDynBitStr*>(rtMemHeapAlloc(&mpContext->typeHeap, sizeof(ASN1TDynBitStr)));
    if (copy == nullptr) {
        record(RT_E_NOMEM);
        return nullptr;
    }
    *copy = *this;
    return copy;
}
