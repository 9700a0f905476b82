// Names of keys on tokens (RFC 7512), taken apart.

#include "platform/detail/pkcs11_uri.h"

#include <gtest/gtest.h>

#include "platform/detail/error_code.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

using namespace Quillmark::platform;

struct UriCase {
    const char* name;
    const char* uri;
    const char* key;
    const char* token = "";
    const char* module_path = nullptr;
    const char* pin = nullptr;
};

void PrintTo(const UriCase& row, std::ostream* out) {
    *out << row.uri;
}

constexpr UriCase kUris[] = {
    {.name = "SchemeAlone", .uri = "pkcs11:", .key = "pkcs11:"},
    {.name = "Object", .uri = "pkcs11:object=K", .key = "pkcs11:object=K"},
    {.name = "TokenAndObject",
     .uri = "pkcs11:token=T;object=K;type=private",
     .key = "pkcs11:token=T;object=K;type=private",
     .token = "pkcs11:token=T"},
    {.name = "EveryAttributeOfTheToken",
     .uri = "pkcs11:model=M;manufacturer=F;id=%01;serial=S;token=T",
     .key = "pkcs11:model=M;manufacturer=F;id=%01;serial=S;token=T",
     .token = "pkcs11:model=M;manufacturer=F;serial=S;token=T"},
    {.name = "ModuleAndPinOfTheQuery",
     .uri = "pkcs11:token=T?module-path=/m.so&pin-value=1234",
     .key = "pkcs11:token=T",
     .token = "pkcs11:token=T",
     .module_path = "/m.so",
     .pin = "1234"},
    {.name = "QueryAlone", .uri = "pkcs11:?pin-value=1", .key = "pkcs11:", .pin = "1"},
    {.name = "PinOfThePath",
     .uri = "pkcs11:object=K;pin-value=1;type=private",
     .key = "pkcs11:object=K;type=private",
     .pin = "1"},
    {.name = "OtherQueryStays",
     .uri = "pkcs11:object=K?pin-source=file:/p&module-path=/m.so&module-name=n",
     .key = "pkcs11:object=K?pin-source=file:/p&module-name=n",
     .module_path = "/m.so"},
    {.name = "OtherQueryBehindTakenOnes",
     .uri = "pkcs11:?pin-value=1&module-name=n",
     .key = "pkcs11:?module-name=n",
     .pin = "1"},
    {.name = "PercentSigns",
     .uri = "pkcs11:?pin-value=%31%3B%C3%BC&module-path=/a%20b.so",
     .key = "pkcs11:",
     .module_path = "/a b.so",
     .pin = "1;\xC3\xBC"},
    {.name = "EmptyPin", .uri = "pkcs11:?pin-value=", .key = "pkcs11:", .pin = ""},
    {.name = "EqualsSignInTheValue", .uri = "pkcs11:?pin-value=a=b", .key = "pkcs11:", .pin = "a=b"},
    {.name = "EmptyAttributes", .uri = "pkcs11:;object=K;;?&", .key = "pkcs11:object=K"},
};

class Uri : public testing::TestWithParam<UriCase> {};

TEST_P(Uri, IsTakenApart) {
    ASSERT_TRUE(is_pkcs11_uri(GetParam().uri));
    const Pkcs11Uri parsed = parse_pkcs11_uri(GetParam().uri);
    EXPECT_EQ(parsed.key, GetParam().key);
    EXPECT_EQ(parsed.token, GetParam().token);
    ASSERT_EQ(parsed.module_path.has_value(), GetParam().module_path != nullptr);
    ASSERT_EQ(parsed.pin.has_value(), GetParam().pin != nullptr);
    if (parsed.module_path) {
        EXPECT_EQ(*parsed.module_path, GetParam().module_path);
    }
    if (parsed.pin) {
        EXPECT_EQ(parsed.pin->view(), GetParam().pin);
    }
}

INSTANTIATE_TEST_SUITE_P(Rfc7512, Uri, testing::ValuesIn(kUris), case_name);

TEST(Pkcs11Uri, HasTheNameOfItsTokenDecoded) {
    const Pkcs11TokenName name =
        parse_pkcs11_uri("pkcs11:token=My%20token;serial=00ff;model=SoftHSM%20v2").token_name;
    EXPECT_EQ(name.label, "My token");
    EXPECT_EQ(name.serial, "00ff");
    EXPECT_EQ(name.model, "SoftHSM v2");
    EXPECT_FALSE(name.manufacturer);
}

TEST(Pkcs11Uri, BeginsWithItsScheme) {
    for (const char* const other : {"", "pkcs11", "pkcs12:token=T", "/pkcs11:token=T", "file:pkcs11:"}) {
        EXPECT_FALSE(is_pkcs11_uri(other)) << other;
    }
}

TEST(Pkcs11Uri, RefusesWhatIsNone) {
    for (const char* const uri :
         {"pkcs11:token", "pkcs11:object=K;nonsense", "pkcs11:?pin-value", "pkcs11:token=%",
          "pkcs11:token=%4", "pkcs11:token=%4g", "pkcs11:?pin-value=%00", "pkcs11:?module-path=%-1"}) {
        try {
            parse_pkcs11_uri(uri);
            ADD_FAILURE() << uri;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code, NTE_BAD_KEYSET) << uri;
        }
    }
}

}  // namespace
}  // namespace Quillmark::test
