#pragma once

// What the generated codecs share. A generated function goes down its type element by element and reads like
// the schema; the rules of the encoding that every type obeys are here.
//
//     SequenceDecoder in(ctxt, kSequence, tagging, length);
//     if (in.more()) {
//         in.required(xd_integer(ctxt, &pvalue->version, ASN1EXPL, 0));
//     }
//     if (in.tagged(0)) {
//         pvalue->m.namePresent = in.taken(asn1D_Name(ctxt, &pvalue->name, ASN1IMPL, in.length()));
//     }
//     return in.finish(1);

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>

#include "runtime/ber_decode.h"
#include "runtime/context.h"
#include "runtime/copy.h"
#include "runtime/der_encode.h"
#include "runtime/detail/decode_position.h"
#include "runtime/detail/nesting.h"
#include "runtime/list.h"
#include "runtime/message_buffer.h"
#include "runtime/value_types.h"

namespace Quillmark::detail {

// Tags

constexpr ASN1TAG universal(uint32_t number) {
    return number;
}
constexpr ASN1TAG context_primitive(uint32_t number) {
    return 0x80000000u | number;
}
constexpr ASN1TAG context_constructed(uint32_t number) {
    return 0xA0000000u | number;
}
constexpr ASN1TAG application_constructed(uint32_t number) {
    return 0x60000000u | number;
}
inline constexpr ASN1TAG kSequence = 0x20000010u;
inline constexpr ASN1TAG kSet = 0x20000011u;

/// The identifier octet of a tag whose number is at most 30.
constexpr uint8_t identifier_octet(ASN1TAG tag) {
    return static_cast<uint8_t>(tag >> 24 | (tag & 0x1F));
}

// Failures

/// Records a negative result and gives it back, as it does a good one.
inline int recorded(ASN1CTXT* ctxt, int result) {
    return result < 0 ? rtErrSetData(&ctxt->errInfo, result) : result;
}

/// Reports a size or value out of its range: records and returns `RT_E_CONSVIO`.
int constraint_violation(ASN1CTXT* ctxt, uint32_t value, const char* path);

/// Whether `low` <= `value` <= `high` in one unsigned comparison, as a value below `low` wraps; `high` is at
/// least `low`. Returns `RT_E_CONSVIO`, recorded, when not.
inline int check_range(ASN1CTXT* ctxt, uint32_t value, uint32_t low, uint32_t high, const char* path) {
    return value - low < high - low + 1 ? RT_OK : constraint_violation(ctxt, value, path);
}

inline int check_minimum(ASN1CTXT* ctxt, uint32_t value, uint32_t low, const char* path) {
    return value >= low ? RT_OK : constraint_violation(ctxt, value, path);
}

/// Octets of a text, characters of a UTF-8 text; a null text and one that is no UTF-8 have none.
uint32_t text_length(const char* text);
uint32_t utf8_length(const char* text);

// Encoding

/// Sums up the elements of a structure, which are written last to first. After a failure, which is recorded,
/// `good` is false and nothing more may be written.
class ContentEncoder {
  public:
    explicit ContentEncoder(ASN1CTXT* ctxt) : ctxt_(ctxt) {}

    bool good() const { return result_ >= 0; }
    /// Counts what an encoder wrote.
    void add(int written);
    /// Puts a tag in front of what an encoder wrote, and counts both.
    void add_tagged(ASN1TAG tag, int written) { add(xe_tag_len(ctxt_, tag, written)); }
    bool check_range(uint32_t value, uint32_t low, uint32_t high, const char* path);
    bool check_minimum(uint32_t value, uint32_t low, const char* path);
    /// Whether a CHOICE has the value that it announces; fails with `RT_E_BADVALUE` when not.
    bool given(const void* alternative);
    /// What was written so far, or the failure.
    int result() const { return result_; }
    /// The octets of the contents or, with `ASN1EXPL`, of the element; or the failure.
    int finish(ASN1TAG tag, ASN1TagType tagging);

