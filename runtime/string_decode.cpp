// Octet and character strings (X.690 8.7, 8.23). A string is primitive, or it is cut into OCTET STRING
// segments whatever its own tag is. Which of the two is told by the form of the last identifier octet read,
// under ASN1IMPL too.

#include "runtime/ber_decode.h"
#include "runtime/detail/decode_position.h"
#include "runtime/detail/nesting.h"

using Quillmark::detail::at_end_of_contents_octets;
using Quillmark::detail::contents_end;
using Quillmark::detail::contents_here;
using Quillmark::detail::last_was_constructed;
using Quillmark::detail::NestingLevel;
using Quillmark::detail::octets_left;
using Quillmark::detail::step_over;
using Quillmark::detail::take_short_header;

namespace {

constexpr uint8_t kOctetString = 4;

int record(ASN1CTXT* ctxt, int status) {
    return status == RT_OK ? RT_OK : rtErrSetData(&ctxt->errInfo, status);
}

int read_octets(ASN1CTXT* ctxt, uint8_t* data, uint32_t& numocts, int length);

// A segment of a constructed string, which may be cut again, though not in the indefinite form.
int read_segment(ASN1CTXT* ctxt, uint8_t* data, uint32_t& numocts) {
    int length;
    const int status = xd_match1(ctxt, kOctetString, &length);
    if (status != RT_OK) {
        return status;
    }
    return length < 0 ? RT_E_INVLEN : read_octets(ctxt, data, numocts, length);
}

int read_segments(ASN1CTXT* ctxt, uint8_t* data, uint32_t& numocts, int length) {
    const NestingLevel level(ctxt);
    if (level.too_deep()) {
        return RT_E_NOTSUPP;
    }
    const uint32_t start = ctxt->buffer.byteIndex;
    uint32_t used = 0;
    while (!contents_end(ctxt, start, length)) {
        uint32_t part = numocts - used;
        const int status = read_segment(ctxt, data + used, part);
        if (status != RT_OK) {
            return status;
        }
        used += part;
    }
    numocts = used;
    if (length == RT_INDEFLEN) {
        return at_end_of_contents_octets(ctxt) ? RT_OK : RT_E_ENDOFBUF;
    }
    return int64_t{ctxt->buffer.byteIndex} - start == length ? RT_OK : RT_E_INVLEN;
}

// `numocts` is the room before and the count after; end-of-contents octets are left.
int read_octets(ASN1CTXT* ctxt, uint8_t* data, uint32_t& numocts, int length) {
    if (length > 0 && static_cast<uint32_t>(length) > numocts) {
        return RT_E_STROVFL;
    }
    if (last_was_constructed(ctxt)) {
        return read_segments(ctxt, data, numocts, length);
    }
    if (length < 0) {
        return RT_E_INVLEN;
    }
    numocts = static_cast<uint32_t>(length);
    return xd_memcpy(ctxt, data, numocts);
}

// A string whose header has been read: `length` of its contents, and how many octets of value they can hold.
struct StringContents {
    int length;
    uint32_t count;
    bool constructed;
};

int measure(ASN1CTXT* ctxt, int length, StringContents& contents) {
    contents = {.length = length,
                .count = length > 0 ? static_cast<uint32_t>(length) : 0,
                .constructed = last_was_constructed(ctxt)};
    if (length == RT_INDEFLEN) {
        uint32_t total;
        return xd_consStrIndefLenAndSize(ctxt, kOctetString, &contents.count, &total);
    }
    // Looked at before memory is taken for it.
    return !contents.constructed && contents.count > octets_left(ctxt) ? RT_E_ENDOFBUF : RT_OK;
}

int begin_string(ASN1CTXT* ctxt, uint8_t identifier, ASN1TagType tagging, int length,
                 StringContents& contents) {
    if (tagging == ASN1EXPL && !take_short_header(ctxt, identifier, length)) {
        const int status = xd_match1(ctxt, identifier, &length);
        if (status != RT_OK) {
            return status;
        }
    }
    return measure(ctxt, length, contents);
}

// Reads contents and end-of-contents octets into `data`, which has room for `contents.count` octets.
int read_contents(ASN1CTXT* ctxt, const StringContents& contents, uint8_t* data, uint32_t& numocts) {
    numocts = contents.count;
    const int status = read_octets(ctxt, data, numocts, contents.length);
    if (status == RT_OK && contents.length == RT_INDEFLEN) {
        ctxt->buffer.byteIndex += 2;  // read_segments has stopped at them
    }
    return status;
}

// The same into a new block with `spare` octets behind.
int read_block(ASN1CTXT* ctxt, const StringContents& contents, uint32_t spare, uint8_t*& block,
               uint32_t& numocts) {
    block = static_cast<uint8_t*>(rtMemHeapAlloc(&ctxt->typeHeap, size_t{contents.count} + spare));
    if (block == nullptr) {
        return RT_E_NOMEM;
    }
    const int status = read_contents(ctxt, contents, block, numocts);
    if (status != RT_OK) {
        rtMemHeapFreePtr(&ctxt->typeHeap, block);
    }
    return status;
}

// For the decoders of ASN1IMPL a length below 0 that is not RT_INDEFLEN announces nothing.
bool announces_nothing(const StringContents& contents) {
    return contents.length < 0 && contents.length != RT_INDEFLEN;
}

uint8_t identifier_of(ASN1TAG tag) {
    return static_cast<uint8_t>((tag >> 24 & 0xE0) | (tag & 0x1F));
}

int read_text(ASN1CTXT* ctxt, StringContents contents, char** text) {
    if (announces_nothing(contents)) {
        contents.length = 0;
    }
    uint8_t* block;
    uint32_t numocts;
    const int status = read_block(ctxt, contents, 1, block, numocts);
    if (status != RT_OK) {
        return status;
    }
    block[numocts] = 0;
    *text = reinterpret_cast<char*>(block);
    return RT_OK;
}

template <typename Character>
Character join_character(const uint8_t* octets) {
    Character character = 0;
    for (size_t i = 0; i < sizeof(Character); ++i) {
        character = static_cast<Character>(character << 8 | octets[i]);
    }
    return character;
}

// The block is filled as read and turned into host order in place, which never overtakes what is yet to be
// read.
template <typename Character>
void to_host_order(uint8_t* block, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        const Character character = join_character<Character>(block + i * sizeof(Character));
        reinterpret_cast<Character*>(block)[i] = character;
    }
}

