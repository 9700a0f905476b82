#include <cassert>
#include <cstdlib>
#include <cstring>

#include "runtime/context.h"

// One allocation: this header and the caller's octets behind it. A block knows the pointer that points at it,
// be that the head of its heap or the block before it, so it can be unlinked whatever heap it is on.
struct rtMemHeap::Block {
    Block* next;
    Block** link;
    uint64_t size;
};

namespace {

using Block = rtMemHeap::Block;

constexpr size_t kLargestBlock = 2147483599;
constexpr uint32_t kOwnRecord = 0x10000000;

static_assert(sizeof(Block) == 24);

Block* block_of(const void* ptr) {
    return static_cast<Block*>(const_cast<void*>(ptr)) - 1;
}

void link_first(rtMemHeap* heap, Block* block) {
    block->next = heap->head;
    block->link = &heap->head;
    if (block->next != nullptr) {
        block->next->link = &block->next;
    }
    heap->head = block;
}

void unlink(Block* block) {
    *block->link = block->next;
    if (block->next != nullptr) {
        block->next->link = block->link;
    }
}

void* allocate(rtMemHeap* heap, size_t size) {
    if (size > kLargestBlock) {
        return nullptr;
    }
    Block* block = static_cast<Block*>(g_malloc_func(heap->memContext, sizeof(Block) + size));
    if (block == nullptr) {
        return nullptr;
    }
    block->size = size;
    link_first(heap, block);
    return block + 1;
}

void free_block(rtMemHeap* heap, Block* block) {
    unlink(block);
    g_free_func(heap->memContext, block);
}

}  // namespace

extern "C" {

void* rtDefaultMalloc(void*, size_t size) {
    return QM_malloc(size);
}
void* rtDefaultRealloc(void*, void* ptr, size_t size) {
    return QM_realloc(ptr, size);
}
void rtDefaultFree(void*, void* ptr) {
    QM_free(ptr);
}

void* QM_malloc(size_t size) {
    return std::malloc(size);
}
void* QM_calloc(size_t count, size_t size) {
    return std::calloc(count, size);
}
void* QM_realloc(void* ptr, size_t size) {
    return std::realloc(ptr, size);
}
void QM_free(void* ptr) {
    std::free(ptr);
}

void* (*g_malloc_func)(void* memContext, size_t size) = rtDefaultMalloc;
void* (*g_realloc_func)(void* memContext, void* ptr, size_t size) = rtDefaultRealloc;
void (*g_free_func)(void* memContext, void* ptr) = rtDefaultFree;
constinit uint32_t g_defBlkSize = 4096;

int rtMemHeapCreate(rtMemHeap** cell, void* memContext) {
    if (cell == nullptr) {
        return RT_E_INVPARAM;
    }
    rtMemHeap* heap = static_cast<rtMemHeap*>(g_malloc_func(memContext, sizeof(rtMemHeap)));
    if (heap == nullptr) {
        return RT_E_NOMEM;
    }
    *heap = {.head = nullptr,
             .blockSize = g_defBlkSize,
             .refCount = 1,
             .heapFlags = kOwnRecord,
             .memContext = memContext};
    *cell = heap;
    return RT_OK;
}

void* rtMemHeapAlloc(rtMemHeap** cell, size_t size) {
    if (cell == nullptr || size > kLargestBlock) {
        return nullptr;
    }
    if (*cell == nullptr && rtMemHeapCreate(cell, nullptr) != RT_OK) {
        return nullptr;
    }
    return allocate(*cell, size);
}

void* rtMemHeapAllocZ(rtMemHeap** cell, size_t size) {
    void* ptr = rtMemHeapAlloc(cell, size);
    return ptr == nullptr ? nullptr : std::memset(ptr, 0, size);
}

void* rtMemHeapRealloc(rtMemHeap** cell, void* ptr, size_t size) {
    if (cell == nullptr || *cell == nullptr) {
        return nullptr;
    }
    if (ptr == nullptr) {
        return allocate(*cell, size);
    }
    Block* old = block_of(ptr);
    if (old->size >= size) {
        old->size = size;  // Intended: the room behind is forgotten, so growing back moves the block
        return ptr;
    }
    void* grown = allocate(*cell, size);
    if (grown == nullptr) {
        return nullptr;
    }
    std::memcpy(grown, ptr, old->size);
    free_block(*cell, old);
    return grown;
}

void rtMemHeapFreePtr(rtMemHeap** cell, const void* ptr) {
    if (cell == nullptr || *cell == nullptr || ptr == nullptr) {
        return;
    }
    free_block(*cell, block_of(ptr));
}

int rtMemHeapCheckPtr(rtMemHeap**, const void*) {
    return 1;
}

void rtMemHeapMarkSaved(void) {}

void rtMemHeapAddRef(rtMemHeap** cell) {
    if (cell != nullptr && *cell != nullptr) {
        ++(*cell)->refCount;
    }
}

void rtMemHeapRelease(rtMemHeap** cell) {
    if (cell == nullptr || *cell == nullptr) {
        return;
    }
    rtMemHeap* heap = *cell;
    assert(heap->refCount > 0);
    if (--heap->refCount > 0) {
        return;
    }
    for (Block* block = heap->head; block != nullptr;) {
        Block* next = block->next;
        g_free_func(heap->memContext, block);
        block = next;
    }
    if ((heap->heapFlags & kOwnRecord) != 0) {
        g_free_func(heap->memContext, heap);
    }
    *cell = nullptr;
}

}  // extern "C"