  private:
    ASN1CTXT* ctxt_;
    int result_ = 0;
};

/// Whether a big integer differs from a default.
bool differs(ASN1CTXT* ctxt, const char* number, const char* default_number);

int encode_enumerated(ASN1CTXT* ctxt, uint32_t value, uint32_t bound, ASN1TagType tagging);

// Decoding

/// What the decoders of structures have in common: the first failure, recorded, and the length of the element
/// whose header was read last.
class ElementDecoder {
  public:
    int status() const { return status_; }
    bool failed() const { return status_ != RT_OK; }
    int length() const { return length_; }

    /// Takes the outcome of an element that is there: every failure is final.
    bool taken(int status) { return status == RT_OK || fail(status); }
    bool check_range(uint32_t value, uint32_t low, uint32_t high, const char* path) {
        return take_check(detail::check_range(ctxt_, value, low, high, path));
    }
    bool check_minimum(uint32_t value, uint32_t low, const char* path) {
        return take_check(detail::check_minimum(ctxt_, value, low, path));
    }
    /// Takes the end-of-contents octets of the element whose header was read last, if its length was
    /// indefinite (X.690 8.1.5).
    bool close() { return length_ != RT_INDEFLEN || take_end(); }
    /// Goes back in front of the header read last, for a type that reads it itself.
    void rewind() { ctxt_->buffer.byteIndex = element_start_; }
    /// Makes the record of an alternative.
    template <typename Record>
    bool allocate(Record*& record);
    /// Records `status`; always false.
    bool fail(int status);

  protected:
    explicit ElementDecoder(ASN1CTXT* ctxt) : ctxt_(ctxt) {}

    bool take_check(int status) {
        status_ = status;
        return status == RT_OK;
    }
    bool take_end();

    ASN1CTXT* ctxt_;
    int status_ = RT_OK;
    int length_ = 0;
    uint32_t element_start_ = 0;
};

/// Reads the contents of a SEQUENCE, or of a list. The end of its contents ends it, whatever element is due;
/// end-of-contents octets are left unread unless `finish_closed` is called.
class SequenceDecoder : public ElementDecoder {
  public:
    SequenceDecoder(ASN1CTXT* ctxt, ASN1TAG tag, ASN1TagType tagging, int length);

    /// Whether there is one more element.
    bool more() {
        element_start_ = ctxt_->buffer.byteIndex;
        return status_ == RT_OK && !contents_end(ctxt_, start_, contents_length_);
    }
    /// Whether the next element has context tag `number`, in either form; takes its header.
    bool tagged(uint32_t number);
    /// Whether the next element has one of the tags; moves nothing.
    template <typename... Tags>
    bool next_is(Tags... tags) const {
        const ASN1TAG next = next_tag();
        return ((next == tags) || ...);
    }
    /// Takes the outcome of an element that must be there.
    bool required(int status);
    /// Takes the outcome of trying an element that may be absent: with another tag there, the position comes
    /// back to where the element was tried.
    bool optional(int status);
    /// The outcome. `RT_E_SEQOVFL` when elements are left, `RT_E_SETMISSING` when fewer than
    /// `required_count` were taken.
    int finish(uint32_t required_count);
    /// The same, and takes the end-of-contents octets if the own header was read here.
    int finish_closed(uint32_t required_count);

    uint32_t start() const { return start_; }
    int contents_length() const { return contents_length_; }

  private:
    ASN1TAG next_tag() const;  // 0 when there is none to read

    uint32_t start_ = 0;  // of the contents
    int contents_length_;
    uint32_t required_taken_ = 0;
    bool read_header_;
};

/// Reads the contents of a SET: its elements come in any order.
class SetDecoder : public ElementDecoder {
  public:
    SetDecoder(ASN1CTXT* ctxt, ASN1TagType tagging, int length);

