#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "common/failure.hpp"
#include "common/locale_scope.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/variant.hpp"

using namespace zolsdk;
using zoltest::FailureNumber;
using zoltest::LocaleScope;

namespace {
class Thing : public Object {};
} // namespace

TEST(VariantText, DoublesUseFifteenDigitsAndScientificForms) {
    LocaleScope l(u".");
    EXPECT_EQ(Variant(1234.5).ToString(), u"1234.5");
    EXPECT_EQ(Variant(-0.25).ToString(), u"-0.25");
    EXPECT_EQ(Variant(0.1 + 0.2).ToString(), u"0.3");
    EXPECT_EQ(Variant(3.141592653589793).ToString(), u"3.14159265358979");
    EXPECT_EQ(Variant(999999999999999.0).ToString(), u"999999999999999");
    EXPECT_EQ(Variant(1e15).ToString(), u"1E+15");
    EXPECT_EQ(Variant(1.234e16).ToString(), u"1.234E+16");
    EXPECT_EQ(Variant(-1.5e100).ToString(), u"-1.5E+100");
    EXPECT_EQ(Variant(0.000001).ToString(), u"0.000001");
    EXPECT_EQ(Variant(1e-7).ToString(), u"1E-07");
    EXPECT_EQ(Variant(5.6789e-12).ToString(), u"5.6789E-12");
    EXPECT_EQ(Variant(-0.0).ToString(), u"0");
    EXPECT_EQ(Variant(100.0).ToString(), u"100");
    // Rounding to 15 digits can carry into the next power of ten.
    EXPECT_EQ(Variant(999999999999999.9).ToString(), u"1E+15");
}

TEST(VariantText, SinglesAreTheShortestTextOfTheSameFloat) {
    LocaleScope l(u".");
    const std::pair<float, const char16_t*> cases[] = {
        {0.1f, u"0.1"},           {1.5f, u"1.5"},
        {3.14159265f, u"3.1415927"}, {1234567.0f, u"1234567"},
        {1e7f, u"1E+07"},         {1.33333333f, u"1.3333334"},
        {-0.00035134f, u"-0.00035134"}, {0.000345134f, u"0.000345134"},
        {16777216.0f, u"1.6777216E+07"}, {1e-7f, u"1E-07"},
        {3.4028235e38f, u"3.4028235E+38"},
    };
    for (const auto& [f, text] : cases) {
        String s = Variant(f).ToString();
        EXPECT_EQ(s, text);
        // The text reads back as the very same float.
        EXPECT_EQ(Variant(s).ToSingle(), f) << ToUtf8(s);
    }
}

TEST(VariantText, UsesTheUserDecimalSeparator) {
    LocaleScope l(u",", u".");
    EXPECT_EQ(Variant(1.5).ToString(), u"1,5");
    EXPECT_EQ(Variant(0.5f).ToString(), u"0,5");
    EXPECT_EQ(Variant(Currency::FromRaw(12345)).ToString(), u"1,2345");
    EXPECT_EQ(Variant(Decimal::FromParts(15, 1, true)).ToString(), u"-1,5");
    EXPECT_EQ(Variant(1e-7).ToString(), u"1E-07");
    EXPECT_EQ(Variant(1.5e20).ToString(), u"1,5E+20");
    // Integers are never touched by the separator.
    EXPECT_EQ(Variant(int32_t{1000}).ToString(), u"1000");
}

