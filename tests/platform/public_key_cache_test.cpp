// The cache of public keys by itself.

#include "platform/detail/public_key_cache.h"

#include "tests/platform/service.h"

namespace Quillmark::test {
namespace {

Octets info(std::uint8_t number) {
    return {0x30, 0x01, number};
}

class Cache : public testing::Test {
  protected:
    KeyPointer key_{EVP_PKEY_new()};
    PublicKeyCache cache_;
};

TEST_F(Cache, FindsWhatWasInserted) {
    EXPECT_EQ(cache_.find(info(1)), nullptr);
    cache_.insert(info(1), key_.get());
    EXPECT_EQ(cache_.find(info(1)).get(), key_.get());
    EXPECT_EQ(cache_.find(info(2)), nullptr);
}

TEST_F(Cache, DropsTheLeastRecentlyUsedKey) {
    for (std::size_t i = 0; i < PublicKeyCache::kCapacity; ++i) {
        cache_.insert(info(static_cast<std::uint8_t>(i)), key_.get());
    }
    EXPECT_NE(cache_.find(info(0)), nullptr);  // now the second key is the oldest
    cache_.insert(info(200), key_.get());
    EXPECT_NE(cache_.find(info(0)), nullptr);
    EXPECT_EQ(cache_.find(info(1)), nullptr);
    EXPECT_NE(cache_.find(info(2)), nullptr);
    EXPECT_NE(cache_.find(info(200)), nullptr);
}

TEST_F(Cache, KeepsOneEntryForAKeyInsertedTwice) {
    cache_.insert(info(0), key_.get());
    for (std::size_t i = 0; i < 2 * PublicKeyCache::kCapacity; ++i) {
        cache_.insert(info(1), key_.get());
    }
    EXPECT_NE(cache_.find(info(0)), nullptr);
}

}  // namespace
}  // namespace Quillmark::test
