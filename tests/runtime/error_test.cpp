#include <gtest/gtest.h>

#include "runtime/context.h"

namespace Quillmark::test {
namespace {

TEST(ErrorRecord, KeepsTheFirstStatusAndReturnsTheOneGiven) {
    ASN1ErrInfo record{};
    EXPECT_EQ(rtErrSetData(&record, RT_E_INVLEN), RT_E_INVLEN);
    EXPECT_EQ(rtErrSetData(&record, RT_E_NOMEM), RT_E_NOMEM);
    EXPECT_EQ(record.status, RT_E_INVLEN);
}

TEST(ErrorRecord, StartsAgainAfterReset) {
    ASN1ErrInfo record{};
    rtErrSetData(&record, RT_E_INVLEN);
    EXPECT_EQ(rtErrReset(&record), 0);
    EXPECT_EQ(record.status, RT_OK);
    rtErrSetData(&record, RT_E_NOMEM);
    EXPECT_EQ(record.status, RT_E_NOMEM);
}

TEST(ErrorRecord, IsCopiedWithItsStatus) {
    ASN1ErrInfo source{};
    ASN1ErrInfo target{};
    rtErrSetData(&source, RT_E_INVLEN);
    EXPECT_EQ(rtErrCopyData(&source, &target), RT_E_INVLEN);
    EXPECT_EQ(target.status, RT_E_INVLEN);
}

TEST(ErrorRecord, PrintsOneLine) {
    ASN1ErrInfo record{};
    rtErrSetData(&record, RT_E_INVLEN);
    testing::internal::CaptureStdout();
    rtErrPrint(&record);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ASN.1 ERROR: Status -5\n");
}

TEST(ErrorRecord, IsPrintedByItsContext) {
    ASN1CtxtPtr context = new ASN1Context;
    testing::internal::CaptureStdout();
    context->PrintErrorInfo();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ASN.1 ERROR: Status 0\n");
}

TEST(ErrorRecord, KeepsNoParametersAndHasNoTexts) {
    ASN1ErrInfo record{};
    EXPECT_EQ(rtErrAddIntParm(&record, 5), 1);
    EXPECT_EQ(rtErrAddStrParm(&record, "pvalue->numocts"), 1);
    EXPECT_STREQ(rtErrGetText(&record), "");
    EXPECT_STREQ(rtErrGetText(nullptr), "");
}

}  // namespace
}  // namespace Quillmark::test
