#pragma once

// The codec context: the message buffer, the heap that decoded values lie on, and the error
// record. Every codec function takes it first. A context with what hangs on it belongs to one
// thread at a time; there is no lock and no atomic in the run-time.
//
//     ASN1CTXT ctxt;
//     if (rtInitContext(&ctxt, nullptr) != RT_OK) { ... }
//     ...
//     rtFreeContext(&ctxt);   // frees every value that was decoded on it

#include <cstddef>
#include <cstdint>

#include "runtime/status.h"
#include "values/export.h"

struct ASN1CTXT;

/// Identifier octets in one word (X.690 8.1.2): class and form in bits 31 to 29, number in bits 28 to 0.
typedef uint32_t ASN1TAG;

/// How a codec treats its own universal tag and length.
enum ASN1TagType {
    ASN1IMPL = 0,  ///< the caller writes or has read them
    ASN1EXPL = 1   ///< the codec writes or reads them
};

/// Stands for the indefinite form (X.690 8.1.3.6) wherever a length is passed or returned.
inline constexpr int RT_INDEFLEN = -9999;
/// `ASN1CTXT::magic` of a live context.
inline constexpr uint32_t RT_MAGIC = 0x1AA2A34A;

/// Bits of `ASN1CTXT::flags`.
enum : uint16_t {
    RT_F_NOLENCHECK = 0x0040,  ///< lengths are not compared with the octets left
    RT_F_SAVEBUF = 0x0100,     ///< `rtFreeContext` leaves a dynamic buffer alone
    RT_F_CONSTAG = 0x0400,     ///< the last tag read was constructed
    RT_F_FASTCOPY = 0x0800,    ///< string and open type decoders point into the message
    RT_F_LASTEOC = 0x1000,     ///< with `RT_F_INDEFLEN`: end of buffer
    RT_F_INDEFLEN = 0x4000     ///< the outermost element has indefinite length
};

/// A heap: every block is one `g_malloc_func` call, linked newest first.
struct rtMemHeap {
    struct Block;
    Block* head;
    uint32_t blockSize;
    uint32_t refCount;
    uint32_t heapFlags;  ///< bit 0x10000000: the record itself came from `g_malloc_func`
    void* memContext;
};

/// The message buffer of a context.
struct ASN1BUFFER {
    uint8_t* data;
    uint32_t byteIndex;
    uint32_t size;
    int16_t bitOffset;
    uint8_t dynamic;  ///< the run-time allocated the buffer, may let it grow, and frees it
};

/// A remembered read position.
struct ASN1BUFSAVE {
    uint32_t byteIndex;
    int16_t bitOffset;
    uint16_t flags;
};

/// What went wrong first.
struct ASN1ErrInfo {
    int32_t status;  ///< the first status recorded, 0 when none
};

/// A node of `rtSList`.
struct rtSListNode {
    void* data;
    rtSListNode* next;
};

/// Singly linked list; with a null `owner` nodes come from `malloc`, else from its `typeHeap`.
struct rtSList {
    uint32_t count;
    rtSListNode* head;
    rtSListNode* tail;
    ASN1CTXT* owner;
};

struct rtStream;  // runtime/stream.h

/// The codec context.
struct ASN1CTXT {
    rtMemHeap* msgHeap;
    rtMemHeap* typeHeap;
    ASN1BUFFER buffer;
    rtStream* stream;
    ASN1BUFSAVE savedState;
    ASN1ErrInfo errInfo;
    rtSList listA;
    rtSList listB;
    uint32_t magic;
    uint16_t flags;
    void* memContext;
    /// Levels of nesting entered on this context. `rtErrReset` does not touch it.
    uint32_t nestingDepth;
};