TEST(VariantText, OtherKinds) {
    LocaleScope l(u".");
    EXPECT_EQ(Variant().ToString(), u"");
    EXPECT_EQ(Variant(true).ToString(), u"True");
    EXPECT_EQ(Variant(false).ToString(), u"False");
    EXPECT_EQ(Variant(int16_t{-7}).ToString(), u"-7");
    EXPECT_EQ(Variant(uint8_t{255}).ToString(), u"255");
    EXPECT_EQ(Variant(Currency::FromRaw(-5000)).ToString(), u"-0.5");
    EXPECT_EQ(Variant(Currency::FromRaw(INT64_MIN)).ToString(), u"-922337203685477.5808");
    EXPECT_EQ(Variant(Bytes{u'A', 0, u'B', 0}).ToString(), u"AB");
    EXPECT_EQ(FailureNumber([] { Variant::Null().ToString(); }), err::InvalidUseOfNull);
    EXPECT_EQ(FailureNumber([] { Variant(nullptr).ToString(); }), err::ObjectNotSet);
    EXPECT_EQ(FailureNumber([] { Variant(Ref<Thing>::New()).ToString(); }), err::TypeMismatch);
    EXPECT_EQ(FailureNumber([] { Variant(std::numeric_limits<double>::infinity()).ToString(); }), err::Overflow);
}

TEST(VariantNumbers, TextToNumberFollowsTheLocale) {
    {
        LocaleScope l(u".", u",");
        EXPECT_EQ(Variant(u"1.5").ToDouble(), 1.5);
        EXPECT_EQ(Variant(u"  -12.25  ").ToDouble(), -12.25);
        EXPECT_EQ(Variant(u"1,234.5").ToDouble(), 1234.5);
        EXPECT_EQ(Variant(u"1E+15").ToDouble(), 1e15);
        EXPECT_EQ(Variant(u"2.5e3").ToDouble(), 2500.0);
        EXPECT_EQ(Variant(u"1E-07").ToDouble(), 1e-7);
        EXPECT_EQ(Variant(u".5").ToDouble(), 0.5);
        EXPECT_EQ(Variant(u"+5").ToDouble(), 5.0);
        EXPECT_EQ(Variant(u"&HFF").ToLong(), 255);
        EXPECT_EQ(Variant(u"&HFFFF").ToLong(), -1);
        EXPECT_EQ(Variant(u"&H10000").ToLong(), 65536);
        EXPECT_EQ(Variant(u"&O17").ToLong(), 15);
        EXPECT_EQ(Variant(u"1E-400").ToDouble(), 0.0);
        EXPECT_EQ(Variant(u"-0.00012e-398").ToDouble(), 0.0);
        EXPECT_EQ(FailureNumber([] { Variant(u"1E+400").ToDouble(); }), err::Overflow);
        EXPECT_EQ(FailureNumber([] { Variant(u"0.001e312").ToDouble(); }), err::Overflow);
        EXPECT_EQ(FailureNumber([] { Variant(u"abc").ToDouble(); }), err::TypeMismatch);
        EXPECT_EQ(FailureNumber([] { Variant(u"").ToDouble(); }), err::TypeMismatch);
        EXPECT_EQ(FailureNumber([] { Variant(u"1.2.3").ToDouble(); }), err::TypeMismatch);
        EXPECT_EQ(FailureNumber([] { Variant(u"1e").ToDouble(); }), err::TypeMismatch);
        EXPECT_EQ(FailureNumber([] { Variant(u"&HG").ToLong(); }), err::TypeMismatch);
    }
    {
        LocaleScope l(u",", u".");
        EXPECT_EQ(Variant(u"1,5").ToDouble(), 1.5);
        EXPECT_EQ(Variant(u"1.5").ToDouble(), 15.0); // "." groups thousands here
        EXPECT_EQ(Variant(u"1,5").ToDecimal(), Decimal::FromParts(15, 1, false));
        EXPECT_EQ(Variant(u"1,5").ToCurrency().raw, 15000);
    }
}

