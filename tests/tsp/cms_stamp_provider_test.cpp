// Who holds a reference on the provider of the signer's key: a stamp has one of its own from `sign` on, and
// so has each copy.

#include <gtest/gtest.h>

#include <memory>
#include <optional>

#include "tests/support/blob.h"
#include "tests/support/message_service.h"
#include "tests/support/provider_calls.h"
#include "tests/support/result_code.h"
#include "tests/support/sample_stamp.h"
#include "tests/support/test_keys.h"
#include "tests/tsp/signed_stamp.h"
#include "tsp/cms_stamp.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob;
using test::blob_of;
using test::certificate;
using test::kStampTime;
using test::MessageService;
using test::ProviderCalls;
using test::sample_stamp;
using test::sign;
using test::signed_stamp;
using test::TestKey;
using test::unsigned_stamp;
using test::verifies;

using References = ProviderCalls::List;

constexpr HRESULT kInvalidHandle = HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE);

/// A key that can be given back before the end of the object.
class OwnedKey {
  public:
    OwnedKey() : key_(std::in_place, "tsa_p256"), provider_(key_->provider()) {}

    HCRYPTPROV provider() const { return provider_; }
    void give_back() { key_.reset(); }

  private:
    std::optional<TestKey> key_;
    HCRYPTPROV provider_;
};

/// Whether somebody still holds a reference on the provider.
bool is_open(HCRYPTPROV provider) {
    const bool open = CryptContextAddRef(provider, nullptr, 0) != 0;
    if (open) {
        CryptReleaseContext(provider, 0);
    }
    return open;
}

TEST(StampProvider, IsHeldFromSigningToTheEnd) {
    OwnedKey key;
    ProviderCalls calls;
    {
        CMSStamp stamp = unsigned_stamp();
        sign(stamp, key.provider());
        EXPECT_EQ(calls.list(), (References{{"AddRef", key.provider(), true}}));
        key.give_back();
        stamp.put_content(blob("04 01 cc"));
        EXPECT_TRUE(verifies(stamp)) << "signed without the owner of the key";
        calls.forget();
    }
    EXPECT_EQ(calls.list(), (References{{"Release", key.provider(), true}}));
    EXPECT_FALSE(is_open(key.provider()));
}

TEST(StampProvider, IsGivenBackByClear) {
    OwnedKey key;
    CMSStamp stamp = unsigned_stamp();
    sign(stamp, key.provider());
    ProviderCalls calls;
    stamp.clear();
    EXPECT_EQ(calls.list(), (References{{"Release", key.provider(), true}}));
}

TEST(StampProvider, IsNoneBeforeSigning) {
    ProviderCalls calls;
    {
        CMSStamp stamp = unsigned_stamp();
        stamp.decode(blob_of(sample_stamp()));
        stamp.clear();
    }
    EXPECT_TRUE(calls.list().empty());
}

TEST(StampProvider, OfTheOldSignerIsReleasedBeforeTheNewOneIsTaken) {
    OwnedKey first;
    OwnedKey second;
    CMSStamp stamp = unsigned_stamp();
    sign(stamp, first.provider());
    ProviderCalls calls;
    sign(stamp, second.provider());
    EXPECT_EQ(calls.list(),
              (References{{"Release", first.provider(), true}, {"AddRef", second.provider(), true}}));
    first.give_back();
    EXPECT_FALSE(is_open(first.provider()));
    EXPECT_TRUE(verifies(stamp));
}

// Intended: the old reference goes before the new one is sure. With the owner's gone the provider ends
// between the two.
TEST(StampProvider, HeldByTheStampAloneCannotBeSetUpAgain) {
    OwnedKey key;
    CMSStamp stamp = unsigned_stamp();
    sign(stamp, key.provider());
    key.give_back();
    const CBlob before = stamp.encode();
    EXPECT_CODE(kInvalidHandle, sign(stamp, key.provider()));
    EXPECT_EQ(stamp.encode(), before);
    EXPECT_TRUE(verifies(stamp));
    EXPECT_CODE(kInvalidHandle, stamp.put_signingTime(kStampTime)) << "the handle is a stale one";
    OwnedKey other;
    sign(stamp, other.provider());
    EXPECT_TRUE(verifies(stamp));
}

