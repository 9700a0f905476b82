#pragma once

// Runs of bytes that cross the library's boundary. Every encoded message travels as a `CBlob`.
//
//     CBlob request;
//     request.readFromFile("request.tsq");
//     std::puts(request.writeToHexString(0).c_str());

#include <list>
#include <memory>
#include <utility>

#include "values/export.h"
#include "values/string_proxy.h"

namespace Quillmark {

/// An owned run of bytes with value semantics. There is no capacity on record: after a shrink the storage
/// is larger than `cbData`, and growing again reallocates all the same. A failed allocation surfaces as
/// `std::bad_alloc` and leaves the blob as it was.
class QUILLMARK_API CBlob {
  public:
    CBlob() noexcept;
    /// Copies `size` bytes; with `size` 0 `data` is not read and the storage is null.
    CBlob(const unsigned char* data, unsigned long size);
    /// `size` zero bytes. The storage is never null, not even for size 0.
    explicit CBlob(unsigned long size);
    CBlob(const CBlob& other);
    /// Takes the storage of `other`, which is empty afterwards. As with copies, the storage is null when
    /// there are no bytes.
    CBlob(CBlob&& other) noexcept : CBlob() {
        if (other.cbData_ != 0) {
            swap(other);
        }
    }
    /// As `assign`.
    CBlob& operator=(const CBlob& other);
    CBlob& operator=(CBlob&& other) noexcept {
        CBlob taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~CBlob();

    /// The size in bytes.
    unsigned long cbData() const noexcept;
    /// The storage, writable; may be non-null in an empty blob. Lent: valid until the blob is changed.
    unsigned char* pbData() const noexcept;

    /// Copies `size` bytes; `data` may point into this blob. Size 0 frees the storage.
    void assign(const unsigned char* data, unsigned long size);
    /// Growing moves the bytes to fresh storage, whose added part is not initialised; otherwise only the
    /// size changes.
    void resize_to(unsigned long size);
    /// Sets the size to 0 and keeps the storage.
    void clear() noexcept;
    void swap(CBlob& other) noexcept;
    /// Turns the order of the bytes round, in place.
    void reverse() noexcept;
    /// Appends the bytes of `other`. Appending a blob to itself doubles the size; callers do not rely on
    /// what the second half then holds.
    CBlob& operator+=(const CBlob& other);

    /// Same size and same bytes, wherever they are stored.
    bool operator==(const CBlob& other) const noexcept;
    bool operator!=(const CBlob& other) const noexcept;
    /// Bytewise order, unsigned; of two blobs with a common prefix the shorter is smaller. The difference of
    /// the sizes counts as a 32-bit signed number.
    bool operator<(const CBlob& other) const noexcept;
    bool operator<=(const CBlob& other) const noexcept;
    bool operator>(const CBlob& other) const noexcept;
    bool operator>=(const CBlob& other) const noexcept;

    /// Replaces the contents by those of a file. Throws 0x80070002 (`ERROR_FILE_NOT_FOUND`) when it cannot be
    /// opened, 0x80070570 (`ERROR_FILE_CORRUPT`) when it cannot be read; the size is then 0 and the storage
    /// kept.
    void readFromFile(const char* path);
    /// The same for a path in wide characters; one that cannot be converted throws the platform's code, or
    /// 0x80070570 if there is none.
    void readFromFile(const wchar_t* path);
    /// Writes the bytes to a file, truncating it first. Throws 0x80070002 when it cannot be opened; a failing
    /// write or close is not reported.
    void writeToFile(const char* path) const;
    /// The same for a path in wide characters.
    void writeToFile(const wchar_t* path) const;

    /// Replaces the contents by pairs of hexadecimal digits in either case, white space between pairs
    /// skipped. Parsing stops without failure at the first thing that is no pair.
    void readFromHexString(const char* text);
    /// Upper-case digits; with `group` above 0 a blank stands before each byte whose index is a non-zero
    /// multiple of it.
    CStringProxy writeToHexString(unsigned long group) const;

  private:
    unsigned long cbData_;
    std::unique_ptr<unsigned char[]> pbData_;
};

static_assert(sizeof(CBlob) == 16, "a blob is its size and its storage");

/// Blobs in insertion order, with the semantics of the standard list.
class CBlobList : public std::list<CBlob> {
  public:
    using std::list<CBlob>::list;

    CBlobList() = default;
    CBlobList(const CBlobList& other) = default;
    CBlobList(CBlobList&& other) = default;
    ~CBlobList() = default;
    /// A failing copy leaves this list as it was.
    CBlobList& operator=(CBlobList other) noexcept {
        swap(other);
        return *this;
    }
};

static_assert(sizeof(CBlobList) == 24, "a list is its two links and its count");

}  // namespace Quillmark
