#pragma once

// What the ASN.1 modules say about every type, as a table that typegen writes, so that laws of all types are
// written once and read the notation and not the code that was made of it.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <optional>
#include <span>

#include "runtime/context.h"

namespace Quillmark::test {

struct TypeDescription;

/// What a type is, and how a record holds it.
enum class Kind : std::uint8_t {
    kBoolean,           // uint8_t
    kInteger,           // int32_t
    kUnsigned,          // uint32_t
    kUnsigned16,        // uint16_t
    kBigInteger,        // text, written with a sign
    kBigMagnitude,      // text, written without
    kEnumerated,        // uint32_t
    kNull,              // nothing
    kObjectIdentifier,  // ASN1TObjId
    kText,              // const char*
    kText16,            // ASN1_16BITCHARSTRING
    kText32,            // ASN1_32BITCHARSTRING
    kOctets,            // ASN1TDynOctStr
    kBits,              // ASN1TDynBitStr
    kSizedOctets,       // count and array
    kSizedBits,         // count and array
    kOpen,              // ASN1TOpenType
    kCarried,           // Asn1TObject
    kSequence,          // record
    kSet,               // record
    kChoice,            // record with selector and union
    kList,              // record with a linked list
    kArray              // record with count and array
};

inline constexpr std::int64_t kNoBound = std::numeric_limits<std::int64_t>::max();

/// The values or sizes that a constraint allows.
struct Bounds {
    std::int64_t low;
    std::int64_t high;
};

/// An information object: what an identifier says about the type of an open element.
struct ObjectDescription {
    const char* name;
    std::span<const std::uint32_t> arcs;
    const TypeDescription* carried;  // null for none
};

struct ElementDescription {
    const char* name;
    const TypeDescription* type;
    std::optional<std::uint32_t> tag{};  // [n]
    bool explicit_tag = false;
    std::size_t offset = 0;
    bool indirect = false;  // the record has a pointer to the value
    bool may_be_absent = false;
    std::optional<std::int64_t> default_number{};  // of such a DEFAULT
    bool kept = false;                             // absent, it leaves the field as it was
    bool freed = true;
    int identifier = -1;                           // the element that tells the type of this open one
    std::span<const ObjectDescription> objects{};  // what identifiers tell
    std::size_t carried_offset = 0;                // of the Asn1TObject beside an OCTET STRING
    int presence_bit = -1;                         // none with a DEFAULT that the field itself shows
};

/// The functions of a type with their records as `void*`.
struct TypeFunctions {
    int (*encode)(ASN1CTXT* ctxt, void* record, ASN1TagType tagging);
    int (*decode)(ASN1CTXT* ctxt, void* record, ASN1TagType tagging, int length);
    void (*free)(ASN1CTXT* ctxt, void* record);
    void (*copy)(ASN1CTXT* ctxt, void* source, void* target);
};

struct TypeDescription {
    const char* name = "";  // "" for a type that is written in place
    const char* module = "";
    int application = -1;  // [APPLICATION n] around the type
    Kind kind;
    std::uint32_t universal = 0;  // tag number; 0 for a CHOICE and for any type
    bool extensible = false;
    bool sorted = false;                       // SET OF
    const TypeDescription* element = nullptr;  // of a list
    std::optional<Bounds> bounds{};
    std::uint32_t room = 0;  // octets of a sized string
    std::size_t head = 0;    // presence bits, selector or count
    std::size_t body = 0;    // array, or the list behind an extension marker
    std::span<const ElementDescription> elements{};
    std::size_t size = 0;  // of the C++ type
    void (*construct)(void* place) = nullptr;
    TypeFunctions functions{};
};

template <typename Value>
void construct(void* place) {
    new (place) Value();
}

template <typename Record, int (*Encode)(ASN1CTXT*, Record*, ASN1TagType),
          int (*Decode)(ASN1CTXT*, Record*, ASN1TagType, int), void (*Free)(ASN1CTXT*, Record*),
          void (*Copy)(ASN1CTXT*, Record*, Record*)>
constexpr TypeFunctions functions_of() {
    return {
        .encode = [](ASN1CTXT* ctxt, void* record,
                     ASN1TagType tagging) { return Encode(ctxt, static_cast<Record*>(record), tagging); },
        .decode = [](ASN1CTXT* ctxt, void* record, ASN1TagType tagging,
                     int length) { return Decode(ctxt, static_cast<Record*>(record), tagging, length); },
        .free = [](ASN1CTXT* ctxt, void* record) { Free(ctxt, static_cast<Record*>(record)); },
        .copy = [](ASN1CTXT* ctxt, void* source,
                   void* target) { Copy(ctxt, static_cast<Record*>(source), static_cast<Record*>(target)); },
    };
}

/// In the order of the catalogue.
std::span<const TypeDescription* const> described_types();

}  // namespace Quillmark::test