template <typename Character, typename String>
int read_wide_text(ASN1CTXT* ctxt, const StringContents& contents, String* value) {
    *value = String{};
    if (announces_nothing(contents)) {
        return RT_OK;
    }
    uint32_t numocts;
    if (contents.count == 0) {
        return read_contents(ctxt, contents, nullptr, numocts);
    }
    uint8_t* block;
    const int status = read_block(ctxt, contents, 0, block, numocts);
    if (status != RT_OK) {
        return status;
    }
    value->nchars = static_cast<uint32_t>(numocts / sizeof(Character));
    value->data = reinterpret_cast<Character*>(block);
    to_host_order<Character>(block, value->nchars);
    return RT_OK;
}

int read_octet_string(ASN1CTXT* ctxt, const StringContents& contents, const uint8_t** data,
                      uint32_t* numocts) {
    *data = nullptr;
    *numocts = 0;
    if (announces_nothing(contents)) {
        return RT_OK;
    }
    if ((ctxt->flags & RT_F_FASTCOPY) != 0 && !contents.constructed && contents.length >= 0) {
        *data = contents_here(ctxt, contents.count);
        *numocts = contents.count;
        ctxt->buffer.byteIndex += contents.count;
        return RT_OK;
    }
    uint8_t* block;
    uint32_t count;
    const int status = read_block(ctxt, contents, 0, block, count);
    if (status != RT_OK) {
        return status;
    }
    *data = block;
    *numocts = count;
    return RT_OK;
}

// Walks segments up to the end-of-contents octets.
int measure_segments(ASN1CTXT* ctxt, ASN1TAG tag, uint32_t& count, uint32_t& total) {
    const uint32_t start = ctxt->buffer.byteIndex;
    count = 0;
    for (;;) {
        ASN1TAG found;
        int length;
        const int status = xd_tag_len(ctxt, &found, &length, XM_ADVANCE);
        if (status != RT_OK) {
            return status;
        }
        if (found != 0 && found != tag) {
            return RT_E_BADTAG;
        }
        if (found == 0 && length == 0) {
            break;
        }
        count += length > 0 ? static_cast<uint32_t>(length) : 0;
        step_over(ctxt, length);
    }
    total = ctxt->buffer.byteIndex - start - 2;
    return RT_OK;
}

}  // namespace

extern "C" {

int xd_charstr(ASN1CTXT* ctxt, char** text, ASN1TagType tagging, ASN1TAG tag, int length) {
    StringContents contents;
    int status = begin_string(ctxt, identifier_of(tag), tagging, length, contents);
    if (status == RT_OK) {
        status = read_text(ctxt, contents, text);
    }
    return record(ctxt, status);
}

int xd_16BitCharStr(ASN1CTXT* ctxt, ASN1_16BITCHARSTRING* value, ASN1TagType tagging, ASN1TAG tag,
                    int length) {
    StringContents contents;
    int status = begin_string(ctxt, identifier_of(tag), tagging, length, contents);
    if (status == RT_OK) {
        status = read_wide_text<uint16_t>(ctxt, contents, value);
    }
    return record(ctxt, status);
}

int xd_32BitCharStr(ASN1CTXT* ctxt, ASN1_32BITCHARSTRING* value, ASN1TagType tagging, ASN1TAG tag,
                    int length) {
    StringContents contents;
    int status = begin_string(ctxt, identifier_of(tag), tagging, length, contents);
    if (status == RT_OK) {
        status = read_wide_text<uint32_t>(ctxt, contents, value);
    }
    return record(ctxt, status);
}

int xd_octstr(ASN1CTXT* ctxt, const uint8_t** data, uint32_t* numocts, ASN1TagType tagging, int length) {
    StringContents contents;
    int status = begin_string(ctxt, kOctetString, tagging, length, contents);
    if (status == RT_OK) {
        status = read_octet_string(ctxt, contents, data, numocts);
    }
    return record(ctxt, status);
}

int xd_octstr_s(ASN1CTXT* ctxt, uint8_t* data, uint32_t* numocts, ASN1TagType tagging, int length) {
    const int status =
        tagging == ASN1EXPL ? read_segment(ctxt, data, *numocts) : read_octets(ctxt, data, *numocts, length);
    return record(ctxt, status);
}

int xd_consStrIndefLenAndSize(ASN1CTXT* ctxt, ASN1TAG tag, uint32_t* count, uint32_t* total) {
    ASN1BUFSAVE before;
    xu_SaveBufferState(ctxt, &before);
    const int status = measure_segments(ctxt, tag, *count, *total);
    xu_RestoreBufferState(ctxt, &before);
    return status;
}

}  // extern "C"
