#include <gtest/gtest.h>

#include "support/replace_text.hpp"

using namespace zolsdk;

TEST(ReplaceText, CountIsALimitAndAReport) {
    int32_t count = 0;
    EXPECT_EQ(ReplaceText(u"aXbXc", u"X", u"YY", 1, count), u"aYYbYYc");
    EXPECT_EQ(count, 2);
    // The variable now holds 2: reused without a reset it limits the next call.
    EXPECT_EQ(ReplaceText(u"XXXX", u"X", u"-", 1, count), u"--XX");
    EXPECT_EQ(count, 2);

    count = 1;
    EXPECT_EQ(ReplaceText(u"aXbXc", u"X", u"YY", 1, count), u"aYYbXc");
    EXPECT_EQ(count, 1);
    count = 5;
    EXPECT_EQ(ReplaceText(u"aXbXc", u"X", u"Y", 1, count), u"aYbYc");
    EXPECT_EQ(count, 2);
    // No hit: the count is left as it was.
    count = 7;
    EXPECT_EQ(ReplaceText(u"abc", u"X", u"Y", 1, count), u"abc");
    EXPECT_EQ(count, 7);
    count = -1; // never equal to a number of hits: no limit
    EXPECT_EQ(ReplaceText(u"XXX", u"X", u"Y", 1, count), u"YYY");
    EXPECT_EQ(count, 3);
}

TEST(ReplaceText, StartPositionKeepsWhatLiesBefore) {
    int32_t count = 0;
    EXPECT_EQ(ReplaceText(u"aXbXc", u"X", u"Y", 3, count), u"aXbYc");
    EXPECT_EQ(count, 1);
    count = 0;
    EXPECT_EQ(ReplaceText(u"aXbXc", u"X", u"Y", 2, count), u"aYbYc");
    EXPECT_EQ(count, 2);
    count = 0;
    EXPECT_EQ(ReplaceText(u"aXbXc", u"X", u"Y", 5, count), u"aXbXc");
    EXPECT_EQ(count, 0);
    EXPECT_EQ(ReplaceText(u"aXbXc", u"X", u"Y", 99, count), u"aXbXc");
    count = 0;
    EXPECT_EQ(ReplaceText(u"XaX", u"X", u"Y", 3, count), u"XaY");
}

TEST(ReplaceText, EdgeCasesOfTheTexts) {
    int32_t count = 0;
    EXPECT_EQ(ReplaceText(u"", u"X", u"Y", 1, count), u"");
    EXPECT_EQ(ReplaceText(u"abc", u"", u"Y", 1, count), u"abc");
    EXPECT_EQ(ReplaceText(u"ab", u"abc", u"Y", 1, count), u"ab");
    EXPECT_EQ(count, 0);
    EXPECT_EQ(ReplaceText(u"aXbXc", u"X", u"", 1, count), u"abc");
    EXPECT_EQ(count, 2);
    count = 0;
    // Hits do not overlap.
    EXPECT_EQ(ReplaceText(u"aaaa", u"aa", u"b", 1, count), u"bb");
    EXPECT_EQ(count, 2);
    count = 0;
    EXPECT_EQ(ReplaceText(u"aaa", u"aa", u"b", 1, count), u"ba");
    count = 0;
    EXPECT_EQ(ReplaceText(u"%2C", u"%2C", u"%2C%2C", 1, count), u"%2C%2C");
    count = 0;
    EXPECT_EQ(ReplaceText(u"abc", u"abc", u"", 1, count), u"");
    EXPECT_EQ(ReplaceAll(u"Condition '%0' for '%1'", u"%0", u"7"), u"Condition '7' for '%1'");
}

TEST(ReplaceText, ReplacementEqualToFindStillReportsTheHits) {
    int32_t count = 0;
    EXPECT_EQ(ReplaceText(u"aXbXc", u"X", u"X", 1, count), u"aXbXc");
    EXPECT_EQ(count, 2);
    // With ignore case the text is rebuilt, so the hits take the given case.
    count = 0;
    EXPECT_EQ(ReplaceText(u"axbXc", u"X", u"X", 1, count, true), u"aXbXc");
    EXPECT_EQ(count, 2);
}

TEST(ReplaceText, IgnoreCaseKeepsTheCaseOfTheRest) {
    int32_t count = 0;
    EXPECT_EQ(ReplaceText(u"axb", u"X", u"-", 1, count, true), u"a-b");
    count = 0;
    EXPECT_EQ(ReplaceText(u"AbcXdEf", u"x", u"_", 1, count, true), u"Abc_dEf");
    count = 0;
    EXPECT_EQ(ReplaceText(u"SELECT Name FROM t", u"name", u"[name]", 1, count, true), u"SELECT [name] FROM t");
    count = 0;
    EXPECT_EQ(ReplaceText(u"\u00c9t\u00e9", u"\u00e9", u"e", 1, count, true), u"ete");
    EXPECT_EQ(count, 2);
    count = 0;
    EXPECT_EQ(ReplaceText(u"axb", u"X", u"-", 1, count, false), u"axb");
    EXPECT_EQ(count, 0);
}

TEST(ReplaceText, ManyThousandsOfHits) {
    String text;
    for (int i = 0; i < 20001; ++i) text += u"a,";
    int32_t count = 0;
    String out = ReplaceText(text, u",", u"%2C", 1, count);
    EXPECT_EQ(count, 20001);
    EXPECT_EQ(out.size(), text.size() + 20001 * 2);
    EXPECT_EQ(out.substr(0, 8), u"a%2Ca%2C");
    EXPECT_EQ(out.substr(out.size() - 4), u"a%2C");
    count = 8001;
    out = ReplaceText(text, u",", u"", 1, count);
    EXPECT_EQ(count, 8001);
    EXPECT_EQ(out.size(), text.size() - 8001);
    EXPECT_EQ(out.substr(8000, 4), u"aa,a");
}