    /// Takes the header of the next element.
    bool next(ASN1TAG& tag);
    /// Notes element `index`; fails with `RT_E_SETDUP` when it came before.
    bool first(uint32_t index);
    /// The outcome. `RT_E_SETMISSING` unless all of `required`, a mask of indexes, came.
    int finish(uint32_t required);

  private:
    uint32_t start_ = 0;
    int contents_length_;
    uint32_t seen_ = 0;
};

/// Reads one alternative of a CHOICE: takes its header and tells its tag.
class ChoiceDecoder : public ElementDecoder {
  public:
    explicit ChoiceDecoder(ASN1CTXT* ctxt);

    ASN1TAG tag() const { return tag_; }
    /// The outcome for a tag that no alternative has: `RT_E_INVOPT`, unless the header could not be read.
    int unknown();

  private:
    ASN1TAG tag_ = 0;
};

/// `xd_charstr` and `xd_bigint` write the pointer of a text that nobody writes through.
inline char** text_cell(const char*& text) {
    return const_cast<char**>(&text);
}

int decode_enumerated(ASN1CTXT* ctxt, uint32_t& value, uint32_t bound, ASN1TagType tagging, int length);
/// Into the array of a record, whose room is known.
template <size_t Room>
int decode_sized_octets(ASN1CTXT* ctxt, uint8_t (&data)[Room], uint32_t& count, ASN1TagType tagging,
                        int length) {
    count = Room;
    return xd_octstr_s(ctxt, data, &count, tagging, length);
}
template <size_t Room>
int decode_sized_bits(ASN1CTXT* ctxt, uint8_t (&data)[Room], uint32_t& count, uint32_t capacity,
                      ASN1TagType tagging, int length) {
    static_assert(Room <= UINT32_MAX / 8);
    count = capacity;
    return xd_bitstr_s(ctxt, data, &count, tagging, length);
}
int decode_open(ASN1CTXT* ctxt, ASN1OpenType& value);
int decode_open(ASN1CTXT* ctxt, Asn1Object& value);
/// Keeps the elements behind an extension marker in `list`, to the end of the structure.
int keep_unknown(ASN1CTXT* ctxt, const SequenceDecoder& in, ASN1TSeqOfList& list);

// Memory

/// A record on the heap of the context, constructed; null when memory fails.
template <typename Record>
Record* make_record(ASN1CTXT* ctxt) {
    void* block = rtMemHeapAlloc(&ctxt->typeHeap, sizeof(Record));
    return block == nullptr ? nullptr : new (block) Record();
}

/// The same; throws `std::bad_alloc`.
template <typename Record>
Record* make_record_or_throw(ASN1CTXT* ctxt) {
    Record* record = make_record<Record>(ctxt);
    if (record == nullptr) {
        throw std::bad_alloc();
    }
    return record;
}

template <typename Record>
bool ElementDecoder::allocate(Record*& record) {
    record = make_record<Record>(ctxt_);
    return record != nullptr || fail(RT_E_NOMEM);
}

/// Frees a block of the heap unless it lies in the message, as `RT_F_FASTCOPY` has it.
void free_block(ASN1CTXT* ctxt, const void* block);

template <typename Pointee>
void free_pointer(ASN1CTXT* ctxt, Pointee*& pointer) {
    free_block(ctxt, pointer);
    pointer = nullptr;
}

/// Frees a text that is not the library's own default.
inline void free_text(ASN1CTXT* ctxt, const char*& text, const char* constant) {
    if (text != constant) {
        free_pointer(ctxt, text);
    }
}

// Copies: deep, on the heap of `ctxt`. A null source gives a null copy. Throw `std::bad_alloc`.

void copy_text(ASN1CTXT* ctxt, const char* src, const char*& dst);
void copy_value(ASN1CTXT* ctxt, const ASN1TDynOctStr& src, ASN1TDynOctStr& dst);
void copy_value(ASN1CTXT* ctxt, const ASN1TDynBitStr& src, ASN1TDynBitStr& dst);
void copy_value(ASN1CTXT* ctxt, const ASN1_16BITCHARSTRING& src, ASN1_16BITCHARSTRING& dst);
void copy_value(ASN1CTXT* ctxt, const ASN1_32BITCHARSTRING& src, ASN1_32BITCHARSTRING& dst);
void copy_value(ASN1CTXT* ctxt, const ASN1OpenType& src, ASN1OpenType& dst);
void copy_extensions(ASN1CTXT* ctxt, const ASN1TSeqOfList& src, ASN1TSeqOfList& dst);

/// No more than the array holds, whatever the count says.
void copy_sized(uint32_t count, const uint8_t* src, uint32_t room, uint8_t* dst);

template <size_t Room>
void copy_sized_octets(uint32_t count, const uint8_t (&src)[Room], uint32_t& dst_count,
                       uint8_t (&dst)[Room]) {
    dst_count = count < Room ? count : Room;
    copy_sized(dst_count, src, Room, dst);
}

template <size_t Room>
void copy_sized_bits(uint32_t count, const uint8_t (&src)[Room], uint32_t& dst_count, uint8_t (&dst)[Room]) {
    dst_count = count < Room * 8 ? count : Room * 8;
    copy_sized((dst_count + 7) / 8, src, Room, dst);
}

/// A copy of the record that an alternative points at.
template <typename Record>
Record* copy_alternative(ASN1CTXT* ctxt, Record* src, void (*copy)(ASN1CTXT*, Record*, Record*)) {
    if (src == nullptr) {
        return nullptr;
    }
    Record* dst = make_record_or_throw<Record>(ctxt);
    copy(ctxt, src, dst);
    return dst;
}

inline ASN1TObjId* copy_alternative(ASN1CTXT* ctxt, ASN1TObjId* src) {
    if (src == nullptr) {
        return nullptr;
    }
    ASN1TObjId* dst = make_record_or_throw<ASN1TObjId>(ctxt);
    *dst = *src;
    return dst;
}

template <typename Value>
Value* copy_alternative(ASN1CTXT* ctxt, Value* src) {
    if (src == nullptr) {
        return nullptr;
    }
    Value* dst = make_record_or_throw<Value>(ctxt);
    copy_value(ctxt, *src, *dst);
    return dst;
}

// Lists

/// The record of a list node.
template <typename Record>
Record* element_of(const _Asn1RTDListNode* node) {
    return static_cast<Record*>(node->data);
}

/// A node with room for a record of `size` octets behind it, null when memory fails.
void* allocate_node(ASN1CTXT* ctxt, size_t size);

template <typename Record>
int encode_list(ASN1CTXT* ctxt, const ASN1TSeqOfList& list, int (*encode)(ASN1CTXT*, Record*, ASN1TagType),
                ASN1TAG tag, ASN1TagType tagging) {
    ContentEncoder out(ctxt);
    for (const _Asn1RTDListNode* node = list.tail; node != nullptr && out.good(); node = node->prev) {
        if (out.given(node->data)) {
            out.add(encode(ctxt, element_of<Record>(node), ASN1EXPL));
        }
    }
    return out.finish(tag, tagging);
}

/// The elements of a SET OF, put in order once they are written (X.690 11.6). Throws `std::bad_alloc`.
class SetOfEncoder {
  public:
    explicit SetOfEncoder(ASN1CTXT* ctxt) : ctxt_(ctxt) { rtSListInitEx(ctxt, &locations_); }

