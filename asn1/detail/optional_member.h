#pragma once

// Optional members, which are null when absent.

namespace Quillmark::detail {

/// Both absent, or both there and equal.
template <class V>
bool same_optional(const V* left, const V* right) {
    if (left == nullptr || right == nullptr) {
        return left == right;
    }
    return *left == *right;
}

}  // namespace Quillmark::detail
