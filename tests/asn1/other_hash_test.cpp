#include "asn1/other_hash.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "asn1data/records.h"
#include "runtime/message_buffer.h"
#include "tests/support/blob.h"
#include "tests/support/result_code.h"

namespace Quillmark::ASN1 {
namespace {

using test::blob;
using test::hex;

static_assert(std::has_virtual_destructor_v<COtherHash>);
static_assert(sizeof(COtherHash) == 2 * sizeof(void*));

CAlgorithmIdentifier algorithm(const char* oid, const char* parameters) {
    CAlgorithmIdentifier made(oid);
    made.put_parameters(blob(parameters));
    return made;
}

COtherHashAlgAndValue hash_with_algorithm(const char* value, const char* oid, const char* parameters) {
    return COtherHashAlgAndValue(blob(value), algorithm(oid, parameters));
}

TEST(OtherHashAlgAndValue, StartsEmpty) {
    const COtherHashAlgAndValue value;
    EXPECT_EQ(value.get_hashAlgorithm(), CAlgorithmIdentifier());
    EXPECT_EQ(value.get_hashValue().cbData(), 0u);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.encode());
}

TEST(OtherHashAlgAndValue, GoesBothWays) {
    COtherHashAlgAndValue value;
    value.put_hashAlgorithm(algorithm("1.2.3", "05 00"));
    value.put_hashValue(blob("aa bb"));
    EXPECT_EQ(hex(value.encode()), "30 0c 30 06 06 02 2a 03 05 00 04 02 aa bb");
    COtherHashAlgAndValue read = hash_with_algorithm("cc", "1.2.4", "05 00");
    read.decode(value.encode());
    EXPECT_EQ(read, value);
}

TEST(OtherHashAlgAndValue, LosesParametersThatAreAbsent) {
    COtherHashAlgAndValue read = hash_with_algorithm("cc", "1.2.4", "05 00");
    read.decode(blob("30 09 30 04 06 02 2a 03 04 01 aa"));
    EXPECT_EQ(read, hash_with_algorithm("aa", "1.2.3", ""));
}

TEST(OtherHashAlgAndValue, ComparesBothFields) {
    const COtherHashAlgAndValue value = hash_with_algorithm("aa", "1.2.3", "05 00");
    EXPECT_NE(value, hash_with_algorithm("ab", "1.2.3", "05 00"));
    EXPECT_NE(value, hash_with_algorithm("aa", "1.2.4", "05 00"));
    EXPECT_NE(value, hash_with_algorithm("aa", "1.2.3", ""));
    EXPECT_EQ(value, hash_with_algorithm("aa", "1.2.3", "05 00"));
}

TEST(OtherHashAlgAndValue, ComparesValuesAlone) {
    const COtherHashAlgAndValue value = hash_with_algorithm("aa", "1.2.3", "05 00");
    EXPECT_TRUE(value.compare_hashValue(hash_with_algorithm("aa", "1.2.3", "")));
    EXPECT_TRUE(value.compare_hashValue(hash_with_algorithm("aa", "1.2.4", "")));
    EXPECT_FALSE(value.compare_hashValue(hash_with_algorithm("ab", "1.2.3", "05 00")));
}

TEST(OtherHashAlgAndValue, KeepsValueWhenDecodingFails) {
    COtherHashAlgAndValue value = hash_with_algorithm("aa", "1.2.3", "");
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(blob("30 06 30 04 06 02 2a 03")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, value.decode(blob("04 01 aa")));
    EXPECT_EQ(value, hash_with_algorithm("aa", "1.2.3", ""));
}

TEST(OtherHashAlgAndValueRecord, CopiesDeeply) {
    ASN1BERDecodeBuffer target_buffer;
    asn1data::ASN1T_OtherHashAlgAndValue target;
    const COtherHashAlgAndValue value = hash_with_algorithm("aa", "1.2.3", "05 00");
    {
        ASN1BERDecodeBuffer buffer;
        asn1data::ASN1T_OtherHashAlgAndValue source;
        ASN1T_OtherHashAlgAndValue_traits::set(buffer.getCtxtPtr(), source, value);
        ASN1T_OtherHashAlgAndValue_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    COtherHashAlgAndValue read;
    ASN1T_OtherHashAlgAndValue_traits::get(target, read);
    EXPECT_EQ(read, value);
}

TEST(OtherHash, StartsWithoutAForm) {
    const COtherHash hash;
    EXPECT_EQ(hash.get_type(), 0u);
    EXPECT_EQ(hash.get_sha1Hash(), nullptr);
    EXPECT_EQ(hash.get_otherHash(), nullptr);
}

TEST(OtherHash, HasTheFormOfItsConstructor) {
    const COtherHash sha1(blob("aa"));
    EXPECT_EQ(sha1.get_type(), 1u);
    EXPECT_EQ(hex(*sha1.get_sha1Hash()), "aa");
    EXPECT_EQ(sha1.get_otherHash(), nullptr);
    const COtherHash other(hash_with_algorithm("aa", "1.2.3", ""));
    EXPECT_EQ(other.get_type(), 2u);
    EXPECT_EQ(other.get_sha1Hash(), nullptr);
    EXPECT_EQ(*other.get_otherHash(), hash_with_algorithm("aa", "1.2.3", ""));
}

TEST(OtherHash, ChangesItsForm) {
    COtherHash hash(blob("aa"));
    hash.put_otherHash(hash_with_algorithm("bb", "1.2.3", ""));
    EXPECT_EQ(hash.get_type(), 2u);
    hash.put_sha1Hash(hash.get_otherHash()->get_hashValue());
    EXPECT_EQ(hash, COtherHash(blob("bb")));
}

TEST(OtherHash, IsReadAndWrittenInBothForms) {
    COtherHash hash;
    hash.decode(blob("04 01 aa"));
    EXPECT_EQ(hash, COtherHash(blob("aa")));
    EXPECT_EQ(hex(hash.encode()), "04 01 aa");
    hash.decode(blob("30 09 30 04 06 02 2a 03 04 01 bb"));
    EXPECT_EQ(hash, COtherHash(hash_with_algorithm("bb", "1.2.3", "")));
    EXPECT_EQ(hex(hash.encode()), "30 09 30 04 06 02 2a 03 04 01 bb");
}

TEST(OtherHash, OfNoFormIsNoFailureOfTheTraits) {
    // Intended: nothing is written, and the encoder decides.
    ASN1BERDecodeBuffer buffer;
    asn1data::ASN1T_OtherHash record;
    EXPECT_NO_THROW(ASN1T_OtherHash_traits::set(buffer.getCtxtPtr(), record, COtherHash()));
    EXPECT_EQ(record.t, 0u);
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, COtherHash().encode());
}

TEST(OtherHash, IsLeftAloneByARecordWithoutAlternative) {
    // Intended: as it was, and no failure.
    const asn1data::ASN1T_OtherHash record;
    COtherHash hash(blob("aa"));
    ASN1T_OtherHash_traits::get(record, hash);
    EXPECT_EQ(hash, COtherHash(blob("aa")));
}

TEST(OtherHash, KeepsValueWhenDecodingFails) {
    COtherHash hash(blob("aa"));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, hash.decode(CBlob()));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, hash.decode(blob("05 00")));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, hash.decode(blob("04 02 bb")));
    EXPECT_EQ(hash, COtherHash(blob("aa")));
}

