#include <gtest/gtest.h>

#include "support/string_builder.hpp"
#include "zolsdk/catalog/error_numbers.hpp"
#include "zolsdk/platform/error.hpp"

using namespace zolsdk;

namespace {
// Runs `f`, expecting the buffer's range failure with the given source and text.
template <class F>
void ExpectRange(F f, const char16_t* source, const char16_t* description) {
    try {
        f();
        ADD_FAILURE() << "no failure raised";
    } catch (const DbError& e) {
        EXPECT_EQ(e.Number(), errnum::StringBuilderRange);
        EXPECT_EQ(e.Source(), String(source));
        EXPECT_EQ(e.Description(), String(description));
    }
}
} // namespace

TEST(CStringBuilder, StartsEmptyWithDefaultSizing) {
    CStringBuilder sb;
    EXPECT_EQ(sb.Length(), 0);
    EXPECT_EQ(sb.Capacity(), 8192);
    EXPECT_EQ(sb.BufferBump(), 2048);
    EXPECT_EQ(sb.SizingMethod(), 1);
    EXPECT_EQ(sb.SizingPercent(), 25);
    EXPECT_EQ(sb.ToString(), u"");
}

TEST(CStringBuilder, GrowsByQuarterStepsInPercentMode) {
    CStringBuilder sb;
    sb.Append(String(4096, u'a'));
    EXPECT_EQ(sb.Capacity(), 8192); // exactly full: no growth yet
    EXPECT_EQ(sb.Length(), 4096);
    sb.Append(u"b");
    EXPECT_EQ(sb.Capacity(), 10240); // 8194 bytes needed, step 2048
    EXPECT_EQ(sb.BufferBump(), 2560);
    sb.Append(String(1023, u'c')); // 10240 bytes: full again
    EXPECT_EQ(sb.Capacity(), 10240);
    sb.Append(u"d"); // 10242 bytes needed, step 2560
    EXPECT_EQ(sb.Capacity(), 12800);

    String expected = String(4096, u'a') + u"b" + String(1023, u'c') + u"d";
    EXPECT_EQ(sb.ToString(), expected);
    EXPECT_EQ(sb.Length(), static_cast<int32_t>(expected.size()));
}

TEST(CStringBuilder, GrowthStepLastUsedCarriesIntoFixedMode) {
    CStringBuilder sb;
    sb.Capacity(9000); // percent step 2048 stored as the fixed step
    EXPECT_EQ(sb.Capacity(), 10240);
    sb.SizingMethod(0);
    EXPECT_EQ(sb.BufferBump(), 2048);
    sb.Capacity(10241);
    EXPECT_EQ(sb.Capacity(), 12288);

    CStringBuilder other;
    other.SizingPercent(50);
    other.Capacity(100); // step 4096 from the current capacity
    other.SizingMethod(0);
    EXPECT_EQ(other.BufferBump(), 4096);
    EXPECT_EQ(other.Capacity(), 4096);
}

TEST(CStringBuilder, SettersIgnoreValuesOutOfRange) {
    CStringBuilder sb;
    sb.BufferBump(3); // percent mode: ignored
    EXPECT_EQ(sb.BufferBump(), 2048);
    sb.SizingMethod(0);
    sb.BufferBump(3);
    EXPECT_EQ(sb.BufferBump(), 4);
    sb.BufferBump(-1);
    EXPECT_EQ(sb.BufferBump(), 4);
    sb.BufferBump(0);
    EXPECT_EQ(sb.BufferBump(), 4);

    sb.SizingMethod(2);
    EXPECT_EQ(sb.SizingMethod(), 0);
    sb.SizingMethod(-1);
    EXPECT_EQ(sb.SizingMethod(), 0);

    sb.SizingPercent(0);
    EXPECT_EQ(sb.SizingPercent(), 25);
    sb.SizingPercent(101);
    EXPECT_EQ(sb.SizingPercent(), 25);
    sb.SizingPercent(100);
    EXPECT_EQ(sb.SizingPercent(), 100);
    sb.SizingPercent(1);
    EXPECT_EQ(sb.SizingPercent(), 1);
}

TEST(CStringBuilder, CapacityCanShrinkAndCutTheText) {
    CStringBuilder sb;
    sb.SizingMethod(0);
    sb.Append(String(3000, u'x'));
    sb.Capacity(10);
    EXPECT_EQ(sb.Capacity(), 2048);
    EXPECT_EQ(sb.Length(), 1024);
    EXPECT_EQ(sb.ToString(), String(1024, u'x'));

    sb.Capacity(0);  // ignored
    sb.Capacity(-5); // ignored
    EXPECT_EQ(sb.Capacity(), 2048);

    // A multiple of the step is kept as it is.
    sb.Capacity(4096);
    EXPECT_EQ(sb.Capacity(), 4096);
    EXPECT_EQ(sb.EnsureCapacity(4000), 4096);
    EXPECT_EQ(sb.EnsureCapacity(4097), 6144);
}

TEST(CStringBuilder, PercentStepThatRoundsToNothingFails) {
    CStringBuilder sb;
    sb.SizingMethod(0);
    sb.BufferBump(2);
    sb.Capacity(2);
    sb.SizingMethod(1);
    sb.SizingPercent(1); // 2 * 1 / 100 == 0
    try {
        sb.Capacity(100);
        ADD_FAILURE() << "no failure";
    } catch (const DbError& e) {
        EXPECT_EQ(e.Number(), err::DivisionByZero);
    }
}