    bool good() const { return status_ == RT_OK; }
    bool given(const void* element);
    void add(int written);
    int finish(ASN1TAG tag, ASN1TagType tagging);

  private:
    ASN1CTXT* ctxt_;
    rtSList locations_;
    int status_ = RT_OK;
};

template <typename Record>
int encode_sorted_list(ASN1CTXT* ctxt, const ASN1TSeqOfList& list,
                       int (*encode)(ASN1CTXT*, Record*, ASN1TagType), ASN1TAG tag, ASN1TagType tagging) {
    SetOfEncoder out(ctxt);
    for (const _Asn1RTDListNode* node = list.tail; node != nullptr && out.good(); node = node->prev) {
        if (out.given(node->data)) {
            out.add(encode(ctxt, element_of<Record>(node), ASN1EXPL));
        }
    }
    return out.finish(tag, tagging);
}

/// Reads a list. Returns 0 or a failure that is recorded, `RT_E_SEQOVFL` for more elements than can be
/// counted.
template <typename Record>
int decode_list(ASN1CTXT* ctxt, ASN1TSeqOfList& list, int (*decode)(ASN1CTXT*, Record*, ASN1TagType, int),
                ASN1TAG tag, ASN1TagType tagging, int length) {
    rtDListInit(&list);
    SequenceDecoder in(ctxt, tag, tagging, length);
    while (in.more()) {
        void* block = allocate_node(ctxt, sizeof(Record));
        if (block == nullptr) {
            in.fail(RT_E_NOMEM);
            break;
        }
        Record* record = new (block) Record();
        if (in.taken(decode(ctxt, record, ASN1EXPL, 0))) {
            rtDListAppendNode(ctxt, &list, record);
        }
    }
    return in.status();
}

template <typename Record>
void free_list(ASN1CTXT* ctxt, ASN1TSeqOfList& list, void (*release)(ASN1CTXT*, Record*)) {
    for (const _Asn1RTDListNode* node = list.head; node != nullptr; node = node->next) {
        if (node->data != nullptr) {
            release(ctxt, element_of<Record>(node));
        }
    }
    rtDListFreeAll(ctxt, &list);
}

/// Appends `record` to a list. Throws `std::bad_alloc`.
void append_record(ASN1CTXT* ctxt, ASN1TSeqOfList& list, void* record);

template <typename Record>
void copy_list(ASN1CTXT* ctxt, const ASN1TSeqOfList& src, ASN1TSeqOfList& dst,
               void (*copy)(ASN1CTXT*, Record*, Record*)) {
    rtDListInit(&dst);
    for (const _Asn1RTDListNode* node = src.head; node != nullptr; node = node->next) {
        if (node->data == nullptr) {
            append_record(ctxt, dst, nullptr);
            continue;
        }
        Record* record = make_record_or_throw<Record>(ctxt);
        append_record(ctxt, dst, record);
        copy(ctxt, element_of<Record>(node), record);
    }
}

// Arrays

/// Counts the elements of contents of `length` octets at the position. Returns 0 or a recorded failure.
int count_elements(ASN1CTXT* ctxt, int length, uint32_t& count);
/// Room for `count` elements, null when memory fails or so many do not fit in memory.
void* allocate_array(ASN1CTXT* ctxt, uint32_t count, size_t element_size);

/// Elements that point at something begin null, so that they can be freed. Others are left as they are: an
/// OBJECT IDENTIFIER has 516 octets and touching them would cost more than reading the message.
template <typename Element>
inline constexpr bool kBeginsNull =
    std::is_pointer_v<Element> || !(std::is_arithmetic_v<Element> || std::is_base_of_v<ASN1OBJID, Element>);

template <typename Element>
Element* make_array(ASN1CTXT* ctxt, uint32_t count) {
    auto* elements = static_cast<Element*>(allocate_array(ctxt, count, sizeof(Element)));
    if constexpr (kBeginsNull<Element>) {
        if (elements != nullptr) {
            std::uninitialized_value_construct_n(elements, count);
        }
    }
    return elements;
}

template <typename Encoder, typename Array, typename Element>
int encode_array_by(ASN1CTXT* ctxt, const Array& array, int (*encode)(ASN1CTXT*, Element*, ASN1TagType),
                    ASN1TAG tag, ASN1TagType tagging) {
    if (array.elem == nullptr && array.n != 0) {
        return rtErrSetData(&ctxt->errInfo, RT_E_BADVALUE);
    }
    Encoder out(ctxt);
    for (uint32_t rest = array.n; rest != 0 && out.good(); --rest) {
        out.add(encode(ctxt, &array.elem[rest - 1], ASN1EXPL));
    }
    return out.finish(tag, tagging);
}

template <typename Array, typename Element>
int encode_array(ASN1CTXT* ctxt, const Array& array, int (*encode)(ASN1CTXT*, Element*, ASN1TagType),
                 ASN1TAG tag, ASN1TagType tagging) {
    return encode_array_by<ContentEncoder>(ctxt, array, encode, tag, tagging);
}

template <typename Array, typename Element>
int encode_sorted_array(ASN1CTXT* ctxt, const Array& array, int (*encode)(ASN1CTXT*, Element*, ASN1TagType),
                        ASN1TAG tag, ASN1TagType tagging) {
    return encode_array_by<SetOfEncoder>(ctxt, array, encode, tag, tagging);
}

/// Reads an array; `n` is the number of elements read, also after a failure. `RT_E_NOMEM` is not recorded.
template <typename Array, typename Element>
int decode_array(ASN1CTXT* ctxt, Array& array, int (*decode)(ASN1CTXT*, Element*, ASN1TagType, int),
                 ASN1TAG tag, ASN1TagType tagging, int length) {
    array.n = 0;
    array.elem = nullptr;
    SequenceDecoder in(ctxt, tag, tagging, length);
    uint32_t count = 0;
    if (in.failed() || !in.taken(count_elements(ctxt, in.contents_length(), count))) {
        return in.status();
    }
    array.elem = make_array<Element>(ctxt, count);
    if (array.elem == nullptr) {
        return RT_E_NOMEM;
    }
    while (array.n < count && in.more() && in.taken(decode(ctxt, &array.elem[array.n], ASN1EXPL, 0))) {
        ++array.n;
    }
    return in.finish(0);
}

template <typename Array, typename Element>
void free_array(ASN1CTXT* ctxt, Array& array, void (*release)(ASN1CTXT*, Element*)) {
    for (uint32_t i = 0; array.elem != nullptr && i < array.n; ++i) {
        release(ctxt, &array.elem[i]);
    }
    free_pointer(ctxt, array.elem);
}

template <typename Array, typename Element>
void copy_array(ASN1CTXT* ctxt, const Array& src, Array& dst, void (*copy)(ASN1CTXT*, Element*, Element*)) {
    dst.n = 0;
    dst.elem = nullptr;
    if (src.elem == nullptr) {
        return;
    }
    Element* elements = make_array<Element>(ctxt, src.n);
    if (elements == nullptr) {
        throw std::bad_alloc();
    }
    dst.elem = elements;
    for (; dst.n < src.n; ++dst.n) {
        copy(ctxt, &src.elem[dst.n], &elements[dst.n]);
    }
}

// Control classes

inline ASN1Context& new_context() {
    return *new ASN1Context;
}

/// Binds a control object to a buffer that begins a message.
inline ASN1CTXT* start_message(ASN1CType& control, ASN1MessageBufferIF& buffer) {
    control.setMsgBuf(buffer);
    buffer.init();
    return buffer.getCtxtPtr();
}

/// Lets a copied record keep the context that its parts lie on.
template <typename Record>
void keep_context(ASN1Context& context, Record& record) {
    if constexpr (std::is_base_of_v<ASN1TPDU, Record>) {
        if (record.mpContext.isNull()) {
            record.setContext(&context);
        }
    }
}

/// The copy that a control object works on: it lies on the heap of the context that the object keeps.
template <typename Record>
Record& copy_for_control(ASN1Context& context, Record& src, void (*copy)(ASN1CTXT*, Record*, Record*)) {
    Record* dst = make_record_or_throw<Record>(&context);
    copy(&context, &src, dst);
    return *dst;
}

template <typename Record>
Record* copy_record(ASN1Context& context, Record& src, Record* dst,
                    void (*copy)(ASN1CTXT*, Record*, Record*)) {
    if (dst == &src) {
        return dst;
    }
    if (dst == nullptr) {
        dst = make_record_or_throw<Record>(&context);
    }
    copy(&context, &src, dst);
    keep_context(context, *dst);
    return dst;
}

/// As `copy_record`, into a record made with `new`.
template <typename Record>
Record* new_copy(ASN1Context& context, Record& src, void (*copy)(ASN1CTXT*, Record*, Record*)) {
    std::unique_ptr<Record> dst(new Record());
    copy(&context, &src, dst.get());
    keep_context(context, *dst);
    return dst.release();
}

// Values carried in open types

/// Puts buffer and flags of a context back when it goes.
class BufferSnapshot {
  public:
    explicit BufferSnapshot(ASN1CTXT* ctxt) : ctxt_(ctxt), buffer_(ctxt->buffer), flags_(ctxt->flags) {}
    ~BufferSnapshot() {
        ctxt_->buffer = buffer_;
        ctxt_->flags = flags_;
    }
    BufferSnapshot(const BufferSnapshot&) = delete;
    BufferSnapshot& operator=(const BufferSnapshot&) = delete;