TEST(VariantNumbers, IntegerConversionsRoundHalfToEven) {
    EXPECT_EQ(Variant(2.5).ToLong(), 2);
    EXPECT_EQ(Variant(3.5).ToLong(), 4);
    EXPECT_EQ(Variant(-2.5).ToLong(), -2);
    EXPECT_EQ(Variant(-3.5).ToLong(), -4);
    EXPECT_EQ(Variant(2.5000001).ToLong(), 3);
    EXPECT_EQ(Variant(0.5f).ToInteger(), 0);
    EXPECT_EQ(Variant(1.5f).ToInteger(), 2);
    EXPECT_EQ(Variant(u"2.5").ToLong(), 2);
    EXPECT_EQ(Variant(Currency::FromRaw(25000)).ToLong(), 2);
    EXPECT_EQ(Variant(Currency::FromRaw(35000)).ToInteger(), 4);
    EXPECT_EQ(Variant(Decimal::FromParts(25, 1, false)).ToLong(), 2);
    EXPECT_EQ(Variant(Decimal::FromParts(35, 1, true)).ToLong(), -4);
    EXPECT_EQ(Variant(254.5).ToByte(), 254);
    EXPECT_EQ(Variant(true).ToLong(), -1);
    EXPECT_EQ(Variant(false).ToInteger(), 0);
    EXPECT_EQ(Variant().ToLong(), 0);
    EXPECT_EQ(Variant::FromDate(36526.75).ToLong(), 36527);
}

TEST(VariantNumbers, OverflowAtTheEdgesOfEachType) {
    EXPECT_EQ(Variant(32767.4).ToInteger(), 32767);
    EXPECT_EQ(FailureNumber([] { Variant(32767.5).ToInteger(); }), err::Overflow);
    EXPECT_EQ(Variant(-32768.5).ToInteger(), -32768);
    EXPECT_EQ(FailureNumber([] { Variant(-32768.6).ToInteger(); }), err::Overflow);
    EXPECT_EQ(Variant(2147483647.4).ToLong(), INT32_MAX);
    EXPECT_EQ(FailureNumber([] { Variant(2147483647.5).ToLong(); }), err::Overflow);
    EXPECT_EQ(Variant(-2147483648.0).ToLong(), INT32_MIN);
    EXPECT_EQ(FailureNumber([] { Variant(u"4294967296").ToLong(); }), err::Overflow);
    EXPECT_EQ(FailureNumber([] { Variant(Decimal::FromInt64(2147483648LL)).ToLong(); }), err::Overflow);
    EXPECT_EQ(FailureNumber([] { Variant(-0.6).ToByte(); }), err::Overflow);
    EXPECT_EQ(FailureNumber([] { Variant(255.5).ToByte(); }), err::Overflow);
    EXPECT_EQ(FailureNumber([] { Variant(1e39).ToSingle(); }), err::Overflow);
    EXPECT_EQ(FailureNumber([] { Variant(std::nan("")).ToLong(); }), err::Overflow);
    EXPECT_EQ(FailureNumber([] { Variant(1e30).ToDecimal(); }), err::Overflow);
    EXPECT_EQ(FailureNumber([] { Variant(1e15).ToCurrency(); }), err::Overflow);
    EXPECT_EQ(FailureNumber([] { Variant(u"922337203685477.5808").ToCurrency(); }), err::Overflow);
    EXPECT_EQ(Variant(u"922337203685477.5807").ToCurrency().raw, INT64_MAX);
}

TEST(VariantNumbers, NullEmptyAndObjects) {
    EXPECT_EQ(FailureNumber([] { Variant::Null().ToLong(); }), err::InvalidUseOfNull);
    EXPECT_EQ(FailureNumber([] { Variant::Null().ToDouble(); }), err::InvalidUseOfNull);
    EXPECT_EQ(FailureNumber([] { Variant::Null().ToDecimal(); }), err::InvalidUseOfNull);
    EXPECT_EQ(FailureNumber([] { Variant::Null().ToCurrency(); }), err::InvalidUseOfNull);
    EXPECT_EQ(FailureNumber([] { Variant::Null().ToBoolean(); }), err::InvalidUseOfNull);
    EXPECT_EQ(FailureNumber([] { Variant::Null().ToDate(); }), err::InvalidUseOfNull);
    EXPECT_EQ(FailureNumber([] { Variant::Null().ToBytes(); }), err::InvalidUseOfNull);
    EXPECT_EQ(Variant().ToDouble(), 0.0);
    EXPECT_TRUE(Variant().ToDecimal().IsZero());
    EXPECT_FALSE(Variant().ToBoolean());
    EXPECT_TRUE(Variant().ToBytes().empty());
    EXPECT_EQ(FailureNumber([] { Variant(nullptr).ToLong(); }), err::ObjectNotSet);
    EXPECT_EQ(FailureNumber([] { Variant(Ref<Thing>::New()).ToDouble(); }), err::TypeMismatch);
    EXPECT_EQ(FailureNumber([] { Variant(Bytes{1}).ToLong(); }), err::TypeMismatch);
    EXPECT_EQ(FailureNumber([] { Variant(int32_t{3}).ToObject(); }), err::TypeMismatch);
    EXPECT_TRUE(Variant(nullptr).IsNothing());
    EXPECT_FALSE(Variant::Null().IsNothing());

    auto thing = Ref<Thing>::New();
    Variant v(thing);
    EXPECT_TRUE(v.As<Thing>() == thing);
    EXPECT_EQ(FailureNumber([] { Ref<Thing>().Get(); }), err::ObjectNotSet);
}