TEST(CStringBuilder, InsertPlacesTextAndSwapsBuffers) {
    CStringBuilder sb;
    sb.Append(u"cd").Insert(0, u"ab");
    EXPECT_EQ(sb.ToString(), u"abcd");
    sb.Insert(2, u"XY");
    EXPECT_EQ(sb.ToString(), u"abXYcd");
    sb.Insert(6, u"!");
    EXPECT_EQ(sb.ToString(), u"abXYcd!");
    sb.Insert(3, u"");
    EXPECT_EQ(sb.ToString(), u"abXYcd!");
    // Repeated inserts alternate between the two buffers.
    for (int i = 0; i < 3; ++i) sb.Insert(0, u"-");
    EXPECT_EQ(sb.ToString(), u"---abXYcd!");

    // Inserting past the capacity grows the buffer and keeps all text.
    CStringBuilder big;
    big.Append(String(4096, u'a'));
    big.Insert(2048, u"MID");
    EXPECT_EQ(big.Capacity(), 10240);
    EXPECT_EQ(big.ToString(), String(2048, u'a') + u"MID" + String(2048, u'a'));
}

TEST(CStringBuilder, InsertChecksThePositionAgainstTheCapacity) {
    CStringBuilder sb;
    sb.Append(u"ab");
    ExpectRange([&] { sb.Insert(4097, u"x"); }, u"CStringBuilder.Insert", u"Argument(s) out of range.");
    ExpectRange([&] { sb.Insert(-1, u"x"); }, u"CStringBuilder.Insert", u"Argument(s) out of range.");
    EXPECT_EQ(sb.ToString(), u"ab");
    // Behind the text but inside the capacity: accepted, the text lands there.
    sb.Insert(4096, u"z");
    EXPECT_EQ(sb.Length(), 3);
    EXPECT_EQ(sb.ToString().substr(0, 2), u"ab");
}

TEST(CStringBuilder, RemoveDropsASpanOfCharacters) {
    CStringBuilder sb;
    sb.Append(u",a,b,c");
    sb.Remove(0, 1);
    EXPECT_EQ(sb.ToString(), u"a,b,c");
    sb.Remove(1, 3);
    EXPECT_EQ(sb.ToString(), u"ac");
    sb.Remove(1, 1);
    EXPECT_EQ(sb.ToString(), u"a");
    sb.Remove(0, 0);
    EXPECT_EQ(sb.ToString(), u"a");
    sb.Remove(0, 1);
    EXPECT_EQ(sb.ToString(), u"");

    ExpectRange([&] { sb.Remove(0, 1); }, u"CStringBuilder.Remove", u"Argument(s) out of range.");
    sb.Append(u"abc");
    ExpectRange([&] { sb.Remove(-1, 1); }, u"CStringBuilder.Remove", u"Argument(s) out of range.");
    ExpectRange([&] { sb.Remove(2, 2); }, u"CStringBuilder.Remove", u"Argument(s) out of range.");
    EXPECT_EQ(sb.ToString(), u"abc");
}

TEST(CStringBuilder, CharsComparesCharacterPositionWithByteLength) {
    CStringBuilder sb;
    sb.Append(u"abcd");
    EXPECT_EQ(sb.Chars(0), u"a");
    EXPECT_EQ(sb.Chars(3), u"d");
    sb.Chars(1, u"XYZ");
    EXPECT_EQ(sb.ToString(), u"aXcd");
    // Position 4 is past the text but under the 8 bytes in use: accepted.
    EXPECT_NO_THROW(sb.Chars(4));
    ExpectRange([&] { sb.Chars(8); }, u"CStringBuilder.Chars", u"Tried reading character past end of buffer.");
    ExpectRange([&] { sb.Chars(-1); }, u"CStringBuilder.Chars", u"Tried reading character past end of buffer.");
    ExpectRange([&] { sb.Chars(8, u"q"); }, u"CStringBuilder.Chars",
                u"Tried assigning character past end of buffer.");

    CStringBuilder empty;
    ExpectRange([&] { empty.Chars(0); }, u"CStringBuilder.Chars", u"Tried reading character past end of buffer.");
}

TEST(CStringBuilder, LengthCutsAndExtends) {
    CStringBuilder sb;
    sb.Append(u"hello world");
    sb.Length(5);
    EXPECT_EQ(sb.ToString(), u"hello");
    sb.Length(-1);
    EXPECT_EQ(sb.Length(), 5);
    // Lengthening shows what the buffer held.
    sb.Length(11);
    EXPECT_EQ(sb.ToString(), u"hello world");
    sb.Length(0);
    EXPECT_EQ(sb.ToString(), u"");
    sb.Length(5000);
    EXPECT_EQ(sb.Capacity(), 10240);
    EXPECT_EQ(sb.Length(), 5000);
}

TEST(CStringBuilder, KeepsCharactersOutsideAscii) {
    CStringBuilder sb;
    String text = u"\u00e9t\u00e9 \u4e2d\U0001F600";
    sb.Append(text).Append(u"|").Insert(0, u"\u00c5");
    EXPECT_EQ(sb.ToString(), u"\u00c5" + text + u"|");
    EXPECT_EQ(sb.Chars(1), u"\u00e9");
}