extern "C" {

/// The allocation hooks; writable, and to be changed only before the first context exists.
/// Each gets the `memContext` that the context was made with. `g_realloc_func` is never called by the heap.
extern QUILLMARK_API void* (*g_malloc_func)(void* memContext, size_t size);
extern QUILLMARK_API void* (*g_realloc_func)(void* memContext, void* ptr, size_t size);
extern QUILLMARK_API void (*g_free_func)(void* memContext, void* ptr);
extern QUILLMARK_API uint32_t g_defBlkSize;

/// What the hooks start with: the C allocator, whatever `memContext` is.
QUILLMARK_API void* rtDefaultMalloc(void* memContext, size_t size);
QUILLMARK_API void* rtDefaultRealloc(void* memContext, void* ptr, size_t size);
QUILLMARK_API void rtDefaultFree(void* memContext, void* ptr);

/// The C allocator under names of this library, for callers that free what it handed out.
QUILLMARK_API void* QM_malloc(size_t size);
QUILLMARK_API void* QM_calloc(size_t count, size_t size);
QUILLMARK_API void* QM_realloc(void* ptr, size_t size);
QUILLMARK_API void QM_free(void* ptr);

/// Makes a context: one new heap under both `typeHeap` and `msgHeap`, no buffer, no error. Returns 0,
/// `RT_E_NOMEM`, or `RT_E_INVPARAM` for null.
QUILLMARK_API int rtInitContext(ASN1CTXT* ctxt, void* memContext);
/// Gives the context a message buffer, empty for writing and at its start for reading. A null `buffer` takes
/// one of `size` octets (16384 when `size` is 0) from `msgHeap`, which is freed with the context and may
/// grow; a caller's buffer is used as it is. Returns 0, `RT_E_NOTINIT` for a context that is not alive, or
/// `RT_E_NOMEM`.
QUILLMARK_API int rtInitContextBuffer(ASN1CTXT* ctxt, const uint8_t* buffer, uint32_t size);
/// Ends the context and drops its references on the heaps. Nothing happens to one that is not alive.
QUILLMARK_API void rtFreeContext(ASN1CTXT* ctxt);
/// Copies the buffer record and the flags, not what they describe.
QUILLMARK_API void rtCopyContext(ASN1CTXT* dst, const ASN1CTXT* src);
QUILLMARK_API void rtCtxtSetFlag(ASN1CTXT* ctxt, uint16_t mask);
/// Makes `ctxt` place values on the `typeHeap` of `src`, which both then keep alive.
QUILLMARK_API void rtCtxtSetMemHeap(ASN1CTXT* ctxt, ASN1CTXT* src);
/// The same with `msgHeap`.
QUILLMARK_API void rtCtxtSetMsgMemHeap(ASN1CTXT* ctxt, ASN1CTXT* src);

// A `cell` is the address of a pointer to a heap, `&ctxt->typeHeap` or `&ctxt->msgHeap`.

/// Makes a heap with one reference. Returns 0, `RT_E_INVPARAM` for a null cell, or `RT_E_NOMEM`.
QUILLMARK_API int rtMemHeapCreate(rtMemHeap** cell, void* memContext);
/// A block, not cleared; null when memory fails or for 2147483600 octets and more. An empty cell gets a heap
/// first.
QUILLMARK_API void* rtMemHeapAlloc(rtMemHeap** cell, size_t size);
/// The same, cleared.
QUILLMARK_API void* rtMemHeapAllocZ(rtMemHeap** cell, size_t size);
/// A block of `size` octets with the contents of `ptr`, which stays in place unless it has to grow and stays
/// valid when the result is null. An empty cell gives null; a null `ptr` is an allocation.
QUILLMARK_API void* rtMemHeapRealloc(rtMemHeap** cell, void* ptr, size_t size);
/// Frees a block of any heap with the memory context of this cell. `ptr` is trusted to be a block.
QUILLMARK_API void rtMemHeapFreePtr(rtMemHeap** cell, const void* ptr);
/// Always 1: the heap cannot tell its blocks from other pointers.
QUILLMARK_API int rtMemHeapCheckPtr(rtMemHeap** cell, const void* ptr);
/// Does nothing.
QUILLMARK_API void rtMemHeapMarkSaved(void);
QUILLMARK_API void rtMemHeapAddRef(rtMemHeap** cell);
/// Drops a reference; the last one frees every block and the heap and clears the cell.
QUILLMARK_API void rtMemHeapRelease(rtMemHeap** cell);

/// Records `status` unless one is recorded already. Returns the status given.
QUILLMARK_API int rtErrSetData(ASN1ErrInfo* errInfo, int status);
/// Forgets the status. Returns 0.
QUILLMARK_API int rtErrReset(ASN1ErrInfo* errInfo);
/// Copies the status and returns it.
QUILLMARK_API int rtErrCopyData(const ASN1ErrInfo* src, ASN1ErrInfo* dst);
/// Writes the status to standard output.
QUILLMARK_API void rtErrPrint(const ASN1ErrInfo* errInfo);
/// Parameters of a failure are not kept. Both return 1.
QUILLMARK_API int rtErrAddIntParm(ASN1ErrInfo* errInfo, int value);
QUILLMARK_API int rtErrAddStrParm(ASN1ErrInfo* errInfo, const char* text);
/// There are no texts: always empty.
QUILLMARK_API const char* rtErrGetText(void* errInfo);

}  // extern "C"