TEST(VariantBoolean, WordsNumbersAndText) {
    LocaleScope l(u".");
    EXPECT_TRUE(Variant(u"True").ToBoolean());
    EXPECT_TRUE(Variant(u" true ").ToBoolean());
    EXPECT_FALSE(Variant(u"FALSE").ToBoolean());
    EXPECT_TRUE(Variant(u"-1").ToBoolean());
    EXPECT_TRUE(Variant(u"0.5").ToBoolean());
    EXPECT_FALSE(Variant(u"0").ToBoolean());
    EXPECT_EQ(FailureNumber([] { Variant(u"yes").ToBoolean(); }), err::TypeMismatch);
    EXPECT_EQ(FailureNumber([] { Variant(u"").ToBoolean(); }), err::TypeMismatch);
    EXPECT_TRUE(Variant(0.0001).ToBoolean());
    EXPECT_FALSE(Variant(Decimal()).ToBoolean());
    EXPECT_TRUE(Variant(Currency::FromRaw(1)).ToBoolean());
    EXPECT_EQ(Variant(true).ToDouble(), -1.0);
    EXPECT_EQ(Variant(true).ToDecimal(), Decimal::FromInt64(-1));
    EXPECT_EQ(Variant(true).ToCurrency().raw, -10000);
}

TEST(VariantDates, ConversionsToAndFromDates) {
    LocaleScope l(u".");
    EXPECT_EQ(Variant(u"2024-02-29").ToDate(), DateSerial(2024, 2, 29));
    EXPECT_EQ(Variant(u"2024-02-29 13:45:10").ToDate(), DateSerial(2024, 2, 29) + TimeSerial(13, 45, 10));
    EXPECT_EQ(Variant(u"12/31/1999").ToDate(), DateSerial(1999, 12, 31));
    EXPECT_EQ(Variant(u"20261115T123000").ToDate(), DateSerial(2026, 11, 15) + TimeSerial(12, 30, 0));
    EXPECT_DOUBLE_EQ(Variant(u"06:00").ToDate(), 0.25);
    EXPECT_EQ(FailureNumber([] { Variant(u"2023-02-29").ToDate(); }), err::TypeMismatch);
    EXPECT_EQ(FailureNumber([] { Variant(u"2024-13-01").ToDate(); }), err::TypeMismatch);
    EXPECT_EQ(FailureNumber([] { Variant(u"25:00").ToDate(); }), err::TypeMismatch);
    EXPECT_EQ(FailureNumber([] { Variant(u"tomorrow").ToDate(); }), err::TypeMismatch);
    EXPECT_EQ(Variant(36526.5).ToDate(), 36526.5);
    EXPECT_EQ(Variant(true).ToDate(), -1.0);
    EXPECT_EQ(FailureNumber([] { Variant(3e6).ToDate(); }), err::Overflow);
    EXPECT_EQ(FailureNumber([] { Variant(-700000.0).ToDate(); }), err::Overflow);

    Variant d = Variant::FromDate(DateSerial(2000, 1, 1) + 0.5);
    EXPECT_EQ(d.Type(), VarType::Date);
    EXPECT_EQ(d.ToDouble(), 36526.5);
    EXPECT_EQ(d.ToString(), u"2000-01-01 12:00:00");
    EXPECT_EQ(Variant::FromDate(DateSerial(2000, 1, 1)).ToString(), u"2000-01-01");
    EXPECT_EQ(Variant::FromDate(TimeSerial(7, 5, 3)).ToString(), u"07:05:03");
}

