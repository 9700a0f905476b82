#pragma once

// Rows for what value objects have in common: making, copying, reading, writing, putting.

#include <functional>
#include <new>

#include "tests/robustness/operation.h"
#include "values/blob.h"

namespace Quillmark::test {

/// A row for an operation on a constant subject, which stays as it is.
template <class Make, class Use>
std::function<void(Trial&)> uses(Make make, Use use) {
    return [make, use](Trial& trial) {
        const auto subject = make();
        const CBlob before = subject.encode();
        trial.call([&] { use(subject); });
        EXPECT_EQ(subject.encode(), before);
    };
}

/// A row for putting `make_value()` into `make()` by a member function. A failure leaves what `field` tells
/// about, and the value can be put again.
template <class Make, class MakeValue, class Put, class Field>
std::function<void(Trial&)> puts(Make make, MakeValue make_value, Put put, Field field) {
    return [=](Trial& trial) {
        auto subject = make();
        const auto value = make_value();
        const auto before = field(subject);
        put(subject, value);
        const auto after = field(subject);
        EXPECT_FALSE(before == after);
        subject = make();
        const bool done = trial.call([&] { put(subject, value); });
        EXPECT_TRUE(field(subject) == (done ? after : before));
        put(subject, value);
        EXPECT_TRUE(field(subject) == after);
    };
}

/// A row for reading what `make()` encodes to into another such object. What a failure leaves can be read
/// into again.
template <class Make>
std::function<void(Trial&)> decodes(Make make) {
    return [make](Trial& trial) {
        auto subject = make();
        const CBlob der = make().encode();
        trial.call([&] { subject.decode(der); });
        subject.decode(der);
        EXPECT_EQ(subject.encode(), der);
    };
}

/// A row for making an object.
template <class Make>
std::function<void(Trial&)> makes(Make make) {
    return [make](Trial& trial) { trial.call([&] { make(); }); };
}

/// An object that is destroyed for good by `clear`, which leaves nothing to a destructor.
template <class Object>
void make_and_clear() {
    struct Storage {
        alignas(Object) unsigned char octets[sizeof(Object)];
    } storage;
    (new (storage.octets) Object())->clear();
}

/// A row for assigning what `make()` gives to what `make_old()` gives: it is one of the two, whole.
template <class Make, class MakeOld>
std::function<void(Trial&)> assigns(Make make, MakeOld make_old) {
    return [=](Trial& trial) {
        const auto other = make();
        auto subject = make_old();
        const CBlob before = subject.encode();
        const bool done = trial.call([&] { subject = other; });
        EXPECT_EQ(subject.encode(), done ? other.encode() : before);
    };
}

}  // namespace Quillmark::test
