#include "values/string_proxy.h"

#include <gtest/gtest.h>

#include <utility>

#include "tests/support/failing_new.h"

namespace {

using Quillmark::CStringProxy;
using Quillmark::CWStringProxy;

TEST(CStringProxy, OfNullIsAValidEmptyString) {
    EXPECT_STREQ(CStringProxy(nullptr).c_str(), "");
}

TEST(CStringProxy, HoldsACopyOfItsArgument) {
    char text[] = "stamp";
    const CStringProxy proxy(text);
    text[0] = 'X';
    EXPECT_STREQ(proxy.c_str(), "stamp");
}

TEST(CStringProxy, CopiesDeeply) {
    CStringProxy source("first");
    const CStringProxy copy(source);
    source = CStringProxy("second");
    EXPECT_STREQ(copy.c_str(), "first");
    EXPECT_STREQ(source.c_str(), "second");
}

TEST(CStringProxy, SurvivesSelfAssignment) {
    CStringProxy proxy("a text too long for any buffer inside the string object");
    const CStringProxy& same = proxy;
    proxy = same;
    EXPECT_STREQ(proxy.c_str(), "a text too long for any buffer inside the string object");
}

TEST(CStringProxy, KeepsItsTextWhenAssignmentRunsOutOfMemory) {
    CStringProxy proxy("short");
    const CStringProxy longer("a text too long for any buffer inside the string object");
    const std::size_t failures = Quillmark::test::for_each_failing_new(
        [&] { proxy = longer; }, [&] { EXPECT_STREQ(proxy.c_str(), "short"); });
    EXPECT_GT(failures, 0u);
}

TEST(CStringProxy, TakesTheTextOfOneThatIsMoved) {
    CStringProxy source("stamp");
    const CStringProxy taken(std::move(source));
    EXPECT_STREQ(taken.c_str(), "stamp");
    EXPECT_STREQ(source.c_str(), "");
    EXPECT_STREQ(CStringProxy(source).c_str(), "");
}

TEST(CStringProxy, CanBeGivenATextAgainOnceItWasMoved) {
    CStringProxy source("stamp");
    const CStringProxy taken(std::move(source));
    source = taken;
    EXPECT_STREQ(source.c_str(), "stamp");
}

TEST(CWStringProxy, OfNullIsAValidEmptyString) {
    EXPECT_STREQ(CWStringProxy(nullptr).c_str(), L"");
}

TEST(CWStringProxy, CopiesDeeply) {
    CWStringProxy source(L"\u0414\u0430");
    const CWStringProxy copy(source);
    source = CWStringProxy(L"second");
    EXPECT_STREQ(copy.c_str(), L"\u0414\u0430");
    EXPECT_STREQ(source.c_str(), L"second");
}

TEST(CWStringProxy, TakesTheTextOfOneThatIsMoved) {
    CWStringProxy source(L"stamp");
    CWStringProxy taken(std::move(source));
    EXPECT_STREQ(taken.c_str(), L"stamp");
    EXPECT_STREQ(source.c_str(), L"");
    source = L"token";
    taken = source;
    EXPECT_STREQ(taken.c_str(), L"token");
}

TEST(CWStringProxy, SurvivesSelfAssignment) {
    CWStringProxy proxy(L"a text too long for any buffer inside the string object");
    const CWStringProxy& same = proxy;
    proxy = same;
    EXPECT_STREQ(proxy.c_str(), L"a text too long for any buffer inside the string object");
}

}  // namespace