/// Root of the run-time's own exceptions; carries the status.
class QUILLMARK_API ASN1RTLException {
  public:
    explicit ASN1RTLException(int status) : status_(status) {}
    ASN1RTLException(const ASN1RTLException&) = default;
    ASN1RTLException& operator=(const ASN1RTLException&) = default;
    virtual ~ASN1RTLException();
    int getStatus() const { return status_; }

  private:
    int status_;
};

/// A context with a reference count behind it (not atomic).
struct QUILLMARK_API ASN1Context : ASN1CTXT {
    /// Starts with a count of 0. Throws `ASN1MessageBuffer::RTLError` when the context cannot be made.
    ASN1Context();
    ~ASN1Context();
    ASN1Context(const ASN1Context&) = delete;
    ASN1Context& operator=(const ASN1Context&) = delete;

    /// Counts one reference more.
    void _ref() { ++refCount; }
    /// Frees the context and deletes the object when the count comes to 0.
    void _unref();
    uint32_t getRefCount() const { return refCount; }
    void PrintErrorInfo() const;

    uint32_t refCount;
};

/// Counted pointer to a context. All inline: records hold one each, nearly always null.
class QUILLMARK_API ASN1CtxtPtr {
  public:
    ASN1CtxtPtr() : context_(nullptr) {}
    ASN1CtxtPtr(ASN1Context* context) : context_(context) { add_reference(); }
    ASN1CtxtPtr(const ASN1CtxtPtr& other) : context_(other.context_) { add_reference(); }
    ~ASN1CtxtPtr() { drop_reference(); }
    ASN1CtxtPtr& operator=(const ASN1CtxtPtr& other) { return *this = other.context_; }
    ASN1CtxtPtr& operator=(ASN1Context* context) {
        ASN1CtxtPtr taken(context);  // the new reference first: it may be the same context
        drop_reference();
        context_ = taken.context_;
        taken.context_ = nullptr;
        return *this;
    }

    operator ASN1Context*() const { return context_; }
    ASN1Context* operator->() const { return context_; }
    bool isNull() const { return context_ == nullptr; }

  private:
    void add_reference() {
        if (context_ != nullptr) {
            context_->_ref();
        }
    }
    void drop_reference() {
        if (context_ != nullptr) {
            context_->_unref();
        }
    }

    ASN1Context* context_;
};

/// Base of generated records: the context whose heap the record's pointers lie on. Null for a record
/// that a decoder or a traits class filled, since its caller owns the context.
struct QUILLMARK_API ASN1TPDU {
    ASN1CtxtPtr mpContext;

    ASN1TPDU() {}
    ASN1TPDU(const ASN1TPDU& other) = default;
    ASN1TPDU& operator=(const ASN1TPDU& other) = default;

    void setContext(ASN1Context* context) { mpContext = context; }
};
