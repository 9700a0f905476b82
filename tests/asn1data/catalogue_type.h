#pragma once

// Every type of the catalogue by pointers to what it can do, so that a law of all types is written, and
// compiled, once.

#include <memory>
#include <span>

#include "runtime/context.h"
#include "runtime/message_buffer.h"

namespace Quillmark::test {

/// The family of one type. A record is passed as `void*`; that of a NULL is null.
struct CatalogueType {
    const char* module;
    const char* name;
    void* (*make)();
    void (*destroy)(void* record);
    ASN1CType* (*control)(ASN1MessageBufferIF& buffer, void* record);  // owned by the caller
    void* (*get_copy)(ASN1CType& control, void* target);
    void* (*new_copy)(ASN1CType& control);
    void (*copy)(ASN1CTXT* context, void* source, void* target);
    void (*free)(ASN1CTXT* context, void* record);
};

/// In the order of the catalogue.
std::span<const CatalogueType> catalogue_types();

/// A record with the values that its constructor gives it.
class AnyRecord {
  public:
    explicit AnyRecord(const CatalogueType& type) : AnyRecord(type, type.make()) {}
    AnyRecord(const CatalogueType& type, void* record) : type_(type), record_(record) {}
    ~AnyRecord() { type_.destroy(record_); }
    AnyRecord(const AnyRecord&) = delete;
    AnyRecord& operator=(const AnyRecord&) = delete;

    void* get() const { return record_; }

  private:
    const CatalogueType& type_;
    void* record_;
};

inline std::unique_ptr<ASN1CType> control_of(const CatalogueType& type, ASN1MessageBufferIF& buffer,
                                             void* record) {
    return std::unique_ptr<ASN1CType>(type.control(buffer, record));
}

}  // namespace Quillmark::test
