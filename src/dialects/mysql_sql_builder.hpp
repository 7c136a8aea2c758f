#pragma once
#include "dialects/sql_dialect.hpp"

namespace zolsdk {

// The MySQL dialect: back-tick quotes, backslash escapes, keys and indexes
// inside CREATE TABLE, and multi-row VALUES lists.
class DbMySqlSQLBuilder : public DbSqlDialect {
public:
    DbMySqlSQLBuilder();

    String CommandDelimiter() override { return u";"; }
    String InlineCommentDelimiter() override { return u"--"; }
    String CreateTableSql(const String& psTableName, const String& psColumns, const String& psIndexes) override;
    String CreateIndexSql(const String& psIndexName, const String& psTableName, const String& psIdxColumns,
                          int32_t plFlagBitMask) override;
    String DropIndexSql(const String& psIndexName, const String& psTableName, int32_t plFlagBitMask) override;
    String SelectSql(const String& psTableName, const String& psColumnSet, const String& psFilter) override;
    String SelectByAttributeSql(const String& psTableName, const String& psColumnSet, const String& psAttributes,
                                const String& psAttributeValue) override;
    String BulkInsertSql(const String& psTableName, const String& psColumnSet, const String& psValue,
                         const String& psBlobValueSubstibute) override;
    String CreateDBSql(const String& psDatabaseName) override;
    String DropDBSql(const String& psDatabaseName) override;
    String AddColumnSql(const String& psTableName, const String& psColumns) override;
    String DropColumnSql(const String& psTableName, const String& psColumns) override;

    String ColumnTypeSql(int32_t group, int32_t dataType, int32_t precision, int32_t scale,
                         int32_t maxLength) override;

    // The text as a hexadecimal string literal of UTF-8 bytes with its
    // character set introducer: _utf8 0x...
    static String HexCodeStr(const String& text);

private:
    // A column definition: `name`, the type with no blank before it, the null mark.
    String ColumnDefinition(const ColumnRow& c);
};

} // namespace zolsdk
