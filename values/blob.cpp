#include "values/blob.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

namespace Quillmark {

namespace {

using Storage = std::unique_ptr<unsigned char[]>;

// Storage whose bytes are not initialised.
Storage allocate(unsigned long size) {
    return Storage(new unsigned char[size]);
}

// The library functions must not be given a null pointer, not even with a count of 0.
void copy_bytes(unsigned char* to, const unsigned char* from, unsigned long count) {
    if (count != 0) {
        std::memcpy(to, from, count);
    }
}

bool same_bytes(const unsigned char* left, const unsigned char* right, unsigned long count) {
    return count == 0 || std::memcmp(left, right, count) == 0;
}

// Below, at or above 0 as `left` is smaller than, equal to or greater than `right`.
int order(const CBlob& left, const CBlob& right) {
    const unsigned long common = std::min(left.cbData(), right.cbData());
    if (!same_bytes(left.pbData(), right.pbData(), common)) {
        return std::memcmp(left.pbData(), right.pbData(), common);
    }
    // Intended: the difference is cut to 32 bits, so sizes a multiple of 2^32 apart rank equal.
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(left.cbData() - right.cbData()));
}

}  // namespace

CBlob::CBlob() noexcept : cbData_(0) {
    static_assert(offsetof(CBlob, cbData_) == 0 && offsetof(CBlob, pbData_) == 8);
}

CBlob::CBlob(const unsigned char* data, unsigned long size) : cbData_(0) {
    assign(data, size);
}

CBlob::CBlob(unsigned long size) : cbData_(size), pbData_(new unsigned char[size]()) {}

CBlob::CBlob(const CBlob& other) : CBlob(other.pbData(), other.cbData_) {}

CBlob& CBlob::operator=(const CBlob& other) {
    assign(other.pbData(), other.cbData_);
    return *this;
}

CBlob::~CBlob() = default;

unsigned long CBlob::cbData() const noexcept {
    return cbData_;
}

unsigned char* CBlob::pbData() const noexcept {
    return pbData_.get();
}

void CBlob::assign(const unsigned char* data, unsigned long size) {
    Storage fresh;
    if (size != 0) {
        fresh = allocate(size);
        copy_bytes(fresh.get(), data, size);
    }
    pbData_ = std::move(fresh);
    cbData_ = size;
}

void CBlob::resize_to(unsigned long size) {
    if (size > cbData_) {
        Storage fresh = allocate(size);
        copy_bytes(fresh.get(), pbData(), cbData_);
        pbData_ = std::move(fresh);
    }
    cbData_ = size;
}

void CBlob::clear() noexcept {
    cbData_ = 0;
}

void CBlob::swap(CBlob& other) noexcept {
    std::swap(cbData_, other.cbData_);
    pbData_.swap(other.pbData_);
}

void CBlob::reverse() noexcept {
    std::reverse(pbData(), pbData() + cbData_);
}

CBlob& CBlob::operator+=(const CBlob& other) {
    const unsigned long old_size = cbData_;
    resize_to(old_size + other.cbData_);
    // `other` may be this blob, which is twice its size by now: never copy more than was added.
    copy_bytes(pbData() + old_size, other.pbData(), std::min(other.cbData_, cbData_ - old_size));
    return *this;
}

bool CBlob::operator==(const CBlob& other) const noexcept {
    return cbData_ == other.cbData_ && same_bytes(pbData(), other.pbData(), cbData_);
}

bool CBlob::operator!=(const CBlob& other) const noexcept {
    return !(*this == other);
}

bool CBlob::operator<(const CBlob& other) const noexcept {
    return order(*this, other) < 0;
}

bool CBlob::operator<=(const CBlob& other) const noexcept {
    return order(*this, other) <= 0;
}

bool CBlob::operator>(const CBlob& other) const noexcept {
    return order(*this, other) > 0;
}

bool CBlob::operator>=(const CBlob& other) const noexcept {
    return order(*this, other) >= 0;
}

}  // namespace Quillmark
