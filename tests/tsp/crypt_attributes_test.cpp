// Attributes and certificates on their way to the platform service and back.

#include "tsp/detail/crypt_attributes.h"

#include <gtest/gtest.h>

#include "tests/support/blob.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::blob;
using test::hex;

CAttribute attribute(const char* oid, std::initializer_list<const char*> values) {
    CAttribute result(oid);
    for (const char* value : values) {
        result.add(blob(value));
    }
    return result;
}

std::string hex_of(const CRYPT_ATTR_BLOB& octets) {
    return test::to_hex(octets.pbData, octets.cbData);
}

struct Stores {
    std::vector<CBlob> oids;
    std::vector<CRYPT_ATTR_BLOB> blobs;
    std::vector<CBlob> values;
};

std::vector<CRYPT_ATTRIBUTE> convert(const CAttributes& attributes, Stores& stores) {
    return LODESTtoCRYPTAttributes(&attributes, stores.oids, stores.blobs, stores.values);
}

TEST(LodestToCryptAttributes, KeepsOrderOidsAndValues) {
    CAttributes attributes;
    attributes.push_back(attribute("1.2.3", {"02 01 01"}));
    attributes.push_back(attribute("1.2.4", {"02 01 02", "02 01 03"}));
    Stores stores;
    const auto records = convert(attributes, stores);
    ASSERT_EQ(records.size(), 2u);
    EXPECT_STREQ(records[0].pszObjId, "1.2.3");
    ASSERT_EQ(records[0].cValue, 1u);
    EXPECT_EQ(hex_of(records[0].rgValue[0]), "02 01 01");
    EXPECT_STREQ(records[1].pszObjId, "1.2.4");
    ASSERT_EQ(records[1].cValue, 2u);
    EXPECT_EQ(hex_of(records[1].rgValue[0]), "02 01 02");
    EXPECT_EQ(hex_of(records[1].rgValue[1]), "02 01 03");
}

TEST(LodestToCryptAttributes, CopiesIntoTheStores) {
    CAttributes attributes;
    attributes.push_back(attribute("1.2.3", {"02 01 01"}));
    Stores stores;
    const auto records = convert(attributes, stores);
    attributes.clear();
    EXPECT_EQ(reinterpret_cast<unsigned char*>(records[0].pszObjId), stores.oids[0].pbData());
    EXPECT_EQ(stores.oids[0].cbData(), sizeof "1.2.3");
    EXPECT_EQ(records[0].rgValue[0].pbData, stores.values[0].pbData());
    EXPECT_EQ(hex_of(records[0].rgValue[0]), "02 01 01");
}

TEST(LodestToCryptAttributes, ManyValuesStayWhereTheRecordsPoint) {
    CAttributes attributes;
    for (int i = 0; i < 40; ++i) {
        attributes.push_back(attribute("1.2.3", {"02 01 01", "02 01 02", "02 01 03"}));
    }
    Stores stores;
    for (const CRYPT_ATTRIBUTE& record : convert(attributes, stores)) {
        EXPECT_STREQ(record.pszObjId, "1.2.3");
        ASSERT_EQ(record.cValue, 3u);
        EXPECT_EQ(hex_of(record.rgValue[2]), "02 01 03");
    }
}

TEST(LodestToCryptAttributes, AnAttributeWithoutValuesHasNoRecords) {
    CAttributes attributes;
    attributes.push_back(attribute("1.2.3", {}));
    attributes.push_back(attribute("1.2.4", {"05 00"}));
    attributes.push_back(attribute("1.2.5", {}));
    Stores stores;
    const auto records = convert(attributes, stores);
    ASSERT_EQ(records.size(), 3u);
    for (const std::size_t i : {0, 2}) {
        EXPECT_EQ(records[i].cValue, 0u);
        EXPECT_EQ(records[i].rgValue, nullptr) << "not the end of those of the attribute before";
    }
}

TEST(LodestToCryptAttributes, NothingGivesNothing) {
    Stores stores;
    EXPECT_TRUE(convert(CAttributes(), stores).empty());
    EXPECT_TRUE(LODESTtoCRYPTAttributes(nullptr, stores.oids, stores.blobs, stores.values).empty());
}

TEST(LodestToCryptCerts, KeepsOrderAndCopies) {
    CBlobList certificates;
    certificates.push_back(blob("30 01 01"));
    certificates.push_back(blob("30 01 02"));
    std::vector<CBlob> store;
    const auto records = LODESTToCRYPTCerts(&certificates, store);
    certificates.clear();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(hex_of(records[0]), "30 01 01");
    EXPECT_EQ(hex_of(records[1]), "30 01 02");
    EXPECT_EQ(records[1].pbData, store[1].pbData());
}

TEST(LodestToCryptCerts, NothingGivesNothing) {
    const CBlobList none;
    std::vector<CBlob> store;
    EXPECT_TRUE(LODESTToCRYPTCerts(&none, store).empty());
    EXPECT_TRUE(LODESTToCRYPTCerts(nullptr, store).empty());
}

TEST(CryptToLodestAttributes, GivesBackWhatWentThere) {
    CAttributes attributes;
    attributes.push_back(attribute("1.2.3", {"02 01 01"}));
    attributes.push_back(attribute("1.2.4", {"02 01 02", "02 01 03"}));
    attributes.push_back(attribute("1.2.5", {}));
    Stores stores;
    auto records = convert(attributes, stores);
    CRYPT_ATTRIBUTES list{.cAttr = static_cast<DWORD>(records.size()), .rgAttr = records.data()};
    EXPECT_TRUE(CRYPTToLODESTAttributes(&list) == attributes);
}

TEST(CryptToLodestAttributes, AnEmptyListIsEmpty) {
    CRYPT_ATTRIBUTES list{};
    EXPECT_TRUE(CRYPTToLODESTAttributes(&list).empty());
}

}  // namespace
}  // namespace Quillmark::PKI::TSP