TEST(OtherHash, ComparesFormAndValue) {
    EXPECT_EQ(COtherHash(), COtherHash());
    EXPECT_NE(COtherHash(), COtherHash(blob("aa")));
    EXPECT_NE(COtherHash(blob("aa")), COtherHash(blob("ab")));
    EXPECT_NE(COtherHash(blob("aa")), COtherHash(hash_with_algorithm("aa", "1.2.3", "")));
    EXPECT_EQ(COtherHash(hash_with_algorithm("aa", "1.2.3", "05 00")),
              COtherHash(hash_with_algorithm("aa", "1.2.3", "05 00")));
}

TEST(OtherHash, IsComparedByHashValue) {
    const COtherHash with_null(hash_with_algorithm("aa", "1.2.3", "05 00"));
    const COtherHash without(hash_with_algorithm("aa", "1.2.3", ""));
    EXPECT_TRUE(with_null.compare_hashValue(without));
    EXPECT_FALSE(with_null == without);
    EXPECT_FALSE(with_null.compare_hashValue(COtherHash(hash_with_algorithm("ab", "1.2.3", "05 00"))));
    EXPECT_FALSE(with_null.compare_hashValue(COtherHash(blob("aa"))));
    EXPECT_TRUE(COtherHash(blob("aa")).compare_hashValue(COtherHash(blob("aa"))));
    EXPECT_FALSE(COtherHash(blob("aa")).compare_hashValue(COtherHash(blob("ab"))));
    EXPECT_TRUE(COtherHash().compare_hashValue(COtherHash()));
}

TEST(OtherHash, IsCopiedDeeply) {
    COtherHash hash(hash_with_algorithm("aa", "1.2.3", ""));
    const COtherHash copy(hash);
    hash.put_sha1Hash(blob("bb"));
    EXPECT_EQ(*copy.get_otherHash(), hash_with_algorithm("aa", "1.2.3", ""));
    hash = copy;
    EXPECT_EQ(hash, copy);
    EXPECT_NE(hash.get_otherHash(), copy.get_otherHash());
    hash = *&hash;
    EXPECT_EQ(hash, copy);
}

TEST(OtherHash, OfNoFormIsCopied) {
    const COtherHash none;
    COtherHash copy(none);
    EXPECT_EQ(copy.get_type(), 0u);
    copy = COtherHash(blob("aa"));
    copy = none;
    EXPECT_EQ(copy.get_type(), 0u);
}

TEST(OtherHash, IsAssignedToAfterClear) {
    COtherHash hash(blob("aa"));
    hash.clear();
    hash = COtherHash(blob("bb"));
    EXPECT_EQ(hash, COtherHash(blob("bb")));
    hash.clear();
}

TEST(OtherHashRecord, CopiesDeeply) {
    ASN1BERDecodeBuffer target_buffer;
    asn1data::ASN1T_OtherHash target;
    const COtherHash hash(hash_with_algorithm("aa", "1.2.3", "05 00"));
    {
        ASN1BERDecodeBuffer buffer;
        asn1data::ASN1T_OtherHash source;
        ASN1T_OtherHash_traits::set(buffer.getCtxtPtr(), source, hash);
        ASN1T_OtherHash_traits::copy(target_buffer.getCtxtPtr(), source, target);
    }
    COtherHash read;
    ASN1T_OtherHash_traits::get(target, read);
    EXPECT_EQ(read, hash);
}

}  // namespace
}  // namespace Quillmark::ASN1
