// Literals of encoded values: GetValue, DecodeValue and the literal routines
// of each engine.
#include "dialect_test_support.hpp"

namespace zolsdk {
namespace {

using testing_support::DialectTest;
using testing_support::N;

class ValueRendering : public DialectTest {};

TEST_F(ValueRendering, NullsAndLargeValues) {
    DbMySqlSQLBuilder b;
    // A null is not decoded: a date group would fail on the word.
    EXPECT_EQ(N(b.GetValue(u"NULL", dtDateTime, u"=")), "NULL");
    EXPECT_EQ(N(b.GetValue(u"nUlL", dtInteger, u"=")), "NULL");
    // A text column cannot hold the word null in any case.
    EXPECT_EQ(N(b.GetValue(u"Null", dtVarChar, u"=")), "NULL");
    // Large text: the substitute stands even for a null.
    EXPECT_EQ(N(b.GetValue(u"NULL", dtCharBLOB, u"?")), "?");
    EXPECT_EQ(N(b.GetValue(u"some text", dtCharBLOB, u"?")), "?");
    EXPECT_EQ(N(b.GetValue(u"null", dtCharBLOB, u"=")), "NULL");
    EXPECT_EQ(N(b.GetValue(u"a%2Cb", dtCharBLOB, u"=")), "'a,b'");
    // Binary data never reaches the statement.
    EXPECT_EQ(N(b.GetValue(u"0102FF", dtBinaryBLOB, u"=")), "NULL");
    EXPECT_EQ(N(b.GetValue(u"0102FF", dtBinaryBLOB, u"?")), "?");
    EXPECT_EQ(N(b.GetValue(u"null", dtBinaryBLOB, u"@p")), "@p");
    // Integers go as they stand; unknown groups give nothing.
    EXPECT_EQ(N(b.GetValue(u"0042", dtInteger, u"=")), "0042");
    EXPECT_EQ(N(b.GetValue(u"x", dtUnknown, u"=")), "");
}

TEST_F(ValueRendering, TextIsCutAt255ButLargeTextIsNot) {
    DbMySqlSQLBuilder b;
    const String letters300(300, u'x');
    EXPECT_EQ(b.GetValue(letters300, dtVarChar, u"="), u"'" + String(255, u'x') + u"'");
    EXPECT_EQ(b.GetValue(letters300, dtCharBLOB, u"="), u"'" + letters300 + u"'");

    // 254 letters and a quote: the doubled quote is cut in half, and the
    // half left at the end goes.
    const String quoteAt255 = String(254, u'x') + u"'";
    EXPECT_EQ(b.GetValue(quoteAt255, dtVarChar, u"="), u"'" + String(254, u'x') + u"'");
    // Uncut, a doubled quote at the end stays whole.
    EXPECT_EQ(N(b.GetValue(u"ab'", dtVarChar, u"=")), "'ab'''");
    // 253 letters and a quote: the doubled quote fits in 255 and stays.
    const String quoteAt254 = String(253, u'x') + u"'";
    EXPECT_EQ(b.GetValue(quoteAt254, dtVarChar, u"="), u"'" + String(253, u'x') + u"'''");
}

TEST_F(ValueRendering, StringLiteralsPerEngine) {
    DbMySqlSQLBuilder my;
    DbMsSqlSQLBuilder ms;
    DbMsAccessSQLBuilder ac;
    DbMsXMLSQLBuilder xml;
    const String tricky = String(u"a") + u'\0' + u"b\\c'd";
    // MySQL doubles backslashes after the zero became "\0", so the zero
    // leaves as two backslashes and a zero.
    EXPECT_EQ(N(my.DBString(tricky, false, 255)), "'a\\\\0b\\\\c''d'");
    EXPECT_EQ(N(ms.DBString(tricky, false, 255)), "N'a\\0b\\c''d'");
    EXPECT_EQ(N(ac.DBString(tricky, false, 255)), "'a\\0b\\c''d'");
    EXPECT_EQ(N(xml.DBString(tricky, false, 255)), "'a\\0b\\c''d'");
    EXPECT_EQ(N(my.DBString(u"", false, 255)), "''");
    EXPECT_EQ(N(ms.DBString(u"", false, 255)), "N''");
    EXPECT_EQ(N(ac.DBString(u"", true, 255)), "''");
    // The limit counts the escaped text.
    EXPECT_EQ(N(my.DBString(u"a\\b", false, 3)), "'a\\\\'");
    EXPECT_EQ(N(ms.GetValue(u"O'Brien%2C Ltd", dtVarChar, u"=")), "N'O''Brien, Ltd'");
}

TEST_F(ValueRendering, DateTimeAndBooleanLiteralsPerEngine) {
    struct Row {
        IDbSqlBuilder* builder;
        const char* dateTime;
        const char* date;
        const char* time;
        const char* yes;
    };
    DbMySqlSQLBuilder my;
    DbMsSqlSQLBuilder ms;
    DbMsAccessSQLBuilder ac;
    DbMsXMLSQLBuilder xml;
    const Row rows[] = {
        {&my, " '2024-11-05 08:03:09' ", " '2024-11-05' ", "'1899-12-30 08:03:09'", "1"},
        {&ms, " '11/05/2024 08:03:09' ", " '11/05/2024' ", "'12/30/1899 08:03:09'", "1"},
        {&ac, " #11/05/2024 08:03:09# ", " #11/05/2024# ", "#12/30/1899 08:03:09#", "-1"},
        {&xml, " #11/05/2024 08:03:09# ", " #11/05/2024# ", "#12/30/1899 08:03:09#", "-1"},
    };
    for (const Row& r : rows) {
        auto& d = dynamic_cast<DbSqlDialect&>(*r.builder);
        SCOPED_TRACE(N(d.ClassName()));
        EXPECT_EQ(N(d.GetValue(u"20241105T080309", dtDateTime, u"=")), r.dateTime);
        EXPECT_EQ(N(d.GetValue(u"20241105T080309", dtDate, u"=")), r.date);
        EXPECT_EQ(N(d.GetValue(u"20241105T080309", dtTime, u"=")), r.time);
        EXPECT_EQ(N(d.GetValue(u"-1", dtBoolean, u"=")), r.yes);
        EXPECT_EQ(N(d.GetValue(u"0", dtBoolean, u"=")), "0");
        // A value with no date part still stands on its base date.
        EXPECT_EQ(N(d.DBTime(TimeSerial(23, 59, 59))).substr(12, 8), "23:59:59");
    }
}

TEST_F(ValueRendering, NumbersLeaveWithAPointUnderAnyLocale) {
    {
        DbMySqlSQLBuilder b;
        EXPECT_EQ(N(b.GetValue(u"1234.5", dtDouble, u"=")), "1234.5");
        EXPECT_EQ(N(b.GetValue(u"-0.25", dtSingle, u"=")), "-0.25");
        EXPECT_EQ(N(b.GetValue(u"12345678901234.5678", dtDecimal, u"=")), "12345678901234.5678");
        EXPECT_EQ(N(b.GetValue(u"12.3456", dtCurrency, u"=")), "12.3456");
    }
    // Decimal comma: values are decoded to the locale's text and put back
    // to a point for the engine. The builder reads the separator when made.
    UseLocale(u",", u".", 2);
    DbMsSqlSQLBuilder b;
    EXPECT_EQ(N(b.GetValue(u"1234.5", dtDouble, u"=")), "1234.5");
    EXPECT_EQ(N(b.GetValue(u"-0.25", dtSingle, u"=")), "-0.25");
    EXPECT_EQ(N(b.GetValue(u"7.125", dtDecimal, u"=")), "7.125");
    EXPECT_EQ(N(b.GetValue(u"12.3456", dtCurrency, u"=")), "12.3456");
    EXPECT_EQ(N(b.DBNumber(u"  1234,5 ")), "1234.5");
    // For criteria the number stays in the locale's own text.
    EXPECT_EQ(N(b.DecodeValue(u"1.5", dtDouble)), "1,5");
}

TEST_F(ValueRendering, DecodeValueGivesPlainText) {
    DbMsAccessSQLBuilder b;
    EXPECT_EQ(N(b.DecodeValue(u"nuLL", dtDate)), "NULL");
    EXPECT_EQ(N(b.DecodeValue(u"a%2Cb", dtVarChar)), "a,b");
    EXPECT_EQ(N(b.DecodeValue(u"a%2C%2Cb", dtCharBLOB)), "a%2Cb");
    EXPECT_EQ(N(b.DecodeValue(u"012", dtInteger)), "012");
    EXPECT_EQ(N(b.DecodeValue(u"20240229T000000", dtDate)), "2024-02-29");
    EXPECT_EQ(N(b.DecodeValue(u"20240229T134500", dtDateTime)), "2024-02-29 13:45:00");
    EXPECT_EQ(N(b.DecodeValue(u"-1", dtBoolean)), "True");
    EXPECT_EQ(N(b.DecodeValue(u"2.5", dtSingle)), "2.5");
    EXPECT_EQ(N(b.DecodeValue(u"anything", dtBinaryBLOB)), "");
}

TEST_F(ValueRendering, BadValuesFailWithTheRoutinesInTheChain) {
    DbMySqlSQLBuilder b;
    try {
        b.InsertSql(u"T", u"05When", u"2024", u"=");
        FAIL() << "a short date text was accepted";
    } catch (const DbError& e) {
        EXPECT_EQ(e.Number(), err::TypeMismatch);
        const std::string source = N(e.Source());
        const auto value = source.find("\r\nDbMySqlSQLBuilder:GetValue Ln ");
        const auto insert = source.find("\r\nDbMySqlSQLBuilder:IDbSqlBuilder_InsertSql Ln ");
        EXPECT_NE(value, std::string::npos) << source;
        EXPECT_NE(insert, std::string::npos) << source;
        EXPECT_LT(value, insert) << source;
    }
}

TEST(MySqlHexCode, Utf8BytesInCapitals) {
    EXPECT_EQ(N(DbMySqlSQLBuilder::HexCodeStr(u"A\u00e9\n")), "_utf8 0x41C3A90A");
    EXPECT_EQ(N(DbMySqlSQLBuilder::HexCodeStr(u"")), "_utf8 0x");
}

} // namespace
} // namespace zolsdk
