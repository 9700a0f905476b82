#pragma once

// What the laws of the fuzz targets are written with. A law that does not hold ends the program, which the
// fuzzer reports together with the input.

#include <cstdint>
#include <exception>
#include <initializer_list>
#include <span>
#include <string>

#include "values/blob.h"
#include "values/result.h"

namespace Quillmark::fuzz {

using Octets = std::span<const std::uint8_t>;

/// Ends the program and says which law was broken.
[[noreturn]] void broken(const std::string& law);

inline void require(bool holds, const char* law) {
    if (!holds) {
        broken(law);
    }
}

/// The result codes that an operation may throw.
using Codes = std::initializer_list<HRESULT>;

/// Runs `call`. Returns `S_OK`, or what it threw, which must be one of `codes`.
template <class Call>
HRESULT attempt(const char* operation, Codes codes, Call&& call) {
    try {
        call();
        return S_OK;
    } catch (const CAtlException& failure) {
        for (const HRESULT code : codes) {
            if (code == failure) {
                return failure;
            }
        }
        broken(std::string(operation) + " throws " + result_name(failure));
    } catch (const std::exception& failure) {
        broken(std::string(operation) + " throws " + failure.what());
    }
}

/// Runs `call`, which must not throw.
template <class Call>
void must(const char* operation, Call&& call) {
    attempt(operation, {}, call);
}

/// A blob of exactly these octets, so that a sanitizer sees a read behind them.
inline CBlob blob_of(Octets octets) {
    return CBlob(octets.data(), octets.size());
}

inline Octets view(const CBlob& blob) {
    return {blob.pbData(), blob.cbData()};
}

}  // namespace Quillmark::fuzz
