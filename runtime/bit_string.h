#pragma once

// A BIT STRING (X.690 8.6) as a set of numbered bits: bit 0 is the top bit of the first octet. Base of the
// control classes of BIT STRING types with named bits, whose trailing zero bits are not encoded
// (X.690 11.2.2): every operation that clears bits also drops them from the count.
//
//     ASN1CBitStr reasons(buffer, record.data, record.numbits, 16);
//     reasons.clear();
//     reasons.set(1);

#include <cstdint>

#include "runtime/message_buffer.h"
#include "runtime/value_types.h"

/// Works on a caller's bits or on its own. Ranges include `last`. Operations return 0 or a status that they
/// record: `RT_E_OUTOFBND` for an index above the limit, `RT_E_INVLEN` when the caller's array has no room,
/// `RT_E_RANGE` for `first` above `last`, `RT_E_NOMEM`. A failed operation changes nothing.
class QUILLMARK_API ASN1CBitStr : public ASN1CType {
  public:
    /// Over the array of a record, limited to `limit` bits. Bits of the array past `bitCount` are cleared.
    /// With a limit of -1 growth moves the bits to storage of this object, and the record stays behind.
    ASN1CBitStr(ASN1MessageBufferIF& buffer, uint8_t* bits, uint32_t& bitCount, int limit);
    ASN1CBitStr(ASN1Context& context, uint8_t* bits, uint32_t& bitCount, int limit);

    /// Over a record whose octets are replaced, on the context's heap, before they are changed first.
    ASN1CBitStr(ASN1MessageBufferIF& buffer, ASN1TDynBitStr& callersRecord);
    ASN1CBitStr(ASN1Context& context, ASN1TDynBitStr& callersRecord);

    /// An empty string with room for `bitRoom` bits, growing without limit.
    explicit ASN1CBitStr(ASN1MessageBufferIF& buffer, int bitRoom = 0);
    explicit ASN1CBitStr(ASN1Context& context, int bitRoom = 0);

    ~ASN1CBitStr() override;
    ASN1CBitStr(const ASN1CBitStr&) = delete;
    ASN1CBitStr& operator=(const ASN1CBitStr&) = delete;

    /// Set, clear or turn over one bit, a range, or clear all.
    int set(uint32_t index);
    int set(uint32_t first, uint32_t last);
    int clear(uint32_t index);
    int clear(uint32_t first, uint32_t last);
    void clear();
    int invert(uint32_t index);
    int invert(uint32_t first, uint32_t last);
    /// False for a bit past the end.
    bool get(uint32_t index) const;
    /// Copies a range into the first bits of `out`, `size` octets, and clears the rest of its last octet.
    /// Returns 0, `RT_E_RANGE`, also for a range past the end, or `RT_E_STROVFL`.
    int get(uint32_t first, uint32_t last, uint8_t* out, uint32_t size) const;

    /// Position of the last bit that is set, plus 1.
    int length() const;
    /// Bits of the string, set or not.
    int size() const;
    int cardinality() const;
    /// Lent: valid until the next change.
    const uint8_t* getBytes() const;

    /// Combine with `bitCount` bits of the caller's; bits past the shorter string count as 0.
    int doAnd(const uint8_t* bits, uint32_t bitCount);
    int doOr(const uint8_t* bits, uint32_t bitCount);
    int doXor(const uint8_t* bits, uint32_t bitCount);
    int doAndNot(const uint8_t* bits, uint32_t bitCount);

    /// Move every bit towards bit 0, those that would pass it get lost.
    int shiftLeft(uint32_t distance);
    /// Move every bit away from bit 0.
    int shiftRight(uint32_t distance);

    /// Bits of the last octet behind the end of the string, 0 to 7.
    int unusedBitsInLastUnit() const;

    /// The string as a record whose `data` is lent as by `getBytes`.
    operator ASN1TDynBitStr() const;
    /// The same in a record on the context's heap; null when memory fails.
    operator ASN1TDynBitStr*() const;

  private:
    void adopt_array(uint8_t* bits, uint32_t& bitCount, int limit);
    void adopt_record(ASN1TDynBitStr& callersRecord);
    void start_empty(int bitRoom);

    uint32_t units() const { return *numbits / 8 + (*numbits % 8 != 0 ? 1 : 0); }
    uint8_t* octets() { return const_cast<uint8_t*>(*bytes); }
    uint8_t octet_at(uint32_t unit) const;
    void drop_zero_units();
    void recalculate();
    int check_range(uint32_t first, uint32_t last) const;
    int checkCapacity(uint32_t wantedUnits);
    int make_writable() { return checkCapacity(units()); }
    template <typename Operation>
    int combine(const uint8_t* bits, uint32_t bitCount, Operation operation);
    int record(int status) const;

    const uint8_t** bytes;   ///< where the pointer to the octets is
    int32_t maxNumBits;      ///< -1 for no limit
    uint32_t* numbits;       ///< where the bit count is
    int32_t unitsUsed;       ///< octets up to the last one that is not 0
    int32_t unitsAllocated;  ///< octets that may be written, bits past the count being 0
    uint8_t dynamicAlloc;    ///< the octets were allocated by this object
    const uint8_t* ownBytes;
    uint32_t ownNumbits;
};
