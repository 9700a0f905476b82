#pragma once

// Writing through a context: into its buffer alone, or by way of its buffer into a stream. The library
// makes no streams. Who wants one fills a record on the context's `msgHeap` and hangs it on
// `ASN1CTXT::stream`; `rtFreeContext` releases it.

#include <cstdint>

#include "runtime/context.h"

/// Bits of `rtStream::mode` for output; one of them opens the buffered path, `RT_STREAM_OUTPUT` all of it.
inline constexpr uint16_t RT_STREAM_OUTPUT = 0x0002;
inline constexpr uint16_t RT_STREAM_BUFFERED_OUTPUT = 0x8000;

/// A stream: its operations and their state.
struct rtStream {
    /// Reads at most `count` octets; returns their number or a negative status.
    int (*read)(rtStream* stream, uint8_t* data, uint32_t count);
    /// Writes at most `count` octets; returns their number, 0 when no more goes in, or a negative status.
    int (*write)(rtStream* stream, const uint8_t* data, uint32_t count);
    /// Returns 0 or a negative status; may be null.
    int (*flush)(rtStream* stream);
    uint16_t mode;
    uint32_t byteCount;  ///< octets written so far
    void* extra;         ///< for the operations
};

extern "C" {

/// Makes room for `count` octets behind `byteIndex`: flushes an attached stream, then lets a dynamic buffer
/// grow. Returns 0, `RT_E_BUFOVFL` for a fixed buffer, `RT_E_NOMEM`, or the status of the flush.
QUILLMARK_API int rtCheckBuffer(ASN1CTXT* ctxt, uint32_t count);

/// Appends octets at `byteIndex`, by way of the stream where one is attached. Returns 0 or a status.
QUILLMARK_API int rtWriteBytes(ASN1CTXT* ctxt, const uint8_t* data, uint32_t count);

/// Hands octets to the stream until all are written. Returns 0, `RT_E_NOTINIT` without a stream that can
/// be written, `RT_E_BUFOVFL` when the stream takes no more, or its status.
QUILLMARK_API int rtStreamWrite(ASN1CTXT* ctxt, const uint8_t* data, uint32_t count);

/// Flushes the stream itself. Returns 0, also without a flush operation, `RT_E_INVPARAM` when the stream is
/// not open for output, `RT_E_NOTINIT` without a stream, or the status of the operation.
QUILLMARK_API int rtStreamFlush(ASN1CTXT* ctxt);

/// Collects octets in the context's buffer; what does not fit sends the buffer to the stream first.
QUILLMARK_API int rtStreamBufWrite(ASN1CTXT* ctxt, const uint8_t* data, uint32_t count);

/// Sends the buffer to the stream, empties it and flushes. Returns as the two steps do, `RT_E_INVPARAM`
/// when the stream is not open for output.
QUILLMARK_API int rtStreamBufFlush(ASN1CTXT* ctxt);

/// Frees the stream record on `msgHeap` and detaches it. Nothing is flushed.
QUILLMARK_API void rtStreamRelease(ASN1CTXT* ctxt);

}  // extern "C"
