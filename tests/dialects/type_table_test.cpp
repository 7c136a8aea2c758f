// The type tables: each group and precision band in each engine.
#include "dialect_test_support.hpp"

namespace zolsdk {
namespace {

using testing_support::DialectTest;
using testing_support::N;

class TypeTables : public DialectTest {};

struct TypeRow {
    int32_t group, precision, scale, maxLength;
    const char* mysql;
    const char* mssql;
    const char* access; // the XML dialect shares it
};

constexpr const char* kUtf8 = " CHARACTER SET utf8 COLLATE utf8_general_ci ";

TEST_F(TypeTables, EveryGroupAndPrecisionBand) {
    const std::string varchar40 = std::string("VARCHAR(40)") + kUtf8;
    const std::string varchar255 = std::string("VARCHAR(255)") + kUtf8;
    const std::string longtext = std::string("LONGTEXT") + kUtf8;
    const TypeRow rows[] = {
        {dtVarChar, 0, 0, 40, varchar40.c_str(), "NVARCHAR(40)", "VARCHAR(40)"},
        {dtVarChar, 0, 0, 0, varchar255.c_str(), "NVARCHAR(255)", "VARCHAR(255)"},
        {dtCharBLOB, 0, 0, 0, longtext.c_str(), "NTEXT", "LONGTEXT"},
        // Signed integers by decimal digits.
        {dtInteger, 0, 0, 0, "", "", ""},
        {dtInteger, 1, 0, 0, "", "", ""},
        {dtInteger, 2, 0, 0, "TINYINT(2)", "TINYINT", "TINYINT"},
        {dtInteger, 3, 0, 0, "TINYINT(3)", "TINYINT", "TINYINT"},
        {dtInteger, 4, 0, 0, "SMALLINT(4)", "SMALLINT", "SMALLINT"},
        {dtInteger, 5, 0, 0, "SMALLINT(5)", "SMALLINT", "SMALLINT"},
        {dtInteger, 6, 0, 0, "MEDIUMINT(6)", "INTEGER", "INTEGER"},
        {dtInteger, 8, 0, 0, "MEDIUMINT(8)", "INTEGER", "INTEGER"},
        {dtInteger, 9, 0, 0, "INT(9)", "INTEGER", "INTEGER"},
        {dtInteger, 10, 0, 0, "INT(10)", "INTEGER", "INTEGER"},
        {dtInteger, 11, 0, 0, "BIGINT(11)", "BIGINT", ""},
        {dtInteger, 19, 0, 0, "BIGINT(19)", "BIGINT", ""},
        // Unsigned: a suffix in MySQL, the signed type in SQL Server, one
        // step wider in Access.
        {dtUnsignedInteger, 1, 0, 0, "", "", ""},
        {dtUnsignedInteger, 3, 0, 0, "TINYINT(3) UNSIGNED ", "TINYINT", "TINYINT"},
        {dtUnsignedInteger, 5, 0, 0, "SMALLINT(5) UNSIGNED ", "SMALLINT", "INTEGER"},
        {dtUnsignedInteger, 7, 0, 0, "MEDIUMINT(7) UNSIGNED ", "INTEGER", "LONG INTEGER"},
        {dtUnsignedInteger, 10, 0, 0, "INT(10) UNSIGNED ", "INTEGER", "LONG INTEGER"},
        {dtUnsignedInteger, 20, 0, 0, "BIGINT(20) UNSIGNED ", "BIGINT", ""},
        {dtDate, 0, 0, 0, "DATE", "DATETIME", "DATETIME"},
        {dtTime, 0, 0, 0, "TIME", "DATETIME", "DATETIME"},
        {dtDateTime, 0, 0, 0, "DATETIME", "DATETIME", "DATETIME"},
        {dtBoolean, 0, 0, 0, "TINYINT(1)", "BIT", "BIT"},
        {dtDouble, 15, 0, 0, "FLOAT(53)", "FLOAT", "FLOAT"},
        {dtBinaryBLOB, 0, 0, 0, "LONGBLOB", "IMAGE", "IMAGE"},
        {dtSingle, 7, 0, 0, "FLOAT(24)", "REAL", "REAL"},
        {dtDecimal, 18, 4, 0, "DECIMAL(18,4)", "DECIMAL(18,4)", "DECIMAL(18,4)"},
        {dtCurrency, 19, 4, 0, "DECIMAL(19,4)", "MONEY", "MONEY"},
        {dtUnknown, 10, 0, 10, "", "", ""},
        {14, 10, 0, 10, "", "", ""},
        {-1, 10, 0, 10, "", "", ""},
    };
    DbMySqlSQLBuilder my;
    DbMsSqlSQLBuilder ms;
    DbMsAccessSQLBuilder ac;
    DbMsXMLSQLBuilder xml;
    for (const TypeRow& r : rows) {
        SCOPED_TRACE(testing::Message() << "group " << r.group << " precision " << r.precision);
        // The native data type is ignored by every engine.
        EXPECT_EQ(N(my.ColumnTypeSql(r.group, 999, r.precision, r.scale, r.maxLength)), r.mysql);
        EXPECT_EQ(N(ms.ColumnTypeSql(r.group, 999, r.precision, r.scale, r.maxLength)), r.mssql);
        EXPECT_EQ(N(ac.ColumnTypeSql(r.group, 999, r.precision, r.scale, r.maxLength)), r.access);
        EXPECT_EQ(N(xml.ColumnTypeSql(r.group, 999, r.precision, r.scale, r.maxLength)), r.access);
    }
}

TEST_F(TypeTables, ColumnWithoutTypeTextKeepsOnlyItsNullMark) {
    // One-digit integers have no type: the name is followed by the mark.
    DbMySqlSQLBuilder my;
    EXPECT_EQ(N(my.AddColumnSql(u"T", u"T,Flag,1,16,3,False,,1,0,0,True")), " ALTER TABLE T  ADD COLUMN `Flag` NULL ");
    DbMsAccessSQLBuilder ac;
    EXPECT_EQ(N(ac.CreateTableSql(u"T", u"T,Big,1,20,3,False,,19,0,0,0", u"")),
              " CREATE TABLE [T] (  [Big]  NOT NULL  )");
}

} // namespace
} // namespace zolsdk
