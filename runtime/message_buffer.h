#pragma once

// The class layer over the codecs: message buffers, which own a context, and the base of the control classes,
// which join a buffer with a generated record.
//
//     ASN1BEREncodeBuffer buffer;
//     ASN1C_X control(buffer, record);
//     int length = control.Encode();          // the message is buffer.getMsgPtr(), or a negative status
//
//     ASN1BERDecodeBuffer buffer(message, size);
//     ASN1C_X control(buffer, record);
//     int status = control.Decode();          // values live as long as the context of `buffer`

#include <cstdint>

#include "runtime/context.h"
#include "values/export.h"

struct ASN1MemBuf;  // runtime/memory_buffer.h
class ASN1CType;

/// What a control class sees of a message buffer. An operation that is not overridden does nothing and
/// returns null.
class QUILLMARK_API ASN1MessageBufferIF {
  public:
    enum Type { BEREncode = 0, BERDecode = 1 };

    virtual ~ASN1MessageBufferIF();
    virtual ASN1CtxtPtr getContext();
    virtual ASN1Context* getCtxtPtr();
    /// A copy made with array `new`, owned by the caller; null when there is none to make.
    virtual uint8_t* getMsgCopy();
    virtual uint8_t* getMsgPtr();
    /// Makes the buffer ready for the next message.
    virtual void init();
    virtual int initBuffer(ASN1MemBuf& memBuf);
    virtual int initBuffer(unsigned short* text);
    virtual int initBuffer(char* text);
    virtual bool isA(Type type) = 0;
};

/// A buffer with a context of its own.
class QUILLMARK_API ASN1MessageBuffer : public ASN1MessageBufferIF {
  public:
    /// Thrown by constructors that cannot make the context or the buffer.
    class QUILLMARK_API RTLError : public ASN1RTLException {
      public:
        explicit RTLError(int status) : ASN1RTLException(status) {}
        RTLError(const RTLError&) = default;
        RTLError& operator=(const RTLError&) = default;
        ~RTLError() override;
    };

    ~ASN1MessageBuffer() override;
    ASN1MessageBuffer(const ASN1MessageBuffer&) = delete;
    ASN1MessageBuffer& operator=(const ASN1MessageBuffer&) = delete;

    ASN1CtxtPtr getContext() override;
    ASN1Context* getCtxtPtr() override;
    /// The start of the context's buffer.
    uint8_t* getMsgPtr() override;
    /// Points the context's buffer at the contents of `memBuf`, which must outlive it. `RT_E_INVPARAM` when
    /// it has none.
    int initBuffer(ASN1MemBuf& memBuf) override;
    /// `RT_E_NOTSUPP`.
    int initBuffer(unsigned short* text) override;
    /// `RT_E_NOTSUPP`.
    int initBuffer(char* text) override;

  protected:
    /// Makes the context. Throws `RTLError` when that fails.
    explicit ASN1MessageBuffer(Type type);

    ASN1CtxtPtr mpContext;
    Type mBufferType;
};

/// What buffers of both directions share.
class QUILLMARK_API ASN1BERMessageBuffer : public ASN1MessageBuffer {
  public:
    ~ASN1BERMessageBuffer() override;

  protected:
    explicit ASN1BERMessageBuffer(Type type) : ASN1MessageBuffer(type) {}
};

/// A buffer that is written from its end towards its start.
class QUILLMARK_API ASN1BEREncodeBuffer : public ASN1BERMessageBuffer {
  public:
    /// A buffer that grows. Throws `RTLError`.
    ASN1BEREncodeBuffer();
    /// A fixed buffer of the caller, for messages of up to `size` - 1 octets. Throws `RTLError`.
    ASN1BEREncodeBuffer(unsigned char* buffer, int size);
    ~ASN1BEREncodeBuffer() override;

    /// One octet more than the message: the spare last octet of the buffer.
    uint8_t* getMsgCopy() override;
    /// The first octet of the message.
    uint8_t* getMsgPtr() override;
    /// Forgets what was written.
    void init() override;
    int setBuffer(unsigned char* buffer, int size);
    /// Encodes. Throws `ASN1RTLException` with whatever is not 0, the length of a success too.
    ASN1BEREncodeBuffer& operator<<(ASN1CType& value);
    bool isA(Type type) override;
};

/// A message of the caller's, to be read.
class QUILLMARK_API ASN1BERDecodeBuffer : public ASN1BERMessageBuffer {
  public:
    ASN1BERDecodeBuffer();
    /// Reads nothing yet. The message must outlive the buffer.
    ASN1BERDecodeBuffer(const unsigned char* msg, int size);
    ~ASN1BERDecodeBuffer() override;

    /// Starts on the message, once: a second `Decode` goes on where the first stopped.
    void init() override;
    /// Takes another message and starts on it, unless `keep` is given and it is the one in hand.
    void setBuffer(const unsigned char* msg, int size, unsigned char keep);
    /// Looks for an element by its tag, depth first: from the start with `first`, else behind the one at the
    /// position. Returns its first octet, where the position is then, or null.
    const unsigned char* findElement(unsigned int tag, int& length, int first);
    ASN1BERDecodeBuffer& operator>>(ASN1CType& value);
    bool isA(Type type) override;

  private:
    bool has_message() const;
    int start();

    const unsigned char* msgPtr;
    int32_t msgSize;
    uint8_t bufferReady;
};

/// Base of the control classes. The base `EncodeTo` and `DecodeFrom` do nothing and return 0.
class QUILLMARK_API ASN1CType {
  public:
    explicit ASN1CType(ASN1MessageBufferIF& buffer);
    virtual ~ASN1CType();

    /// `EncodeTo` or `DecodeFrom` the buffer in hand, `RT_E_INVPARAM` when there is none.
    virtual int Encode();
    virtual int Decode();
    virtual int EncodeTo(ASN1MessageBufferIF& buffer);
    virtual int DecodeFrom(ASN1MessageBufferIF& buffer);

    /// Works on `buffer` from here on, its type heap included.
    void setMsgBuf(ASN1MessageBufferIF& buffer);
    ASN1CtxtPtr getContext() const { return mpContext; }
    ASN1Context* getCtxtPtr() const { return mpContext; }

  protected:
    /// With a new context. Throws `ASN1MessageBuffer::RTLError`.
    ASN1CType();
    explicit ASN1CType(ASN1Context& context);
    ASN1CType(const ASN1CType&) = default;
    ASN1CType& operator=(const ASN1CType&) = delete;

    ASN1CtxtPtr mpContext;
    ASN1MessageBufferIF* mpMsgBuf;
};
