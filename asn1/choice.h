#pragma once

// Values of ASN.1 CHOICE types: a type number, which is the `t` of the generated record, and a pointer to a
// value whose type follows from the number. A stateless traits object for each alternative knows how to copy
// and free it. A class of choices derives from `Choice` and names its alternatives in `findTraits`.

#include <cstdint>

namespace Quillmark::ASN1 {

/// What one alternative knows about its values.
class ChoiceValueTraits {
  public:
    constexpr ChoiceValueTraits() = default;
    virtual ~ChoiceValueTraits() = default;

    virtual bool isType(unsigned int type) const = 0;
    /// Destroys a value that `newValue` made; null is allowed.
    virtual void deleteValue(void* value) const = 0;
    virtual void* newValue(const void* source) const = 0;
    /// Assigns the value at `source` to the one at `target`.
    virtual void copyValue(void* target, const void* source) const = 0;
};

/// The alternative of number `N` with values of type `V`.
template <class V, unsigned int N>
class ChoiceValueTraitsT : public ChoiceValueTraits {
  public:
    constexpr ChoiceValueTraitsT() = default;

    bool isType(unsigned int type) const override { return type == N; }
    void deleteValue(void* value) const override { delete static_cast<V*>(value); }
    void* newValue(const void* source) const override { return new V(*static_cast<const V*>(source)); }
    void copyValue(void* target, const void* source) const override {
        *static_cast<V*>(target) = *static_cast<const V*>(source);
    }

    /// The one object of this alternative, ready before any code runs and never destroyed.
    static const ChoiceValueTraitsT& instance;
};

}  // namespace Quillmark::ASN1

namespace Quillmark::detail {

/// Holds an object whose destructor never runs.
template <class T>
union NeverDestroyed {
    constexpr NeverDestroyed() : object() {}
    ~NeverDestroyed() {}
    T object;
};

template <class V, unsigned int N>
inline NeverDestroyed<ASN1::ChoiceValueTraitsT<V, N>> choice_value_traits;

}  // namespace Quillmark::detail

namespace Quillmark::ASN1 {

template <class V, unsigned int N>
const ChoiceValueTraitsT<V, N>& ChoiceValueTraitsT<V, N>::instance = detail::choice_value_traits<V, N>.object;

/// The slot of no value, which also stands for every number without a slot.
typedef ChoiceValueTraitsT<void*, 0> NoChoiceValueTraits;

/// A value of one alternative, or none.
class Choice {
  public:
    Choice() = default;
    Choice(const Choice&) = delete;
    Choice& operator=(const Choice&) = delete;
    /// A subclass frees its value in its own destructor, while its `findTraits` can still be called.
    virtual ~Choice() = default;

    /// The traits of the alternative of that number, never null.
    virtual const ChoiceValueTraits* findTraits(unsigned int type) const = 0;

    /// 0 when there is no value.
    unsigned int get_type() const { return type_; }
    /// The value when it is the one of alternative `N`, else null.
    template <class V>
    const V* get(unsigned int type) const {
        return type_ == type ? static_cast<const V*>(value_) : nullptr;
    }
    /// Replaces the value by a copy of `*source`, which may lie inside the old value. Throws `E_INVALIDARG`
    /// when the number has no traits.
    void put(unsigned int type, const void* source);

  protected:
    /// Takes type and a copy of the value of `source`; this choice must have no value yet.
    void copy_from(const Choice& source);
    void delete_value() { findTraits(type_)->deleteValue(value_); }

  private:
    unsigned int type_ = 0;
    void* value_ = nullptr;
};

}  // namespace Quillmark::ASN1
