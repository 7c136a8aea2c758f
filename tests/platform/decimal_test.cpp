#include <gtest/gtest.h>

#include "common/failure.hpp"
#include "zolsdk/platform/decimal.hpp"

using namespace zolsdk;
using zoltest::FailureNumber;

namespace {
Decimal D(const char16_t* text) {
    Decimal d;
    EXPECT_TRUE(Decimal::TryParse(text, u'.', d)) << ToUtf8(text);
    return d;
}
const char16_t* kMax = u"79228162514264337593543950335";
} // namespace

TEST(Decimal, ParseAndText) {
    EXPECT_EQ(D(u"12.50").ToText(), u"12.5");
    EXPECT_EQ(D(u"12.50").Scale(), 2);
    EXPECT_EQ(D(u"-0.001").ToText(), u"-0.001");
    EXPECT_EQ(D(u"-0").ToText(), u"0");
    EXPECT_FALSE(D(u"-0").IsNegative());
    EXPECT_EQ(D(u"  +7  ").ToText(), u"7");
    EXPECT_EQ(D(u"1.5E+3").ToText(), u"1500");
    EXPECT_EQ(D(u"15e-4").ToText(), u"0.0015");
    EXPECT_EQ(D(kMax).ToText(), kMax);
    EXPECT_EQ(D(u"-79228162514264337593543950335").ToText(), u"-79228162514264337593543950335");
    // Fraction digits beyond 28 places are rounded away, half to even.
    EXPECT_EQ(D(u"0.00000000000000000000000000015").ToText(), u"0.0000000000000000000000000002");
    EXPECT_EQ(D(u"0.00000000000000000000000000025").ToText(), u"0.0000000000000000000000000002");
    EXPECT_EQ(D(u"1E-40").ToText(), u"0");
    // Integer digits that leave no room for the fraction push it out.
    EXPECT_EQ(D(u"7922816251426433759354395032.56").ToText(), u"7922816251426433759354395032.6");
    EXPECT_EQ(D(u"7922816251426433759354395033.56").ToText(), u"7922816251426433759354395034");
    Decimal out;
    EXPECT_FALSE(Decimal::TryParse(u"abc", u'.', out));
    EXPECT_FALSE(Decimal::TryParse(u"", u'.', out));
    EXPECT_FALSE(Decimal::TryParse(u"1e", u'.', out));
    EXPECT_FALSE(Decimal::TryParse(u"1 2", u'.', out));
    EXPECT_FALSE(Decimal::TryParse(u"3,5", u'.', out));
    EXPECT_TRUE(Decimal::TryParse(u"3,5", u',', out));
    EXPECT_EQ(out.ToText(u','), u"3,5");
    EXPECT_EQ(FailureNumber([] { Decimal d; Decimal::TryParse(u"79228162514264337593543950336", u'.', d); }),
              err::Overflow);
    EXPECT_EQ(FailureNumber([] { Decimal d; Decimal::TryParse(u"1E+29", u'.', d); }), err::Overflow);
}

TEST(Decimal, AddAndSubtractAtTheLimits) {
    EXPECT_EQ(D(u"0.1").Add(D(u"0.2")).ToText(), u"0.3");
    EXPECT_EQ(D(u"1.05").Sub(D(u"2")).ToText(), u"-0.95");
    EXPECT_EQ(D(u"-5").Add(D(u"5")).ToText(), u"0");
    EXPECT_EQ(D(kMax).Sub(D(kMax)).ToText(), u"0");
    EXPECT_EQ(D(kMax).Add(D(u"0.4")).ToText(), kMax);
    EXPECT_EQ(D(u"-79228162514264337593543950335").Sub(D(u"0.4")).ToText(), u"-79228162514264337593543950335");
    EXPECT_EQ(FailureNumber([] { D(kMax).Add(D(u"1")); }), err::Overflow);
    EXPECT_EQ(FailureNumber([] { D(kMax).Add(D(u"0.5")); }), err::Overflow);
    EXPECT_EQ(FailureNumber([] { D(u"-79228162514264337593543950335").Sub(D(u"1")); }), err::Overflow);
    // A small addend loses the digits that no longer fit.
    EXPECT_EQ(D(u"10000000000000000000000000000").Add(D(u"0.0000000000000000000000000001")).ToText(),
              u"10000000000000000000000000000");
    EXPECT_EQ(D(u"1").Add(D(u"0.0000000000000000000000000001")).ToText(), u"1.0000000000000000000000000001");
}

