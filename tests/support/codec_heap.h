#pragma once

// The heap of codec contexts under test: counts what lives on it and refuses an allocation on demand.

#include <cstddef>

namespace Quillmark::test {

/// Sits in the allocation hooks for the life of the object; there is one at a time.
class CodecHeap {
  public:
    CodecHeap();
    ~CodecHeap();
    CodecHeap(const CodecHeap&) = delete;
    CodecHeap& operator=(const CodecHeap&) = delete;

    /// Refuses the allocation that comes after `count` others, and only that one.
    void fail_after(std::size_t count);
    /// Whether that allocation was asked for.
    bool failed() const;
    std::size_t live_blocks() const;
    std::size_t allocations() const;
};

}  // namespace Quillmark::test
