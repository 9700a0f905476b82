#pragma once

// Records of described types: filled from values and read back to values, field by field, through what the
// description says about where and how each is held.

#include "runtime/context.h"
#include "tests/asn1data/described_value.h"

namespace Quillmark::test {

/// Puts a value into the fresh record at `place`; what it points at comes from the heap of `ctxt`. SET OF is
/// filled from its end, so that only a sorting encoder writes it in order. An open element with a carried
/// value has only that one, and no octets.
void fill_record(ASN1CTXT* ctxt, const Value& value, void* place);

/// The value in a record.
Value read_record(const TypeDescription& type, const void* place);

/// A record of a type in its initial state.
class DescribedRecord {
  public:
    explicit DescribedRecord(const TypeDescription& type);

    void* get() { return type_.size == 0 ? nullptr : cells_.data(); }

  private:
    const TypeDescription& type_;
    std::vector<std::max_align_t> cells_;
};

}  // namespace Quillmark::test