TEST(Decimal, MultiplyAndDivide) {
    EXPECT_EQ(D(u"0.1").Mul(D(u"0.1")).ToText(), u"0.01");
    EXPECT_EQ(D(u"-1.5").Mul(D(u"4")).ToText(), u"-6");
    EXPECT_EQ(D(u"-1.5").Mul(D(u"-4")).ToText(), u"6");
    EXPECT_EQ(D(u"12345678901234.5678").Mul(D(u"1234.5")).ToText(), u"15240740603574073.9491");
    EXPECT_EQ(D(u"0.000000000001").Mul(D(u"0.0000000000000001")).ToText(), u"0.0000000000000000000000000001");
    EXPECT_EQ(D(u"0.00000000000001").Mul(D(u"0.000000000000001")).ToText(), u"0");
    EXPECT_EQ(D(u"0.00000000000005").Mul(D(u"0.000000000000003")).ToText(), u"0.0000000000000000000000000002");
    EXPECT_EQ(D(u"39614081257132168796771975167").Mul(D(u"2")).ToText(), u"79228162514264337593543950334");
    EXPECT_EQ(FailureNumber([] { D(u"39614081257132168796771975168").Mul(D(u"2")); }), err::Overflow);
    EXPECT_EQ(D(u"12345678901234.5678").Mul(D(u"12345678901234.5678")).ToText(),
              u"152415787532388365279682997.65");

    EXPECT_EQ(D(u"1").Div(D(u"3")).ToText(), u"0.3333333333333333333333333333");
    EXPECT_EQ(D(u"2").Div(D(u"3")).ToText(), u"0.6666666666666666666666666667");
    EXPECT_EQ(D(u"10").Div(D(u"3")).ToText(), u"3.3333333333333333333333333333");
    EXPECT_EQ(D(u"80").Div(D(u"3")).ToText(), u"26.666666666666666666666666667");
    EXPECT_EQ(D(u"-1").Div(D(u"8")).ToText(), u"-0.125");
    EXPECT_EQ(D(u"1").Div(D(u"0.001")).ToText(), u"1000");
    EXPECT_EQ(D(u"6").Div(D(u"1.5")).ToText(), u"4");
    EXPECT_EQ(FailureNumber([] { D(u"1").Div(D(u"0")); }), err::DivisionByZero);
    EXPECT_EQ(FailureNumber([] { D(u"10000000000000000000000000000").Div(D(u"0.1")); }), err::Overflow);
}

TEST(Decimal, RoundingConversionsAndOrder) {
    EXPECT_EQ(D(u"2.345").Round(2).ToText(), u"2.34");
    EXPECT_EQ(D(u"2.355").Round(2).ToText(), u"2.36");
    EXPECT_EQ(D(u"2.3451").Round(2).ToText(), u"2.35");
    EXPECT_EQ(D(u"-0.5").Round(0).ToText(), u"0");
    EXPECT_EQ(D(u"1.5").Round(5).ToText(), u"1.5");
    EXPECT_EQ(D(u"2.5").ToInt64(), 2);
    EXPECT_EQ(D(u"3.5").ToInt64(), 4);
    EXPECT_EQ(D(u"-2.5").ToInt64(), -2);
    EXPECT_EQ(D(u"-9223372036854775808").ToInt64(), INT64_MIN);
    EXPECT_EQ(FailureNumber([] { D(u"9223372036854775808").ToInt64(); }), err::Overflow);
    EXPECT_EQ(D(u"0.1").ToDouble(), 0.1);
    EXPECT_EQ(Decimal::FromDouble(0.1).ToText(), u"0.1");
    EXPECT_EQ(Decimal::FromDouble(1.0 / 3.0).ToText(), u"0.333333333333333");
    EXPECT_EQ(Decimal::FromDouble(-1234567.125).ToText(), u"-1234567.125");
    EXPECT_EQ(Decimal::FromDouble(1e-20).ToText(), u"0.00000000000000000001");
    EXPECT_EQ(FailureNumber([] { Decimal::FromDouble(8e28); }), err::Overflow);
    EXPECT_EQ(Decimal::FromInt64(INT64_MIN).ToText(), u"-9223372036854775808");
    EXPECT_EQ(Decimal::FromUInt64(UINT64_MAX).ToText(), u"18446744073709551615");

    EXPECT_EQ(D(u"1.0").Compare(D(u"1.00")), 0);
    EXPECT_TRUE(D(u"1.0") == D(u"1"));
    EXPECT_EQ(D(u"-1").Compare(D(u"0.5")), -1);
    EXPECT_EQ(D(u"-1").Compare(D(u"-2")), 1);
    EXPECT_EQ(D(kMax).Compare(D(u"-79228162514264337593543950335")), 1);
    EXPECT_EQ(D(u"0.0000000000000000000000000001").Compare(D(u"0")), 1);
}
