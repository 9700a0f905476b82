#pragma once

// The dotted text of an identifier without a string object, for the many places that only hand it on.

#include <cstddef>

#include "runtime/object_id.h"

namespace Quillmark::detail {

/// The text lives as long as this object.
class OidText {
  public:
    explicit OidText(const ASN1OBJID& oid);

    const char* c_str() const { return text_; }
    /// With the terminator.
    std::size_t size() const { return size_; }

  private:
    // An arc of 32 bits has at most ten digits; a full stop or the terminator follows each.
    static constexpr std::size_t kRoom = ASN1_K_MAXSUBIDS * 11 + 1;

    char text_[kRoom];
    std::size_t size_;
};

}  // namespace Quillmark::detail
