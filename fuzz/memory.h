#pragma once

// Counts the memory that a target uses: what comes from the codec's heap hooks and from `operator new`, both
// of which a program with this has replaced.

#include <cstddef>

namespace Quillmark::fuzz {

/// From its construction on.
class MemoryUse {
  public:
    MemoryUse();

    /// The most octets that were in use at one time.
    std::size_t peak() const;
    /// Blocks of the codec's heap that are in use.
    std::size_t codec_blocks() const;

  private:
    std::size_t in_use_before_;
};

}  // namespace Quillmark::fuzz
