#include "asn1/choice.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <type_traits>

#include "tests/support/blob.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;

static_assert(sizeof(Choice) == 24);
static_assert(std::has_virtual_destructor_v<Choice> && std::has_virtual_destructor_v<ChoiceValueTraits>);

/// A value that counts how many of its kind there are, and whose copies can fail.
class Counted {
  public:
    explicit Counted(int number) : number_(number) { ++count; }
    Counted(const Counted& other) : number_(other.number_) {
        if (fail_copies) {
            throw std::bad_alloc();
        }
        ++count;
    }
    Counted& operator=(const Counted&) = default;
    ~Counted() { --count; }

    int number() const { return number_; }

    static inline int count = 0;
    static inline bool fail_copies = false;

  private:
    int number_;
};

/// Slots 1 and 3 have values, 2 has no traits, all others have no value.
class TestChoice final : public Choice {
  public:
    TestChoice() = default;
    TestChoice(const TestChoice& other) : Choice() { copy_from(other); }
    ~TestChoice() override { delete_value(); }

    const ChoiceValueTraits* findTraits(unsigned int type) const override {
        switch (type) {
            case 1:
                return &ChoiceValueTraitsT<int, 1>::instance;
            case 2:
                return nullptr;
            case 3:
                return &ChoiceValueTraitsT<Counted, 3>::instance;
            default:
                return &NoChoiceValueTraits::instance;
        }
    }
};

TEST(Choice, StartsWithoutValue) {
    const TestChoice choice;
    EXPECT_EQ(choice.get_type(), 0u);
    EXPECT_EQ(choice.get<int>(1), nullptr);
    EXPECT_EQ(choice.get<Counted>(3), nullptr);
    EXPECT_EQ(choice.get<void*>(0), nullptr);
}

TEST(Choice, HoldsACopy) {
    TestChoice choice;
    int number = 5;
    choice.put(1, &number);
    number = 6;
    EXPECT_EQ(choice.get_type(), 1u);
    EXPECT_EQ(*choice.get<int>(1), 5);
    EXPECT_EQ(choice.get<Counted>(3), nullptr);
}

TEST(Choice, FreesTheOldValue) {
    {
        TestChoice choice;
        choice.put(3, std::make_unique<Counted>(1).get());
        EXPECT_EQ(Counted::count, 1);
        choice.put(3, std::make_unique<Counted>(2).get());
        EXPECT_EQ(Counted::count, 1);
        EXPECT_EQ(choice.get<Counted>(3)->number(), 2);
        const int number = 5;
        choice.put(1, &number);
        EXPECT_EQ(Counted::count, 0);
        choice.put(3, std::make_unique<Counted>(3).get());
    }
    EXPECT_EQ(Counted::count, 0);
}

TEST(Choice, TakesAValueOfItsOwn) {
    TestChoice choice;
    choice.put(3, std::make_unique<Counted>(1).get());
    choice.put(3, choice.get<Counted>(3));
    EXPECT_EQ(choice.get<Counted>(3)->number(), 1);
    EXPECT_EQ(Counted::count, 1);
}

TEST(Choice, KeepsTheOldValueWhenCopyingFails) {
    TestChoice choice;
    const int number = 5;
    choice.put(1, &number);
    const Counted value(1);
    Counted::fail_copies = true;
    EXPECT_THROW(choice.put(3, &value), std::bad_alloc);
    Counted::fail_copies = false;
    EXPECT_EQ(choice.get_type(), 1u);
    EXPECT_EQ(*choice.get<int>(1), 5);
}

TEST(Choice, RefusesSlotWithoutTraits) {
    TestChoice choice;
    const int number = 5;
    choice.put(1, &number);
    EXPECT_CODE(E_INVALIDARG, choice.put(2, &number));
    EXPECT_EQ(*choice.get<int>(1), 5);
}

TEST(Choice, IsCopiedDeeply) {
    TestChoice choice;
    choice.put(3, std::make_unique<Counted>(1).get());
    const TestChoice copy(choice);
    EXPECT_EQ(copy.get_type(), 3u);
    EXPECT_NE(copy.get<Counted>(3), choice.get<Counted>(3));
    EXPECT_EQ(copy.get<Counted>(3)->number(), 1);
}

TEST(Choice, WithoutValueIsCopied) {
    const TestChoice choice;
    const TestChoice copy(choice);
    EXPECT_EQ(copy.get_type(), 0u);
    EXPECT_EQ(copy.get<void*>(0), nullptr);
}

TEST(ChoiceValueTraits, KnowTheirAlternative) {
    const ChoiceValueTraits& traits = ChoiceValueTraitsT<CBlob, 8>::instance;
    EXPECT_TRUE(traits.isType(8));
    EXPECT_FALSE(traits.isType(0));
    EXPECT_FALSE(traits.isType(7));
    const CBlob source = blob("01");
    void* value = traits.newValue(&source);
    const CBlob other = blob("02");
    traits.copyValue(value, &other);
    EXPECT_EQ(*static_cast<CBlob*>(value), other);
    traits.deleteValue(value);
    traits.deleteValue(nullptr);
}

TEST(ChoiceValueTraits, HaveASlotOfNoValue) {
    int target = 0;
    void* source = &target;
    void* value = NoChoiceValueTraits::instance.newValue(&source);
    EXPECT_EQ(*static_cast<void**>(value), &target);
    NoChoiceValueTraits::instance.deleteValue(value);
    NoChoiceValueTraits::instance.deleteValue(nullptr);
    EXPECT_TRUE(NoChoiceValueTraits::instance.isType(0));
}

}  // namespace
}  // namespace Quillmark::ASN1
