#include "tests/support/codec_heap.h"

#include <cstdlib>
#include <limits>

#include "runtime/context.h"

namespace Quillmark::test {

namespace {

struct State {
    std::size_t live = 0;
    std::size_t allocations = 0;
    std::size_t before_failure = std::numeric_limits<std::size_t>::max();
    bool failed = false;
};

State state;

void* counting_malloc(void* /*memContext*/, std::size_t size) {
    ++state.allocations;
    if (state.before_failure-- == 0) {
        state.failed = true;
        return nullptr;
    }
    ++state.live;
    return std::malloc(size);
}

void counting_free(void* /*memContext*/, void* block) {
    if (block != nullptr) {
        --state.live;
    }
    std::free(block);
}

}  // namespace

CodecHeap::CodecHeap() {
    state = State{};
    g_malloc_func = counting_malloc;
    g_free_func = counting_free;
}

CodecHeap::~CodecHeap() {
    g_malloc_func = rtDefaultMalloc;
    g_free_func = rtDefaultFree;
}

void CodecHeap::fail_after(std::size_t count) {
    state.before_failure = count;
    state.failed = false;
}

bool CodecHeap::failed() const {
    return state.failed;
}

std::size_t CodecHeap::live_blocks() const {
    return state.live;
}

std::size_t CodecHeap::allocations() const {
    return state.allocations;
}

}  // namespace Quillmark::test
