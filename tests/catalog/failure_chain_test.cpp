#include <gtest/gtest.h>

#include "common/failure.hpp"
#include "catalog/raise_error.hpp"
#include "zolsdk/zolsdk.hpp"
#include "platform/failure_chain.hpp"

using namespace zolsdk;

namespace {
using zoltest::Failure;

int innerLine = 0, middleLine = 0, outerLine = 0;

void Inner() {
    ZOL_ROUTINE(u"Inner:Run Ln ");
    try {
        innerLine = __LINE__ + 1;
        ZOL_LN; RaiseError(errnum::ErrCreateDb, u"Inner:Run");
    } ZOL_RERAISE
}

void Middle() {
    ZOL_ROUTINE(u"Middle:Run Ln ");
    try {
        ZOL_LN; int unused = 0;
        (void)unused;
        middleLine = __LINE__ + 1;
        ZOL_LN; Inner();
    } ZOL_RERAISE
}

void Outer() {
    ZOL_ROUTINE(u"Outer:Run Ln ");
    try {
        outerLine = __LINE__ + 1;
        ZOL_LN; Middle();
    } ZOL_RERAISE
}
} // namespace

TEST(FailureChain, RaiseErrorFillsTemplatesInTurn) {
    DbError e = Failure([] { RaiseError(8192, u"X:GetDateCondition method", {Variant(u"7"), Variant(u"Age")}); });
    EXPECT_EQ(e.Number(), static_cast<int32_t>(0x80042000));
    EXPECT_EQ(e.Number(), -2147213312);
    EXPECT_EQ(e.Source(), u"ZolSDK");
    EXPECT_EQ(e.Description(), u"Condition operator '7' is not valid for attrribute 'Age'.");

    // No arguments: the placeholders stay.
    e = Failure([] { RaiseError(61441, u"OpenConnection_DB"); });
    EXPECT_EQ(e.Number(), -2147160063);
    EXPECT_EQ(e.Description(), u"Failed to connect to database '%0'. (Reason: %1)");

    // An argument holding "%1" is replaced again by the next argument.
    e = Failure([] { RaiseError(61441, u"x", {Variant(u"a%1"), Variant(u"b")}); });
    EXPECT_EQ(e.Description(), u"Failed to connect to database 'ab'. (Reason: b)");

    // Numbers become text as the platform writes them.
    e = Failure([] { RaiseError(8192, u"x", {Variant(int32_t{45}), Variant(u"Created")}); });
    EXPECT_EQ(e.Description(), u"Condition operator '45' is not valid for attrribute 'Created'.");

    EXPECT_EQ(ErrorText(12288), u"Database object not initialized.");
    EXPECT_EQ(ErrorText(65535), u"Unexpected Error.");
    EXPECT_EQ(errnum::Unexpected, -2147155969);
    EXPECT_EQ(errnum::DbNotInitialized, -2147209216);
}

TEST(FailureChain, EachTrappingRoutineAddsOneLine) {
    DbError e = Failure(Outer);
    EXPECT_EQ(e.Number(), errnum::CreateDbFailed);
    EXPECT_EQ(e.Description(), ErrorText(61440));
    String expected = u"ZolSDK => \r\nInner:Run Ln " + IntText(innerLine) + u" => \r\nMiddle:Run Ln " +
                      IntText(middleLine) + u" => \r\nOuter:Run Ln " + IntText(outerLine);
    EXPECT_EQ(e.Source(), expected);
}

TEST(FailureChain, PlatformFailuresKeepTheirNumberAndSource) {
    DbError e = Failure([] {
        ZOL_ROUTINE(u"T:Convert Ln ");
        try {
            ZOL_LN; Variant(u"abc").ToLong();
        } ZOL_RERAISE
    });
    EXPECT_EQ(e.Number(), 13);
    EXPECT_EQ(e.Description(), u"Type mismatch");
    EXPECT_EQ(e.Source().find(u"zolsdk => \r\nT:Convert Ln "), 0u);

    // A call through a reference to nothing is a catchable 91.
    Ref<DbCatalog> nothing;
    e = Failure([&] { nothing->Name(); });
    EXPECT_EQ(e.Number(), 91);
    EXPECT_EQ(e.Description(), u"Object variable or With block variable not set");

    // Foreign exceptions are turned into library failures by the chain.
    e = Failure([] {
        ZOL_ROUTINE(u"T:Foreign Ln ");
        try {
            throw std::runtime_error("boom");
        } ZOL_RERAISE
    });
    EXPECT_EQ(e.Number(), 51);
    EXPECT_NE(e.Description().find(u"boom"), String::npos);
}
