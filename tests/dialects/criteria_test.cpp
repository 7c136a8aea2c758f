// CriteriaClause: which operator applies to which type group, the text of
// each family, and the relative date ranges on a stopped clock.
#include <regex>
#include <set>

#include "dialect_test_support.hpp"
#include "zolsdk/catalog/error_numbers.hpp"

namespace zolsdk {
namespace {

using testing_support::DialectTest;
using testing_support::N;

class Criteria : public DialectTest {
protected:
    DbMySqlSQLBuilder my;
    DbMsSqlSQLBuilder ms;
    DbMsAccessSQLBuilder ac;

    std::string Clause(IDbSqlBuilder& b, int32_t group, int32_t op, const String& value) {
        return N(b.CriteriaClause(u"t", u"C", group, op, value));
    }
    std::string My(int32_t group, int32_t op, const String& value) { return Clause(my, group, op, value); }
    // The date-and-time range text for MySQL literals.
    static std::string Between(const char* start, const char* end) {
        return std::string("t.`C` BETWEEN  '") + start + "'  AND  '" + end + "' ";
    }
};

// Operators that a family accepts for a value other than "NULL".
std::set<int> Range(int from, int to) {
    std::set<int> s;
    for (int i = from; i <= to; ++i) s.insert(i);
    return s;
}
std::set<int> Union(std::initializer_list<std::set<int>> parts) {
    std::set<int> s;
    for (const auto& p : parts) s.insert(p.begin(), p.end());
    return s;
}

TEST_F(Criteria, OperatorApplicabilityPerGroup) {
    struct Family {
        int32_t group;
        const char16_t* value;
        std::set<int> accepted;
        const char* routine;
    };
    const Family families[] = {
        {dtVarChar, u"abc", Union({{1, 2}, Range(7, 12), {14, 15}}), "GetStringCondition"},
        {dtCharBLOB, u"abc", Union({{1, 2}, Range(7, 12), {14, 15}}), "GetStringCondition"},
        {dtInteger, u"5", Union({Range(1, 6), {9, 12, 14, 15, 45}}), "GetIntegerCondition"},
        {dtUnsignedInteger, u"5", Union({Range(1, 6), {9, 12, 14, 15, 45}}), "GetIntegerCondition"},
        {dtDouble, u"1.5", Union({Range(1, 6), {14, 15}}), "GetDecimalCondition"},
        {dtSingle, u"1.5", Union({Range(1, 6), {14, 15}}), "GetDecimalCondition"},
        {dtDecimal, u"1.5", Union({Range(1, 6), {14, 15}}), "GetDecimalCondition"},
        {dtCurrency, u"1.5", Union({Range(1, 6), {14, 15}}), "GetDecimalCondition"},
        {dtBoolean, u"-1", {1, 2, 14, 15}, "GetBooleanCondition"},
        {dtDate, u"19000101T000000", Union({Range(1, 6), Range(14, 32), Range(35, 44)}), "GetDateCondition"},
        {dtTime, u"19000101T103000", Union({Range(1, 6), {14, 15}, Range(30, 34), {43, 44}}), "GetTimeCondition"},
        {dtDateTime, u"19000101T000000", Union({Range(1, 6), Range(14, 44)}), "GetDateTimeCondition"},
    };
    // Date values are small serials: the relative operators read them as counts.
    for (const Family& f : families) {
        for (int op = 0; op <= 46; ++op) {
            SCOPED_TRACE(testing::Message() << "group " << f.group << " operator " << op);
            if (f.accepted.count(op)) {
                EXPECT_FALSE(My(f.group, op, f.value).empty());
                continue;
            }
            try {
                My(f.group, op, f.value);
                ADD_FAILURE() << "accepted";
            } catch (const DbError& e) {
                EXPECT_EQ(e.Number(), errnum::InvalidConditionOperator);
                EXPECT_EQ(N(e.Description()), "Condition operator '" + std::to_string(op) + "' is not valid for attrribute 'C'.");
                const std::regex chain(std::string("ZolSDK => \r\nDbMySqlSQLBuilder:") + f.routine +
                                       " method \\([0-9]+\\) => \r\nDbMySqlSQLBuilder:IDbSqlBuilder_CriteriaClause Ln [0-9]+");
                EXPECT_TRUE(std::regex_match(N(e.Source()), chain)) << N(e.Source());
            }
        }
    }
    // No predicate for binary and unknown groups, whatever the operator.
    for (int32_t group : {int32_t{dtBinaryBLOB}, int32_t{dtUnknown}, int32_t{14}}) {
        for (int op = 0; op <= 46; ++op) EXPECT_EQ(My(group, op, u"x"), "") << group << " " << op;
    }
}

TEST_F(Criteria, NullValuesPerGroup) {
    // Comparisons with NULL turn into IS [NOT] NULL, with the senses the
    // operators 3 to 6 have always had.
    for (int32_t group : {dtInteger, dtDouble, dtTime}) {
        SCOPED_TRACE(group);
        EXPECT_EQ(My(group, dcoEqualto, u"NULL"), "t.`C` IS NULL ");
        EXPECT_EQ(My(group, dconotequalto, u"NULL"), "t.`C` IS NOT NULL ");
        EXPECT_EQ(My(group, dcoLessThan, u"NULL"), "t.`C` IS NOT NULL ");
        EXPECT_EQ(My(group, dcoGreaterThan, u"NULL"), "t.`C` IS NOT NULL ");
        EXPECT_EQ(My(group, dcoLessThanEqualTo, u"NULL"), "t.`C` IS NULL ");
        EXPECT_EQ(My(group, dcoGreaterThanEqualTo, u"NULL"), "t.`C` IS NULL ");
        // dcoNull with the value NULL is refused here, but not for other values.
        EXPECT_THROW(My(group, dcoNull, u"NULL"), DbError);
        EXPECT_THROW(My(group, dcoNotNull, u"NULL"), DbError);
    }
    EXPECT_THROW(My(dtInteger, dcoIn, u"NULL"), DbError);
    EXPECT_EQ(My(dtInteger, dcoNull, u"5"), "t.`C` IS NULL ");
    EXPECT_EQ(My(dtVarChar, dcoNull, u"NULL"), "(t.`C` = '' OR t.`C` IS NULL) ");
    EXPECT_EQ(My(dtDate, dcoNull, u"NULL"), "t.`C` IS NULL ");
    // A date compared with NULL compares with the zero date.
    EXPECT_EQ(My(dtDate, dcoEqualto, u"NULL"), "t.`C` =  '1899-12-30' ");
    EXPECT_EQ(My(dtDateTime, dcoEqualto, u"NULL"), Between("1899-12-30 00:00:00", "1899-12-30 23:59:59"));
    // A null boolean is compared as a word.
    EXPECT_EQ(My(dtBoolean, dcoEqualto, u"null"), "t.`C` = NULL");
}

TEST_F(Criteria, StringConditions) {
    EXPECT_EQ(My(dtVarChar, dcoEqualto, u"Smith"), "t.`C` = 'Smith'");
    EXPECT_EQ(My(dtVarChar, dcoEqualto, u""), "(t.`C` = '' OR t.`C` IS NULL)");
    EXPECT_EQ(My(dtVarChar, dconotequalto, u"Smith"), "(t.`C` <> 'Smith' OR t.`C` IS NULL)");
    EXPECT_EQ(My(dtVarChar, dconotequalto, u""), "(t.`C` <> '' AND t.`C` IS NOT NULL)");
    EXPECT_EQ(My(dtVarChar, dcoBeginsWith, u"Sm"), "t.`C` LIKE 'Sm%'");
    EXPECT_EQ(My(dtVarChar, dcoEndsWith, u"th"), "t.`C` LIKE '%th'");
    EXPECT_EQ(My(dtVarChar, dcoEndsWith, u""), "(t.`C` LIKE '%' OR t.`C` IS NULL)");
    EXPECT_EQ(My(dtVarChar, dcoContains, u"mi"), "t.`C` LIKE '%mi%'");
    EXPECT_EQ(My(dtVarChar, dcoContains, u""), "(t.`C` LIKE '' OR t.`C` IS NULL)");
    EXPECT_EQ(My(dtVarChar, dcoDoesNotBeginWith, u"Sm"), "(t.`C` NOT LIKE 'Sm%' OR t.`C` IS NULL)");
    EXPECT_EQ(My(dtVarChar, dcoDoesNotContain, u""), "(t.`C` NOT LIKE '' AND t.`C` IS NOT NULL)");
    EXPECT_EQ(My(dtCharBLOB, dcoNotNull, u"x"), "(t.`C` <> '' AND t.`C` IS NOT NULL) ");
    // The value is decoded and escaped.
    EXPECT_EQ(My(dtVarChar, dcoEqualto, u"O'Brien%2C Jr"), "t.`C` = 'O''Brien, Jr'");
    EXPECT_EQ(Clause(ms, dtVarChar, dcoBeginsWith, u"Sm"), "t.[C] LIKE N'Sm%'");
    EXPECT_EQ(Clause(ac, dtVarChar, dcoNull, u"x"), "(t.[C] = '' OR t.[C] IS NULL) ");
    // The alias is written even when it is empty.
    EXPECT_EQ(N(my.CriteriaClause(u"", u"Name", dtVarChar, dcoEqualto, u"x")), ".`Name` = 'x'");
}

TEST_F(Criteria, NumberAndBooleanConditions) {
    EXPECT_EQ(My(dtInteger, dcoEqualto, u"5"), "t.`C` = 5");
    EXPECT_EQ(My(dtInteger, dcoLessThan, u"5"), "t.`C` < 5");
    EXPECT_EQ(My(dtUnsignedInteger, dcoLessThanEqualTo, u"5"), "t.`C` <= 5");
    EXPECT_EQ(My(dtInteger, dcoGreaterThanEqualTo, u"-5"), "t.`C` >= -5");
    EXPECT_EQ(My(dtInteger, dcoIn, u"1,2,3"), "(t.`C` IN (1,2,3))");
    // Flag tests: a bit operator where the engine has one, mod 2 elsewhere.
    EXPECT_EQ(My(dtInteger, dcoContains, u"4"), "(t.`C` & 4) = 4");
    EXPECT_EQ(My(dtInteger, dcoDoesNotContain, u"4"), "(t.`C` & 4) = 0 ");
    EXPECT_EQ(Clause(ac, dtInteger, dcoContains, u"4"), "(t.[C]\\4) mod 2 = 4");
    EXPECT_EQ(Clause(ac, dtInteger, dcoDoesNotContain, u"4"), "(t.[C]\\4) mod 2 = 0 ");
    DbMsXMLSQLBuilder xml;
    EXPECT_EQ(Clause(xml, dtInteger, dcoDoesNotContain, u"2"), "(t.[C]\\2) mod 2 = 0 ");

    EXPECT_EQ(My(dtDouble, dcoGreaterThan, u"1.5"), "t.`C` > 1.5");
    EXPECT_EQ(Clause(ac, dtDecimal, dcoNull, u"1"), "t.[C] IS NULL ");

    EXPECT_EQ(My(dtBoolean, dcoEqualto, u"-1"), "t.`C` = True");
    EXPECT_EQ(My(dtBoolean, dconotequalto, u"0"), "t.`C`<> False");
    EXPECT_EQ(Clause(ac, dtBoolean, dcoNotNull, u"0"), "t.[C] IS NOT NULL ");
}

TEST_F(Criteria, DecimalValuesStayInTheLocaleText) {
    // Unlike an inserted value, a criteria number is not put back to a point.
    UseLocale(u",", u".", 1);
    DbMySqlSQLBuilder b;
    EXPECT_EQ(Clause(b, dtDouble, dcoLessThan, u"2.75"), "t.`C` < 2,75");
}

TEST_F(Criteria, FixedDateConditions) {
    // A date-and-time equality covers one full day from the moment given.
    EXPECT_EQ(My(dtDateTime, dcoEqualto, u"20241115T100000"), Between("2024-11-15 10:00:00", "2024-11-16 09:59:59"));
    EXPECT_EQ(My(dtDateTime, dconotequalto, u"20241115T100000"),
              "t.`C` NOT BETWEEN  '2024-11-15 10:00:00'  AND  '2024-11-16 09:59:59' ");
    EXPECT_EQ(My(dtDateTime, dcoBefore, u"20241115T100000"), "t.`C` <  '2024-11-15 10:00:00' ");
    EXPECT_EQ(My(dtDateTime, dcoOnOrAfter, u"20241115T100000"), "t.`C` >=  '2024-11-15 10:00:00' ");
    // Dates lose the time of day.
    EXPECT_EQ(My(dtDate, dcoEqualto, u"20241115T100000"), "t.`C` =  '2024-11-15' ");
    EXPECT_EQ(Clause(ac, dtDate, dcoAfter, u"20241115T000000"), "t.[C] >  #11/15/2024# ");
    EXPECT_EQ(Clause(ms, dtDate, dconotequalto, u"20241115T000000"), "t.[C] <>  '11/15/2024' ");
    // Times stand on the base date.
    EXPECT_EQ(My(dtTime, dcoEqualto, u"20241115T103000"), "t.`C` = '1899-12-30 10:30:00'");
    EXPECT_EQ(Clause(ac, dtTime, dcoGreaterThan, u"18991230T073000"), "t.[C] > #12/30/1899 07:30:00#");
    // A bad time fails before its operator is looked at.
    try {
        My(dtTime, dcoToday, u"bad");
        FAIL() << "a bad time was accepted";
    } catch (const DbError& e) {
        EXPECT_EQ(e.Number(), err::TypeMismatch);
    }
}

struct RangeCase {
    int op;
    const char16_t* value; // the count X travels as a date of serial X
    const char* start;
    const char* end;
};

// Now: Friday 2024-03-01 14:30:00, the first day of a month in a leap year.
TEST_F(Criteria, RelativeRangesOnTheFirstOfAMonth) {
    const RangeCase cases[] = {
        {dcoYesterday, u"NULL", "2024-02-29 00:00:00", "2024-02-29 23:59:59"},
        {dcoToday, u"NULL", "2024-03-01 00:00:00", "2024-03-01 23:59:59"},
        {dcoTomorrow, u"NULL", "2024-03-02 00:00:00", "2024-03-02 23:59:59"},
        {dcoNextSevenDays, u"NULL", "2024-03-01 14:30:00", "2024-03-09 14:29:59"},
        {dcoLastSevenDays, u"NULL", "2024-02-23 00:00:00", "2024-03-01 14:30:00"},
        {dcoNextWeek, u"NULL", "2024-03-03 14:30:00", "2024-03-10 14:29:59"},
        {dcoLastWeek, u"NULL", "2024-02-18 00:00:00", "2024-02-24 23:59:59"},
        {dcoThisWeek, u"NULL", "2024-02-25 00:00:00", "2024-03-02 23:59:59"},
        {dcoThisMonth, u"NULL", "2024-03-01 00:00:00", "2024-03-31 23:59:59"},
        {dcoLastMonth, u"NULL", "2024-02-01 00:00:00", "2024-02-29 23:59:59"},
        {dcoNextMonth, u"NULL", "2024-04-01 00:00:00", "2024-04-30 23:59:59"},
        {dcoThisYear, u"NULL", "2024-01-01 00:00:00", "2024-12-31 23:59:59"},
        {dcoLastYear, u"NULL", "2023-01-01 00:00:00", "2023-12-31 23:59:59"},
        {dcoNextYear, u"NULL", "2025-01-01 00:00:00", "2025-12-31 23:59:59"},
        {dcoLastXHours, u"19000104T000000", "2024-03-01 09:30:00", "2024-03-01 14:30:00"},
        {dcoNextXHours, u"19000104T000000", "2024-03-01 14:30:00", "2024-03-01 19:30:00"},
        // Counts are rounded half to even: 2.5 gives 2, 3.5 gives 4.
        {dcoLastXHours, u"19000101T120000", "2024-03-01 12:30:00", "2024-03-01 14:30:00"},
        {dcoNextXHours, u"19000102T120000", "2024-03-01 14:30:00", "2024-03-01 18:30:00"},
        // Last X days looks forward, to a midnight.
        {dcoLastXDays, u"19000102T000000", "2024-03-01 14:30:00", "2024-03-04 00:00:00"},
        {dcoNextXDays, u"19000102T000000", "2024-03-01 14:30:00", "2024-03-04 23:59:59"},
        {dcoLastXWeeks, u"18991231T000000", "2024-02-18 00:00:00", "2024-03-01 14:30:00"},
        {dcoNextXWeeks, u"18991231T000000", "2024-03-01 14:30:00", "2024-03-13 23:59:59"},
        {dcoLastXMonths, u"18991231T000000", "2024-02-01 00:00:00", "2024-03-01 14:30:00"},
        {dcoNextXMonths, u"18991231T000000", "2024-03-01 14:30:00", "2024-04-30 23:59:59"},
        {dcoLastXYears, u"19000101T000000", "2022-01-01 00:00:00", "2024-03-01 14:30:00"},
        {dcoNextXYears, u"19000101T000000", "2024-03-01 14:30:00", "2026-12-31 23:59:59"},
    };
    for (const RangeCase& c : cases) {
        SCOPED_TRACE(c.op);
        EXPECT_EQ(My(dtDateTime, c.op, c.value), Between(c.start, c.end));
    }
    // The same ranges in another engine's literal.
    EXPECT_EQ(Clause(ac, dtDateTime, dcoLastMonth, u"NULL"),
              "t.[C] BETWEEN  #02/01/2024 00:00:00#  AND  #02/29/2024 23:59:59# ");
}

// Now: Sunday 2023-12-31 23:00:00, the last day of a year.
TEST_F(Criteria, RelativeRangesOnTheLastDayOfAYear) {
    SetNow(2023, 12, 31, 23, 0, 0);
    EXPECT_EQ(My(dtDateTime, dcoTomorrow, u"NULL"), Between("2024-01-01 00:00:00", "2024-01-01 23:59:59"));
    EXPECT_EQ(My(dtDateTime, dcoThisYear, u"NULL"), Between("2023-01-01 00:00:00", "2023-12-31 23:59:59"));
    EXPECT_EQ(My(dtDateTime, dcoNextYear, u"NULL"), Between("2024-01-01 00:00:00", "2024-12-31 23:59:59"));
    EXPECT_EQ(My(dtDateTime, dcoNextMonth, u"NULL"), Between("2024-01-01 00:00:00", "2024-01-31 23:59:59"));
    // Sunday starts the week.
    EXPECT_EQ(My(dtDateTime, dcoThisWeek, u"NULL"), Between("2023-12-31 00:00:00", "2024-01-06 23:59:59"));
    EXPECT_EQ(My(dtDateTime, dcoNextWeek, u"NULL"), Between("2024-01-07 23:00:00", "2024-01-14 22:59:59"));
    EXPECT_EQ(My(dtDateTime, dcoLastWeek, u"NULL"), Between("2023-12-24 00:00:00", "2023-12-30 23:59:59"));

    // With Monday first the same Sunday ends its week.
    UseLocale(u".", u",", 2);
    EXPECT_EQ(My(dtDateTime, dcoThisWeek, u"NULL"), Between("2023-12-25 00:00:00", "2023-12-31 23:59:59"));
    EXPECT_EQ(My(dtDateTime, dcoNextWeek, u"NULL"), Between("2024-01-01 23:00:00", "2024-01-08 22:59:59"));
    EXPECT_EQ(My(dtDateTime, dcoLastWeek, u"NULL"), Between("2023-12-18 00:00:00", "2023-12-24 23:59:59"));
    EXPECT_EQ(My(dtDate, dcoNextWeek, u"NULL"), "t.`C` BETWEEN  '2024-01-01'  AND  '2024-01-07' ");
}

TEST_F(Criteria, RelativeRangesAroundALeapDay) {
    SetNow(2024, 2, 29, 8, 0, 0);
    EXPECT_EQ(My(dtDateTime, dcoThisMonth, u"NULL"), Between("2024-02-01 00:00:00", "2024-02-29 23:59:59"));
    EXPECT_EQ(My(dtDateTime, dcoLastMonth, u"NULL"), Between("2024-01-01 00:00:00", "2024-01-31 23:59:59"));
    EXPECT_EQ(My(dtDateTime, dcoNextMonth, u"NULL"), Between("2024-03-01 00:00:00", "2024-03-31 23:59:59"));
    EXPECT_EQ(My(dtDate, dcoTomorrow, u"NULL"), "t.`C` =  '2024-03-01' ");
    // A year back from a leap day falls to Feb 28.
    EXPECT_EQ(My(dtDateTime, dcoLastXMonths, u"19000111T000000"),
              Between("2023-02-01 00:00:00", "2024-02-29 08:00:00"));
    // A month from Jan 31 stays in February rather than running into March.
    SetNow(2024, 1, 31, 12, 0, 0);
    EXPECT_EQ(My(dtDateTime, dcoNextMonth, u"NULL"), Between("2024-02-01 00:00:00", "2024-02-29 23:59:59"));
    SetNow(2024, 3, 31, 12, 0, 0);
    EXPECT_EQ(My(dtDateTime, dcoLastXMonths, u"18991231T000000"),
              Between("2024-02-01 00:00:00", "2024-03-31 12:00:00"));
}

TEST_F(Criteria, RelativeRangesOfTheDateRoutine) {
    // Now: Friday 2024-03-01 14:30:00.
    EXPECT_EQ(My(dtDate, dcoToday, u"NULL"), "t.`C` =  '2024-03-01' ");
    EXPECT_EQ(My(dtDate, dcoNextSevenDays, u"NULL"), "t.`C` BETWEEN  '2024-03-01'  AND  '2024-03-08' ");
    EXPECT_EQ(My(dtDate, dcoLastSevenDays, u"NULL"), "t.`C` BETWEEN  '2024-02-23'  AND  '2024-03-01' ");
    EXPECT_EQ(My(dtDate, dcoNextWeek, u"NULL"), "t.`C` BETWEEN  '2024-03-03'  AND  '2024-03-09' ");
    // Here last X days looks back.
    EXPECT_EQ(My(dtDate, dcoLastXDays, u"19000102T000000"), "t.`C` BETWEEN  '2024-02-27'  AND  '2024-03-01' ");
    EXPECT_EQ(My(dtDate, dcoNextXDays, u"19000102T000000"), "t.`C` BETWEEN  '2024-03-01'  AND  '2024-03-04' ");
    EXPECT_EQ(Clause(ms, dtDate, dcoThisMonth, u"NULL"), "t.[C] BETWEEN  '03/01/2024'  AND  '03/31/2024' ");
    // Weeks counted back start on the locale's first day for dates, on
    // Sunday for dates with times.
    UseLocale(u".", u",", 2);
    EXPECT_EQ(My(dtDate, dcoLastXWeeks, u"18991231T000000"), "t.`C` BETWEEN  '2024-02-19'  AND  '2024-03-01' ");
    EXPECT_EQ(My(dtDateTime, dcoLastXWeeks, u"18991231T000000"), Between("2024-02-18 00:00:00", "2024-03-01 14:30:00"));
}

TEST_F(Criteria, HourRangesOfTheTimeRoutineCrossMidnightUncorrected) {
    SetNow(2024, 3, 1, 23, 30, 0);
    EXPECT_EQ(My(dtTime, dcoNextXHours, u"19000101T000000"),
              "t.`C` BETWEEN '1899-12-30 23:30:00' AND '1899-12-30 01:30:00'");
    EXPECT_EQ(My(dtTime, dcoLastXHours, u"19000101T000000"),
              "t.`C` BETWEEN '1899-12-30 21:30:00' AND '1899-12-30 23:30:00'");
    EXPECT_EQ(Clause(ac, dtTime, dcoLastXHours, u"19000101T000000"),
              "t.[C] BETWEEN #12/30/1899 21:30:00# AND #12/30/1899 23:30:00#");
}

} // namespace
} // namespace zolsdk