  private:
    ASN1CTXT* ctxt_;
    ASN1BUFFER buffer_;
    uint16_t flags_;
};

/// Writes a value: by `object`, the one found for its identifier, or as its octets stand when there is none
/// or it carries no type.
template <typename Object>
int encode_open(ASN1CTXT* ctxt, const Object* object, int (Object::*encode)(ASN1CTXT*, Asn1TObject&) const,
                Asn1TObject& value) {
    const int written = object == nullptr ? 0 : (object->*encode)(ctxt, value);
    return written != 0 ? written : xe_OpenType(ctxt, value.data, value.numocts);
}

/// The same for a value in an OCTET STRING. Without a carried record the string stands as it is.
template <typename Object>
int encode_wrapped(ASN1CTXT* ctxt, const Object* object, int (Object::*encode)(ASN1CTXT*, Asn1TObject&) const,
                   const ASN1TDynOctStr& wrapper, Asn1TObject& value, ASN1TagType tagging) {
    const int written = object == nullptr || value.decoded == nullptr ? 0 : (object->*encode)(ctxt, value);
    if (written == 0) {
        return xe_octstr(ctxt, wrapper.data, wrapper.numocts, tagging);
    }
    return tagging == ASN1EXPL ? xe_tag_len(ctxt, universal(4), written) : written;
}

/// The same for the values of a SET OF.
template <typename Object>
int encode_open_set(ASN1CTXT* ctxt, const Object* object,
                    int (Object::*encode)(ASN1CTXT*, Asn1TObject&) const, const ASN1TSeqOfList& list,
                    ASN1TagType tagging) {
    SetOfEncoder out(ctxt);
    for (const _Asn1RTDListNode* node = list.tail; node != nullptr && out.good(); node = node->prev) {
        if (out.given(node->data)) {
            out.add(encode_open(ctxt, object, encode, *element_of<Asn1TObject>(node)));
        }
    }
    return out.finish(kSet, tagging);
}

/// Starts a buffer for a carried value. Returns 0 or a recorded failure.
int begin_carried(ASN1CTXT* ctxt);
/// Moves what was written, `written` octets, to a block of its own in `value` and frees the buffer. An object
/// that carries no type writes nothing: `value` then stays. Returns 0 or a recorded failure.
int end_carried(ASN1CTXT* ctxt, int written, Asn1Object& value);

/// Encodes `value.decoded` by `object`, the one found for its identifier; without one the octets stay.
template <typename Object>
int encode_carried(ASN1CTXT* ctxt, const Object* object, int (Object::*encode)(ASN1CTXT*, Asn1TObject&) const,
                   Asn1TObject& value) {
    if (object == nullptr) {
        return RT_OK;
    }
    const int status = begin_carried(ctxt);
    return status != RT_OK ? status : end_carried(ctxt, (object->*encode)(ctxt, value), value);
}

/// Decodes the octets of `value`, if there are any, by `object`; without one nothing is decoded.
template <typename Object>
int decode_carried(ASN1CTXT* ctxt, const Object* object, int (Object::*decode)(ASN1CTXT*, Asn1TObject&) const,
                   Asn1TObject& value) {
    if (object == nullptr || value.numocts == 0) {
        return RT_OK;
    }
    const int status = xd_setp(ctxt, value.data, static_cast<int>(value.numocts), nullptr, nullptr);
    return recorded(ctxt, status != RT_OK ? status : (object->*decode)(ctxt, value));
}

template <typename Object>
void copy_carried(ASN1CTXT* ctxt, const Object* object,
                  void (Object::*copy)(ASN1CTXT*, Asn1TObject&, Asn1TObject&) const, Asn1TObject& src,
                  Asn1TObject& dst) {
    dst.decoded = nullptr;
    if (object != nullptr) {
        (object->*copy)(ctxt, src, dst);
    }
}

template <typename Object>
void free_carried(ASN1CTXT* ctxt, const Object* object,
                  void (Object::*release)(ASN1CTXT*, Asn1TObject&) const, Asn1TObject& value) {
    if (object != nullptr) {
        (object->*release)(ctxt, value);
    }
    value.decoded = nullptr;
}

// The same for a list of values under one identifier. A node without a value is passed over.

template <typename Object>
int encode_carried_list(ASN1CTXT* ctxt, const Object* object,
                        int (Object::*encode)(ASN1CTXT*, Asn1TObject&) const, const ASN1TSeqOfList& list) {
    int status = RT_OK;
    for (const _Asn1RTDListNode* node = list.head; node != nullptr && status == RT_OK; node = node->next) {
        if (node->data != nullptr) {
            status = encode_carried(ctxt, object, encode, *element_of<Asn1TObject>(node));
        }
    }
    return status;
}

template <typename Object>
int decode_carried_list(ASN1CTXT* ctxt, const Object* object,
                        int (Object::*decode)(ASN1CTXT*, Asn1TObject&) const, const ASN1TSeqOfList& list) {
    int status = RT_OK;
    for (const _Asn1RTDListNode* node = list.head; node != nullptr && status == RT_OK; node = node->next) {
        status = decode_carried(ctxt, object, decode, *element_of<Asn1TObject>(node));
    }
    return status;
}

/// `dst` is a copy of `src` that lacks the carried records.
template <typename Object>
void copy_carried_list(ASN1CTXT* ctxt, const Object* object,
                       void (Object::*copy)(ASN1CTXT*, Asn1TObject&, Asn1TObject&) const,
                       const ASN1TSeqOfList& src, const ASN1TSeqOfList& dst) {
    const _Asn1RTDListNode* target = dst.head;
    for (const _Asn1RTDListNode* node = src.head; node != nullptr; node = node->next, target = target->next) {
        if (node->data != nullptr) {
            copy_carried(ctxt, object, copy, *element_of<Asn1TObject>(node),
                         *element_of<Asn1TObject>(target));
        }
    }
}

template <typename Object>
void free_carried_list(ASN1CTXT* ctxt, const Object* object,
                       void (Object::*release)(ASN1CTXT*, Asn1TObject&) const, const ASN1TSeqOfList& list) {
    for (const _Asn1RTDListNode* node = list.head; node != nullptr; node = node->next) {
        if (node->data != nullptr) {
            free_carried(ctxt, object, release, *element_of<Asn1TObject>(node));
        }
    }
}

/// Lets `value` stand for the contents of the string that wraps it.
inline void view_contents(const ASN1TDynOctStr& wrapper, Asn1TObject& value) {
    value.numocts = wrapper.numocts;
    value.data = wrapper.data;
    value.decoded = nullptr;
}

/// Lets the string have the octets that `value` was encoded to.
inline void take_contents(const Asn1TObject& value, ASN1TDynOctStr& wrapper) {
    wrapper.numocts = value.numocts;
    wrapper.data = value.data;
}

}  // namespace Quillmark::detail
