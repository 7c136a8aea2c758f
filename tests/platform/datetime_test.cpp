#include <gtest/gtest.h>

#include "common/failure.hpp"
#include "zolsdk/platform/datetime.hpp"

using namespace zolsdk;
using zoltest::FailureNumber;

namespace {
::testing::AssertionResult PartsAre(double date, int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
    DateParts p = SplitDate(date);
    if (p.year == y && p.month == mo && p.day == d && p.hour == h && p.minute == mi && p.second == s)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << date << " splits into " << p.year << "-" << p.month << "-" << p.day << " "
                                         << p.hour << ":" << p.minute << ":" << p.second;
}
} // namespace

TEST(DateSerial, AnchorsAndRange) {
    EXPECT_EQ(DateSerial(1899, 12, 30), 0.0);
    EXPECT_EQ(DateSerial(1899, 12, 31), 1.0);
    EXPECT_EQ(DateSerial(1900, 1, 1), 2.0);
    EXPECT_EQ(DateSerial(2000, 1, 1), 36526.0);
    EXPECT_EQ(DateSerial(100, 1, 1), -657434.0);
    EXPECT_EQ(DateSerial(9999, 12, 31), 2958465.0);
    EXPECT_EQ(FailureNumber([] { DateSerial(10000, 1, 1); }), err::InvalidCall);
    EXPECT_EQ(FailureNumber([] { DateSerial(-1, 1, 1); }), err::InvalidCall);
    EXPECT_EQ(FailureNumber([] { DateSerial(9999, 12, 32); }), err::InvalidCall);
    EXPECT_EQ(FailureNumber([] { DateSerial(100, 1, 0); }), err::InvalidCall);
}

TEST(DateSerial, MonthsAndDaysRollOver) {
    EXPECT_EQ(DateSerial(2024, 2, 30), DateSerial(2024, 3, 1));
    EXPECT_EQ(DateSerial(2023, 2, 29), DateSerial(2023, 3, 1));
    EXPECT_EQ(DateSerial(2024, 13, 1), DateSerial(2025, 1, 1));
    EXPECT_EQ(DateSerial(2024, 25, 1), DateSerial(2026, 1, 1));
    EXPECT_EQ(DateSerial(2024, 0, 1), DateSerial(2023, 12, 1));
    EXPECT_EQ(DateSerial(2024, -11, 1), DateSerial(2023, 1, 1));
    EXPECT_EQ(DateSerial(2024, -12, 1), DateSerial(2022, 12, 1));
    EXPECT_EQ(DateSerial(2024, 1, 0), DateSerial(2023, 12, 31));
    EXPECT_EQ(DateSerial(2024, 3, -1), DateSerial(2024, 2, 28));
    EXPECT_EQ(DateSerial(2024, 1, 366), DateSerial(2024, 12, 31));
    EXPECT_EQ(DateSerial(2023, 1, 366), DateSerial(2024, 1, 1));
}

TEST(DateSerial, TwoDigitYearsUseTheCenturyWindow) {
    EXPECT_EQ(DateSerial(99, 1, 1), DateSerial(1999, 1, 1));
    EXPECT_EQ(DateSerial(30, 6, 15), DateSerial(1930, 6, 15));
    EXPECT_EQ(DateSerial(29, 6, 15), DateSerial(2029, 6, 15));
    EXPECT_EQ(DateSerial(0, 1, 1), DateSerial(2000, 1, 1));
    EXPECT_EQ(DateSerial(99, 13, 1), DateSerial(2000, 1, 1));
}

TEST(DateSplit, LeapDaysAndCenturies) {
    EXPECT_TRUE(PartsAre(DateSerial(2024, 2, 29), 2024, 2, 29));
    EXPECT_TRUE(PartsAre(DateSerial(2000, 2, 29), 2000, 2, 29));
    EXPECT_TRUE(PartsAre(DateSerial(1900, 2, 29), 1900, 3, 1)); // 1900 is no leap year
    EXPECT_TRUE(PartsAre(60.0, 1900, 2, 28));
    EXPECT_TRUE(PartsAre(61.0, 1900, 3, 1));
    EXPECT_EQ(DateSerial(2100, 3, 1) - DateSerial(2100, 2, 28), 1.0);
    EXPECT_EQ(DateSerial(2400, 3, 1) - DateSerial(2400, 2, 28), 2.0);
    EXPECT_TRUE(PartsAre(-657434.0, 100, 1, 1));
    EXPECT_TRUE(PartsAre(2958465.0, 9999, 12, 31));
}

TEST(DateSplit, NegativeDatesCountBackWithTheTimeRunningForward) {
    EXPECT_TRUE(PartsAre(-1.25, 1899, 12, 29, 6, 0, 0));
    EXPECT_TRUE(PartsAre(-1.75, 1899, 12, 29, 18, 0, 0));
    EXPECT_TRUE(PartsAre(-0.5, 1899, 12, 30, 12, 0, 0));
    EXPECT_TRUE(PartsAre(-2.0, 1899, 12, 28));
    EXPECT_EQ(JoinDate({1899, 12, 29, 6, 0, 0}), -1.25);
    EXPECT_EQ(JoinDate({1899, 12, 28, 18, 0, 0}), -2.75);
    EXPECT_EQ(JoinDate({1899, 12, 30, 6, 0, 0}), 0.25);
    EXPECT_EQ(DatePart(-1.25), -1.0);
    EXPECT_EQ(DatePart(36526.75), 36526.0);
    EXPECT_EQ(DateText(-1.25), u"1899-12-29 06:00:00");
}

