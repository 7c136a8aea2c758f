// The multi-row insert writes common values straight from the record; it
// must give the very text (or the very failure) of rendering each value by
// GetValue, which BulkRows still does. Both are run here on the same
// records, for every type group, in two locales.
#include <random>

#include "dialect_test_support.hpp"
#include "support/split.hpp"

namespace zolsdk {
namespace {
using namespace testing_support;

// Opens the per-value road of the builders for comparison.
struct MySqlProbe : DbMySqlSQLBuilder {
    using DbSqlDialect::BulkRows;
    using DbSqlDialect::ReadColumnSet;
};
struct MsSqlProbe : DbMsSqlSQLBuilder {
    using DbSqlDialect::BulkRows;
    using DbSqlDialect::ReadColumnSet;
};

// One column of every group the records carry.
const String kSet = u"03a,04b,01c,02d,05e,06f,07g,08h,09i,11j,12k,13l,10m";

std::vector<std::vector<String>> Samples() {
    const String big255(255, u'x'), big256(256, u'y');
    String pairAtLimit(254, u'p');
    pairAtLimit += u"\U0001F600"; // the pair ends at 256
    std::vector<std::vector<String>> s(13);
    s[0] = {u"0", u"-1", u"2147483647", u"+5", u" 7", u"1e3", u"abc", u"", u"-", u"null", u"NuLl", u"12 "};
    s[1] = {u"4294967295", u"7", u"1.5"};
    s[2] = {u"", u"abc", u"a%2Cb", u"it''s", u"it's", u"back\\slash", u"%2C%2C", big255, big256, pairAtLimit,
            u"null", u"Null", u"nul", u"\u00dcber \u05d8", String(1, u'\0') + u"z", u"50%"};
    s[3] = {u"", u"text", u"null", u"NULL", big256 + big256, u"a%2Cb'c", u"x\\y"};
    s[4] = {u"20240105T000000", u"19000101T000000", u"18991230T000000", u"18000101T120000", u"20240229T235959",
            u"20230229T000000", u"99991231T235959", u"9990101T000000", u"20241301T000000", u"2024010T5000000",
            u"20240105X101010", u"abc", u"", u"20240105T246000", u"19991231T235960"};
    s[5] = {u"18991230T101010", u"20240105T235959", u"20240105T000000", u"20240105T996000"};
    s[6] = {u"20240105T101010", u"19700101T000001", u"20000229T120000", u"21000229T120000"};
    s[7] = {u"-1", u"0", u"True", u"x"};
    s[8] = {u"0", u"-0", u"0.5", u"0.125", u"0.000001", u"0.0000001", u"0.0000012", u"1E-07", u"123456789012345",
            u"1234567890123456", u"0.10", u"01", u"1.5", u"-2.25", u"3.14159265358979", u"3.141592653589793",
            u"1e5", u"", u"1.", u".5", u"-", u"100000000000000", u"99999999999999.9"};
    s[9] = {u"0.1", u"1.5", u"16777217"};
    s[10] = {u"0.01", u"99999999999.99", u"-0.5", u"12.50", u"1234567890123456789012345678",
             u"123456789012345678901234567", u"0.0000000000000000000000001", u"-0", u"007", u"5"};
    s[11] = {u"1.2345", u"-922337203685477.5808", u"0"};
    s[12] = {u"", u"null", u"AAEC"};
    // Random values of the shapes a copy carries.
    std::mt19937 rng(20240105);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    for (int i = 0; i < 400; ++i) {
        s[0].push_back(IntText(pick(-2000000000, 2000000000)));
        char buf[40];
        std::snprintf(buf, sizeof buf, "%04d%02d%02dT%02d%02d%02d", pick(1890, 9999), pick(1, 12), pick(1, 31),
                      pick(0, 23), pick(0, 59), pick(0, 59));
        s[4 + i % 3].push_back(Ascii(buf));
        const double d = std::ldexp(static_cast<double>(pick(-1000000, 1000000)), pick(-40, 40));
        s[8].push_back(Variant(d).ToString());
        std::snprintf(buf, sizeof buf, "%d.%02d", pick(-99999, 99999), pick(0, 99));
        s[10].push_back(Ascii(buf));
    }
    return s;
}

template <class Probe>
String Expected(Probe& b, const String& values, const String& mark, const String& head, const String& before,
                const String& after, const String& between) {
    String sql = head;
    bool first = true;
    for (const String& r : b.BulkRows(Probe::ReadColumnSet(kSet), values, mark)) {
        if (!first) sql += between;
        sql += before + r + after;
        first = false;
    }
    return sql;
}

// Renders `values` both ways; the same text or the same failure.
template <class Probe>
void Compare(Probe& b, const String& values, const String& mark, const String& head, const String& before,
             const String& after, const String& between) {
    String expected, got;
    int32_t expectedFailure = 0, gotFailure = 0;
    try {
        expected = Expected(b, values, mark, head, before, after, between);
    } catch (const DbError& e) {
        expectedFailure = e.Number();
    }
    try {
        got = b.BulkInsertSql(u"t", kSet, values, mark);
    } catch (const DbError& e) {
        gotFailure = e.Number();
    }
    ASSERT_EQ(expectedFailure, gotFailure) << N(values);
    ASSERT_EQ(N(expected), N(got)) << N(values);
}

class BulkValues : public DialectTest {
protected:
    template <class Probe>
    void CompareAll(const String& head, const String& before, const String& after, const String& between) {
        Probe b;
        const auto samples = Samples();
        String batch;
        for (const String& mark : {String(u"="), String(u"?")}) {
            for (size_t col = 0; col < samples.size(); ++col) {
                for (const String& v : samples[col]) {
                    std::vector<String> row(samples.size(), u"null");
                    row[col] = v;
                    const String record = Join(row, u",");
                    Compare(b, record, mark, head, before, after, between);
                    // The rows that render go into one batch, a row mark
                    // inside a value ("%3%B") among them.
                    bool ok = true;
                    try {
                        b.BulkInsertSql(u"t", kSet, record, mark);
                    } catch (const DbError&) {
                        ok = false;
                    }
                    if (ok) batch += (batch.empty() ? u"" : u"%3B") + record;
                }
            }
            Compare(b, batch + u"%3B1,2,x%3%By", mark, head, before, after, between);
            // Empty rows, a short row, a row too long and no rows at all.
            for (const String& odd : {String(u""), String(u"%3B"), String(u"1%3B%3B2"), String(u"1,2,3,4,5,6,7,8,9,10,11,12,13,14")})
                Compare(b, odd, mark, head, before, after, between);
        }
    }
};

TEST_F(BulkValues, EveryValueAsGetValueRendersIt) {
    CompareAll<MySqlProbe>(u" INSERT INTO `t` (`a`,`b`,`c`,`d`,`e`,`f`,`g`,`h`,`i`,`j`,`k`,`l`,`m`) VALUES ", u" (",
                           u")", u",");
    CompareAll<MsSqlProbe>(u" INSERT INTO [t] ([a],[b],[c],[d],[e],[f],[g],[h],[i],[j],[k],[l],[m]) ", u" SELECT ",
                           u"", u" UNION ALL ");
    // A decimal comma: numbers take the general road, with the same result.
    UseLocale(u",", u".", 1);
    CompareAll<MySqlProbe>(u" INSERT INTO `t` (`a`,`b`,`c`,`d`,`e`,`f`,`g`,`h`,`i`,`j`,`k`,`l`,`m`) VALUES ", u" (",
                           u")", u",");
}

} // namespace
} // namespace zolsdk