TEST(VariantExact, CurrencyAndDecimalKeepTheirDigits) {
    LocaleScope l(u".");
    EXPECT_EQ(Variant(u"1.23456").ToCurrency().raw, 12346);
    EXPECT_EQ(Variant(u"1.23455").ToCurrency().raw, 12346); // tie goes to even
    EXPECT_EQ(Variant(u"1.23465").ToCurrency().raw, 12346);
    EXPECT_EQ(Variant(1234.5678).ToCurrency().raw, 12345678);
    EXPECT_EQ(Variant(-2.5).ToCurrency().raw, -25000);
    EXPECT_EQ(Variant(Decimal::FromParts(123456789, 4, false)).ToCurrency().raw, 123456789);

    // 0.1 as a decimal is exact, and sums of decimals do not drift.
    Decimal tenth = Variant(0.1).ToDecimal();
    EXPECT_EQ(tenth, Decimal::FromParts(1, 1, false));
    Decimal sum;
    for (int i = 0; i < 10; ++i) sum = sum.Add(tenth);
    EXPECT_EQ(sum, Decimal::FromInt64(1));
    EXPECT_EQ(Variant(0.1f).ToDecimal(), Decimal::FromParts(1, 1, false));
    EXPECT_EQ(Variant(Currency::FromRaw(-12345)).ToDecimal(), Decimal::FromParts(12345, 4, true));
    EXPECT_EQ(Variant(u"79228162514264337593543950335").ToDecimal().ToText(), u"79228162514264337593543950335");
    EXPECT_EQ(FailureNumber([] { Variant(u"79228162514264337593543950336").ToDecimal(); }), err::Overflow);
    EXPECT_EQ(Variant(Decimal::FromParts(1, 28, false)).ToString(), u"0.0000000000000000000000000001");
    EXPECT_EQ(Variant::FromInt64(5000000000LL).Type(), VarType::Decimal);
    EXPECT_EQ(Variant::FromInt64(-5).Type(), VarType::Long);
}

TEST(VariantCompare, NumbersTextAndNulls) {
    EXPECT_EQ(Variant::Compare(Variant(int32_t{5}), Variant(5.0)), 0);
    EXPECT_EQ(Variant::Compare(Variant(int32_t{5}), Variant(u"10")), -1);
    EXPECT_EQ(Variant::Compare(Variant(u"abc"), Variant(u"ABD"), true), -1);
    EXPECT_EQ(Variant::Compare(Variant(u"abc"), Variant(u"ABC"), true), 0);
    EXPECT_NE(Variant::Compare(Variant(u"abc"), Variant(u"ABC"), false), 0);
    EXPECT_EQ(Variant::Compare(Variant(u"x"), Variant(int32_t{1})), 1);
    EXPECT_EQ(Variant::Compare(Variant::Null(), Variant(int32_t{-100})), -1);
    EXPECT_EQ(Variant::Compare(Variant::Null(), Variant()), 0);
    EXPECT_EQ(Variant::Compare(Variant(Decimal::FromParts(1, 28, false)), Variant(int32_t{0})), 1);
    EXPECT_EQ(Variant::Compare(Variant(Currency::FromRaw(10001)), Variant(1.0)), 1);
    EXPECT_TRUE(Variant(int32_t{1}) == Variant(int32_t{1}));
    EXPECT_FALSE(Variant(int32_t{1}) == Variant(1.0));
}
