#pragma once

// One bound on every recursion that the input can steer: types that contain themselves, open types that
// carry them, and constructed strings count their levels in the context.

#include "runtime/context.h"

namespace Quillmark::detail {

/// Real messages nest about ten levels; this many fit in 256 KiB of stack.
inline constexpr uint32_t kMaxNesting = 64;

/// One level of nesting, entered for the life of the guard.
class NestingLevel {
  public:
    explicit NestingLevel(ASN1CTXT* ctxt) : ctxt_(ctxt) { ++ctxt_->nestingDepth; }
    ~NestingLevel() { --ctxt_->nestingDepth; }
    NestingLevel(const NestingLevel&) = delete;
    NestingLevel& operator=(const NestingLevel&) = delete;

    /// True when this level lies deeper than is allowed; the caller then fails with `RT_E_NOTSUPP`.
    bool too_deep() const { return ctxt_->nestingDepth > kMaxNesting; }

  private:
    ASN1CTXT* ctxt_;
};

}  // namespace Quillmark::detail