TEST(DateSplit, TimeRoundsToTheNearestSecond) {
    EXPECT_TRUE(PartsAre(0.5 + 0.4 / 86400, 1899, 12, 30, 12, 0, 0));
    EXPECT_TRUE(PartsAre(0.5 + 0.6 / 86400, 1899, 12, 30, 12, 0, 1));
    EXPECT_TRUE(PartsAre(DateSerial(2024, 12, 31) + 86399.6 / 86400, 2025, 1, 1, 0, 0, 0));
    EXPECT_TRUE(PartsAre(DateSerial(2024, 12, 31) + 86399.4 / 86400, 2024, 12, 31, 23, 59, 59));
    EXPECT_TRUE(PartsAre(-1.0 - 86399.6 / 86400, 1899, 12, 30, 0, 0, 0));
    EXPECT_TRUE(PartsAre(TimeSerial(13, 45, 30), 1899, 12, 30, 13, 45, 30));
    EXPECT_DOUBLE_EQ(TimeSerial(25, 0, 0), 1.0 + 1.0 / 24);
    EXPECT_DOUBLE_EQ(TimeSerial(0, 90, 0), 1.5 / 24);
}

TEST(DateArithmetic, SecondsCrossDaysMonthsAndDayZero) {
    EXPECT_TRUE(PartsAre(DateAddSeconds(DateSerial(2024, 2, 28) + TimeSerial(23, 59, 59), 1), 2024, 2, 29));
    EXPECT_TRUE(PartsAre(DateAddSeconds(DateSerial(2023, 12, 31) + TimeSerial(23, 0, 0), 7200), 2024, 1, 1, 1));
    EXPECT_TRUE(PartsAre(DateAddSeconds(DateSerial(2024, 3, 1), -1), 2024, 2, 29, 23, 59, 59));
    EXPECT_DOUBLE_EQ(DateAddSeconds(-1.25, 86400), 0.25);
    EXPECT_DOUBLE_EQ(DateAddSeconds(0.25, -2 * 86400), -2.25);
    EXPECT_TRUE(PartsAre(DateAddSeconds(0.0, -1), 1899, 12, 29, 23, 59, 59));
    EXPECT_TRUE(PartsAre(DateAddSeconds(-1.0, 86400 + 3600), 1899, 12, 30, 1));
    EXPECT_DOUBLE_EQ(DateAddSeconds(DateSerial(2000, 1, 1), 12 * 3600 + 30 * 60 + 5),
                     DateSerial(2000, 1, 1) + TimeSerial(12, 30, 5));
}

TEST(DateWeekday, DependsOnTheFirstDayOfWeek) {
    const double monday = DateSerial(2024, 1, 1);
    EXPECT_EQ(Weekday(monday), 2);
    EXPECT_EQ(Weekday(monday, 2), 1);
    EXPECT_EQ(Weekday(monday, 7), 3);
    EXPECT_EQ(Weekday(monday + 6), 1);     // Sunday
    EXPECT_EQ(Weekday(monday + 6, 2), 7);
    EXPECT_EQ(Weekday(0.0), 7);            // 1899-12-30 was a Saturday
    EXPECT_EQ(Weekday(0.0, 7), 1);
    EXPECT_EQ(Weekday(0.75), 7);
    EXPECT_EQ(Weekday(-1.0), 6);
    EXPECT_EQ(Weekday(-1.25), 6);          // still 1899-12-29, a Friday
    EXPECT_EQ(Weekday(-0.5), 7);           // still day 0
    EXPECT_EQ(Weekday(DateSerial(100, 1, 1)), 6);
}

TEST(DateParse, AcceptedFormsAndRejections) {
    double d = 0;
    ASSERT_TRUE(TryParseDate(u"2024-2-5", d));
    EXPECT_EQ(d, DateSerial(2024, 2, 5));
    ASSERT_TRUE(TryParseDate(u"2024/02/05 10:30", d));
    EXPECT_EQ(d, DateSerial(2024, 2, 5) + TimeSerial(10, 30, 0));
    ASSERT_TRUE(TryParseDate(u"1/2/2024", d));
    EXPECT_EQ(d, DateSerial(2024, 1, 2));
    ASSERT_TRUE(TryParseDate(u"2024-02-29T23:59:59", d));
    EXPECT_TRUE(PartsAre(d, 2024, 2, 29, 23, 59, 59));
    ASSERT_TRUE(TryParseDate(u" 12:30:15.250 ", d));
    EXPECT_TRUE(PartsAre(d, 1899, 12, 30, 12, 30, 15));
    ASSERT_TRUE(TryParseDate(u"09991231T235959", d));
    EXPECT_TRUE(PartsAre(d, 999, 12, 31, 23, 59, 59));
    EXPECT_FALSE(TryParseDate(u"00010101T000000", d));
    EXPECT_FALSE(TryParseDate(u"", d));
    EXPECT_FALSE(TryParseDate(u"2024-02-30", d));
    EXPECT_FALSE(TryParseDate(u"2024-01-01 24:00", d));
    EXPECT_FALSE(TryParseDate(u"2024-01-01 10:60", d));
    EXPECT_FALSE(TryParseDate(u"2024-01-01x", d));
    EXPECT_FALSE(TryParseDate(u"20240101T2400000", d));
    EXPECT_FALSE(TryParseDate(u"13/01/2024", d));
}