// Intended: a provider that is refused leaves a handle that was released, and the end of the object releases
// it once more; while others hold references, that takes one of theirs.
TEST(StampProvider, IsReleasedTwiceAfterARefusal) {
    OwnedKey key;
    ProviderCalls calls;
    {
        CMSStamp stamp = unsigned_stamp();
        sign(stamp, key.provider());
        calls.forget();
        EXPECT_CODE(kInvalidHandle, sign(stamp, 0));
        EXPECT_EQ(calls.list(), (References{{"Release", key.provider(), true}, {"AddRef", 0, false}}));
        stamp.put_content(blob("04 01 cc"));
        EXPECT_TRUE(verifies(stamp)) << "by the reference of the owner";
        calls.forget();
    }
    EXPECT_EQ(calls.list(), (References{{"Release", key.provider(), true}}));
    EXPECT_FALSE(is_open(key.provider())) << "it was the owner's";
}

TEST(StampProvider, ThatIsStaleIsReleasedInVain) {
    OwnedKey key;
    ProviderCalls calls;
    {
        CMSStamp stamp = unsigned_stamp();
        sign(stamp, key.provider());
        key.give_back();
        EXPECT_CODE(kInvalidHandle, sign(stamp, 0));
        calls.forget();
    }
    EXPECT_EQ(calls.list(), (References{{"Release", key.provider(), false}}));
}

TEST(StampCopy, HasAReferenceOfItsOwn) {
    OwnedKey key;
    auto original = std::make_unique<CMSStamp>(unsigned_stamp());
    sign(*original, key.provider());
    ProviderCalls calls;
    {
        CMSStamp copy(*original);
        EXPECT_EQ(calls.list(), (References{{"AddRef", key.provider(), true}}));
        original.reset();
        key.give_back();
        copy.put_signingTime(CDateTime(2030u, 1u, 1u, 0u, 0u, 0u, 0u, 0u));
        EXPECT_TRUE(verifies(copy)) << "signed with the reference of the copy";
        calls.forget();
    }
    EXPECT_EQ(calls.list(), (References{{"Release", key.provider(), true}}));
    EXPECT_FALSE(is_open(key.provider()));
}

// Intended: asked for without a test, and a refusal is not looked at.
TEST(StampCopy, AsksForAReferenceOnNoProviderToo) {
    const CMSStamp stamp = unsigned_stamp();
    ProviderCalls calls;
    {
        const CMSStamp copy(stamp);
        CMSStamp assigned;
        assigned = stamp;
    }
    EXPECT_EQ(calls.list(), (References{{"AddRef", 0, false}, {"AddRef", 0, false}}));
}

// Intended: the handle is copied though the reference was refused.
TEST(StampCopy, OfAStaleProviderHasTheMessageAndCannotSign) {
    OwnedKey key;
    CMSStamp stamp = unsigned_stamp();
    sign(stamp, key.provider());
    key.give_back();
    EXPECT_CODE(kInvalidHandle, sign(stamp, 0));
    ProviderCalls calls;
    {
        const CMSStamp copy(stamp);
        EXPECT_EQ(copy.encode(), stamp.encode());
        EXPECT_TRUE(verifies(copy));
        EXPECT_CODE(kInvalidHandle, copy.put_content(blob("04 00")));
    }
    EXPECT_EQ(calls.list(),
              (References{{"AddRef", key.provider(), false}, {"Release", key.provider(), false}}));
}

TEST(StampAssignment, ReleasesTheOldProviderBeforeItTakesTheNewOne) {
    OwnedKey first;
    OwnedKey second;
    CMSStamp stamp = unsigned_stamp();
    CMSStamp other = unsigned_stamp();
    sign(stamp, first.provider());
    sign(other, second.provider());
    ProviderCalls calls;
    stamp = other;
    EXPECT_EQ(calls.list(),
              (References{{"Release", first.provider(), true}, {"AddRef", second.provider(), true}}));
    first.give_back();
    EXPECT_FALSE(is_open(first.provider()));
}

TEST(StampAssignment, ToItselfTouchesNoReference) {
    OwnedKey key;
    CMSStamp stamp = unsigned_stamp();
    sign(stamp, key.provider());
    const CMSStamp& self = stamp;
    MessageService service;
    ProviderCalls calls;
    stamp = self;
    EXPECT_TRUE(calls.list().empty());
    EXPECT_TRUE(service.calls().empty());
}

TEST(StampAssignment, OfACopyWithTheSameProviderKeepsIt) {
    OwnedKey key;
    {
        CMSStamp stamp = unsigned_stamp();
        sign(stamp, key.provider());
        CMSStamp copy(stamp);
        key.give_back();
        stamp = copy;
        stamp.put_content(blob("04 00"));
        EXPECT_TRUE(verifies(stamp));
    }
    EXPECT_FALSE(is_open(key.provider()));
}

TEST(StampCopying, OpensNoMessage) {
    const CMSStamp stamp = signed_stamp();
    CMSStamp assigned;
    MessageService service;
    const CMSStamp copy(stamp);
    assigned = stamp;
    EXPECT_TRUE(service.calls().empty());
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
